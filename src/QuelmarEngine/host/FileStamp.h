#ifndef QuelmarEngine_host_FileStamp_h
#define QuelmarEngine_host_FileStamp_h
/* What a file was like when the project was read from it or written to it,
   so that a change made by another program is noticed before a save. */

#include <cstdint>
#include <string>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** Size, modification time and content hash of a file, or that there was none */
struct FileStamp {
    bool exists{};
    std::uint64_t size{};
    /** Nanoseconds since the epoch */
    std::int64_t modified{};
    /** @ref contentHash() of the bytes */
    std::uint64_t hash{};
};

/** 64-bit FNV-1a of @p text */
std::uint64_t contentHash(Containers::StringView text);

/** The stamp of the file at @p path holding @p text, as just read or written */
FileStamp stampOf(Containers::StringView path, Containers::StringView text);

/**
@brief Reads the file at @p path for its stamp

A missing file gives a stamp that doesn't exist. On a file that can't be read
sets @p error and returns false.
*/
bool readStamp(Containers::StringView path, FileStamp& stamp, std::string& error);

/**
@brief What differs between @p before and @p now, in words

Such as "its size (120 -> 135 bytes), modification time and content"; empty
when nothing does. A file whose content is the same counts as unchanged
whatever its time, since writing over it loses nothing.
*/
std::string describeFileChange(const FileStamp& before, const FileStamp& now);

}

#endif
