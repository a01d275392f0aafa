#include "QuelmarEngine/host/FileReading.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QuelmarEngine {

namespace {

const char* kindOf(const mode_t mode) {
    if(S_ISDIR(mode)) return "it is a directory";
    if(S_ISFIFO(mode)) return "it is a FIFO, not a regular file";
    if(S_ISCHR(mode) || S_ISBLK(mode)) return "it is a device, not a regular file";
    return "it is not a regular file";
}

}

bool readFile(const Containers::StringView path, std::string& text, std::string& error, const std::size_t maxSize) {
    text.clear();
    const std::string name{path.data(), path.size()};
    /* Non-blocking, so that opening a FIFO with no writer returns at once */
    const int fd = ::open(name.data(), O_RDONLY|O_NONBLOCK|O_CLOEXEC);
    if(fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    struct stat info;
    if(::fstat(fd, &info) != 0) error = std::strerror(errno);
    else if(!S_ISREG(info.st_mode)) error = kindOf(info.st_mode);
    else if(std::size_t(info.st_size) > maxSize) error = "it is larger than " + std::to_string(maxSize) + " bytes";
    else {
        text.reserve(std::size_t(info.st_size));
        /* The file may grow while it is read; one byte past the bound tells */
        char buffer[65536];
        ssize_t count;
        while((count = ::read(fd, buffer, sizeof(buffer))) != 0) {
            if(count < 0 && errno == EINTR) continue;
            if(count < 0) {
                error = std::strerror(errno);
                break;
            }
            if(text.size() + std::size_t(count) > maxSize) {
                error = "it is larger than " + std::to_string(maxSize) + " bytes";
                break;
            }
            text.append(buffer, std::size_t(count));
        }
        if(!count) {
            ::close(fd);
            return true;
        }
    }
    ::close(fd);
    text.clear();
    return false;
}

}
