/* Running command lines against a session, and what the end of input does. */
#ifndef quelmar_Runner_h
#define quelmar_Runner_h

#include <string>

namespace quelmar {

class Session;

/** Runs one line of input; false when its command failed, having printed why */
bool runLine(Session& session, const std::string& line);

/** The end of input, which behaves like "quit"; returns the exit status */
int finish(Session& session);

}

#endif
