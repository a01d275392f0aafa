#ifndef QuelmarEngine_host_FileReading_h
#define QuelmarEngine_host_FileReading_h
/* Reading a whole input file safely: only regular files, and only up to a
   size, so that a device, a FIFO or a huge file can't block the program or
   exhaust its memory. */

#include <cstddef>
#include <string>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** Largest file that @ref readFile() reads unless told otherwise */
constexpr std::size_t DefaultMaxFileSize = std::size_t{256} << 20;

/**
@brief Reads all of the regular file at @p path into @p text

Refuses directories, FIFOs, devices and other files that are not regular,
without blocking on them, and files larger than @p maxSize bytes. On failure
sets @p error to the reason (such as "No such file or directory" or "it is a
directory"), leaves @p text empty and returns false.
*/
bool readFile(Containers::StringView path, std::string& text, std::string& error, std::size_t maxSize = DefaultMaxFileSize);

}

#endif
