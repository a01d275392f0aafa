#include "QuelmarEngine/host/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QuelmarEngine {

namespace {

/* Names of temporary files being written, one slot per concurrent write; a
   lock-free pointer is what a signal handler may read */
std::atomic<const char*> pendingFiles[8];
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler can't read the slots");

/* Registers @p name for the cleanup; false when every slot is taken, in which
   case an interrupted write leaves its file behind */
std::atomic<const char*>* registerPending(const char* const name) {
    for(std::atomic<const char*>& slot: pendingFiles) {
        const char* expected = nullptr;
        if(slot.compare_exchange_strong(expected, name)) return &slot;
    }
    return nullptr;
}

/* Signals that end the process while it writes: blocked between creating the
   temporary file and registering it, so that no moment leaves it unnoticed */
class BlockedSignals {
    public:
        BlockedSignals() {
            sigset_t set;
            sigemptyset(&set);
            for(const int signal: {SIGINT, SIGTERM, SIGHUP, SIGXFSZ}) sigaddset(&set, signal);
            pthread_sigmask(SIG_BLOCK, &set, &_previous);
        }
        ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &_previous, nullptr); }

        BlockedSignals(const BlockedSignals&) = delete;
        BlockedSignals& operator=(const BlockedSignals&) = delete;

    private:
        sigset_t _previous;
};

std::string errnoText() {
    return std::strerror(errno);
}

/* The file a symbolic link points to, else @p path itself */
std::string resolvedTarget(std::string path) {
    struct stat info;
    if(::lstat(path.data(), &info) == 0 && S_ISLNK(info.st_mode)) {
        if(char* const resolved = ::realpath(path.data(), nullptr)) {
            path = resolved;
            std::free(resolved);
        }
    }
    return path;
}

/* Permissions of the file that is replaced, else the usual ones */
mode_t modeFor(const std::string& target) {
    struct stat info;
    if(::stat(target.data(), &info) == 0) return info.st_mode & 07777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

bool writeAll(const int fd, const Containers::StringView text, std::string& error) {
    for(std::size_t written = 0; written < text.size(); ) {
        const ssize_t count = ::write(fd, text.data() + written, text.size() - written);
        if(count < 0 && errno == EINTR) continue;
        if(count <= 0) {
            error = errnoText();
            return false;
        }
        written += std::size_t(count);
    }
    return true;
}

/* Makes the rename itself durable */
void syncFolderOf(const std::string& target) {
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : target.substr(0, slash);
    const int fd = ::open(folder.data(), O_RDONLY|O_DIRECTORY|O_CLOEXEC);
    if(fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

}

bool writeFileAtomically(const Containers::StringView path, const Containers::StringView text, std::string& error) {
    const std::string target = resolvedTarget({path.data(), path.size()});
    std::string temporary = target + ".XXXXXX";
    int fd;
    std::atomic<const char*>* slot;
    {
        const BlockedSignals blocked;
        fd = ::mkostemp(temporary.data(), O_CLOEXEC);
        if(fd < 0) {
            error = errnoText();
            return false;
        }
        slot = registerPending(temporary.data());
    }

    /* Each step runs only when the ones before it succeeded */
    const auto check = [&error](const bool succeeded) {
        if(!succeeded && error.empty()) error = errnoText();
        return succeeded;
    };
    error.clear();
    bool done = writeAll(fd, text, error);
    done = done && check(::fchmod(fd, modeFor(target)) == 0);
    done = done && check(::fsync(fd) == 0);
    done = check(::close(fd) == 0) && done;
    done = done && check(::rename(temporary.data(), target.data()) == 0);
    if(!done) ::unlink(temporary.data());
    if(slot) slot->store(nullptr);
    if(!done) return false;

    syncFolderOf(target);
    return true;
}

void removePendingTemporaryFiles() {
    for(std::atomic<const char*>& slot: pendingFiles)
        if(const char* const name = slot.load()) ::unlink(name);
}

}
