#include "QuelmarEngine/host/FileStamp.h"

#include <cerrno>
#include <sys/stat.h>

#include "QuelmarEngine/host/FileReading.h"

namespace QuelmarEngine {

std::uint64_t contentHash(const Containers::StringView text) {
    std::uint64_t hash = 14695981039346656037ull;
    for(std::size_t i = 0; i != text.size(); ++i) {
        hash ^= std::uint8_t(text.data()[i]);
        hash *= 1099511628211ull;
    }
    return hash;
}

namespace {

/* Size and time of @p path into @p stamp; false when there is no file */
bool statInto(const std::string& path, FileStamp& stamp) {
    struct stat info;
    if(::stat(path.data(), &info) != 0) return false;
    stamp.exists = true;
    stamp.size = std::uint64_t(info.st_size);
    stamp.modified = std::int64_t(info.st_mtim.tv_sec)*1000000000 + info.st_mtim.tv_nsec;
    return true;
}

}

FileStamp stampOf(const Containers::StringView path, const Containers::StringView text) {
    FileStamp stamp;
    statInto({path.data(), path.size()}, stamp);
    stamp.hash = contentHash(text);
    return stamp;
}

bool readStamp(const Containers::StringView path, FileStamp& stamp, std::string& error) {
    stamp = {};
    /* Gone is a state to report, not a failure */
    struct stat info;
    if(::stat(std::string{path.data(), path.size()}.data(), &info) != 0 && errno == ENOENT) return true;
    std::string text;
    if(!readFile(path, text, error)) return false;
    stamp = stampOf(path, {text.data(), text.size()});
    return true;
}

std::string describeFileChange(const FileStamp& before, const FileStamp& now) {
    if(before.exists != now.exists) return before.exists ? "it was removed" : "a file appeared there";
    if(!now.exists || now.hash == before.hash) return {};
    std::string what[3];
    std::size_t count = 0;
    if(now.size != before.size)
        what[count++] = "size (" + std::to_string(before.size) + " -> " + std::to_string(now.size) + " bytes)";
    if(now.modified != before.modified) what[count++] = "modification time";
    what[count++] = "content";
    std::string text = "its " + what[0];
    for(std::size_t i = 1; i != count; ++i) text += (i + 1 == count ? " and " : ", ") + what[i];
    return text;
}

}
