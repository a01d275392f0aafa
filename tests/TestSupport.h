#ifndef Quelmar_tests_TestSupport_h
#define Quelmar_tests_TestSupport_h
/* What the tests share: whole files read and written, a folder of a test's
   own that goes away with everything in it, and keys as one line of text. */

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarTest {

/* The keys separated by spaces */
inline std::string join(const QuelmarEngine::StringArrayView& keys) {
    std::string out;
    for(std::size_t i = 0; i != keys.size(); ++i) out += (i ? " " : "") + std::string{keys.get(i)};
    return out;
}

inline std::string join(const std::vector<std::string>& keys) {
    std::string out;
    for(const std::string& key: keys) out += (out.empty() ? "" : " ") + key;
    return out;
}

inline std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream{path, std::ios::binary}.rdbuf();
    return text.str();
}

inline void writeText(const std::string& path, const std::string& text) {
    std::ofstream{path, std::ios::binary} << text;
}

/* In memory where the system has one: syncs cost nothing there, and a
   killed process leaves its writes in the page cache as on a disk */
struct TemporaryFolder {
    TemporaryFolder() {
        struct stat info;
        std::string pattern = ::stat("/dev/shm", &info) == 0 && S_ISDIR(info.st_mode) ? "/dev/shm" : "/tmp";
        pattern += "/quelmar-test-XXXXXX";
        if(::mkdtemp(&pattern[0])) path = pattern;
    }
    ~TemporaryFolder() {
        if(!path.empty()) std::system(("rm -rf '" + path + "'").data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return path + "/" + name; }

    std::string path;
};

}

#endif
