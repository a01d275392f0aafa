/* Showing the history: its steps or its changes, the steps that an undo or
   redo went through, and the unsaved ones. */
#ifndef quelmar_History_h
#define quelmar_History_h

#include <cstddef>
#include <string>

namespace quelmar {

struct Program;

/** One line naming the unsaved steps by their labels */
std::string unsavedChangesText(const Program& program);

/** Prints every step, or with @p changes every change, marking the history position and the saved state */
void printHistory(const Program& program, bool changes);

/** As @ref printHistory(), as one JSON document */
void printHistoryJson(const Program& program, bool changes);

/**
@brief Prints the @p count steps that an undo, or a redo if @p redo, just went through

In the order it went through them, as one line or, with @p json, as one JSON
document.
*/
void printTravel(const Program& program, std::size_t count, bool redo, bool json);

}

#endif
