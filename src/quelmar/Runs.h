/* The ways a run goes: commands given all at once (-c, a script), lines
   from a pipe, or a person typing at a terminal. */
#ifndef quelmar_Runs_h
#define quelmar_Runs_h

#include <string>
#include <vector>

namespace quelmar {

class LineSource;
struct Program;

/**
@brief Runs @p lines, the first failure ending the run

Error messages name @p source and the line, when @p source isn't empty. A
signal ends the run between two commands. Returns the exit status.
*/
int runAll(Program& program, const std::vector<std::string>& lines, const std::string& source);

/**
@brief Runs the lines of @p source as they come

An interactive session goes on after a failure, and refuses to end with
unsaved changes at Control-D, SIGTERM or SIGHUP as "quit" does; Control-C
cancels the line being typed. Otherwise the lines behave like a script
called "stdin". Returns the exit status.
*/
int runInput(Program& program, LineSource& source, bool interactive);

/** The lines of a script, without the byte order mark some editors write */
std::vector<std::string> scriptLines(const std::string& text);

}

#endif
