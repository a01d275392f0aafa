/* Reading the change history: undo steps, the unsaved changes, the listing. */
#ifndef quelmar_History_h
#define quelmar_History_h

#include <cstddef>
#include <string>

#include "QuelmarEngine/QuelmarEngine.h"

namespace quelmar {

class Session;

/** How many undo steps lie before the history position */
std::size_t undoSteps(const QuelmarEngine::ChangeManager& manager);

/** How many redo steps lie after the history position */
std::size_t redoSteps(const QuelmarEngine::ChangeManager& manager);

/** Records of the next redo step, or of the last undo step with @p redo false */
std::size_t recordsInStep(const QuelmarEngine::ChangeManager& manager, bool redo);

/** One line naming the unsaved changes by their paths */
std::string unsavedChangesText(const Session& session);

/** Prints every record, marking the history position and the saved state */
void printHistory(const Session& session);

}

#endif
