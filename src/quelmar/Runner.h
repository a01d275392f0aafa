/* Running command lines against a session, and what the end of input does. */
#ifndef quelmar_Runner_h
#define quelmar_Runner_h

#include <string>

namespace quelmar {

struct Program;

/** Runs one line of input; false when its command failed, having printed why */
bool runLine(Program& program, const std::string& line);

/** What becomes of unsaved changes when the program ends now: "; they are lost", or that the journal keeps them */
std::string unsavedChangesFate(const Program& program);

/** The end of input, which behaves like "quit"; returns the exit status */
int finish(Program& program);

}

#endif
