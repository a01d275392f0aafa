#ifndef Quelmar_tests_TestFiles_h
#define Quelmar_tests_TestFiles_h
/* Files for the tests: whole files read and written, and a folder of a
   test's own that goes away with everything in it. */

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace QuelmarTest {

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
