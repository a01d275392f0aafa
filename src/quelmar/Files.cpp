/* Reading and writing the clipboard files that copy and paste take. */
#include "Files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace quelmar {

bool readFile(const std::string& path, std::string& text, std::string& error) {
    struct stat info;
    if(::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        error = "can't read " + path + ": it is a directory";
        return false;
    }
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if(!file) {
        error = "can't read " + path + ": " + std::strerror(errno);
        return false;
    }
    text.clear();
    char buffer[65536];
    std::size_t count;
    while((count = std::fread(buffer, 1, sizeof(buffer), file)) > 0) text.append(buffer, count);
    const bool failed = std::ferror(file);
    const int savedErrno = errno;
    std::fclose(file);
    if(failed) error = "can't read " + path + ": " + std::strerror(savedErrno);
    return !failed;
}

bool writeFile(const std::string& path, const std::string& text, std::string& error) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if(!file) {
        error = "can't write " + path + ": " + std::strerror(errno);
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int savedErrno = errno;
    /* A full disk may only show when the buffer is flushed */
    const bool closed = std::fclose(file) == 0;
    if(written && closed) return true;
    error = "can't write " + path + ": " + std::strerror(written ? errno : savedErrno);
    return false;
}

}
