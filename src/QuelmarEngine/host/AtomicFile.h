#ifndef QuelmarEngine_host_AtomicFile_h
#define QuelmarEngine_host_AtomicFile_h
/* Replacing a file atomically, so that a failed or interrupted write leaves
   the old file as it was, and cleaning up after a write that a signal cut
   short. */

#include <string>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Writes @p text to @p path atomically

Writes a temporary file beside the target, syncs it, gives it the target's
permissions (or the usual ones for a new file), renames it over the target
and syncs the folder. A symbolic link is followed: the file it points to is
replaced. While the temporary file exists it is registered for
@ref removePendingTemporaryFiles(). On failure sets @p error to the reason,
removes the temporary file, leaves the target as it was and returns false.
*/
bool writeFileAtomically(Containers::StringView path, Containers::StringView text, std::string& error);

/**
@brief Removes the temporary files of writes still under way

Async-signal-safe: meant for a signal handler that ends the process while a
write may be under way.
*/
void removePendingTemporaryFiles();

}

#endif
