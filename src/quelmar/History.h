/* Showing the history: the listing of every change, and the unsaved ones. */
#ifndef quelmar_History_h
#define quelmar_History_h

#include <string>

namespace quelmar {

struct Program;

/** One line naming the unsaved changes by their paths */
std::string unsavedChangesText(const Program& program);

/** Prints every change, marking the history position and the saved state */
void printHistory(const Program& program);

}

#endif
