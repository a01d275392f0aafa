/* The files the program reads and writes besides the project: scripts and
   clipboard files. */
#include "Files.h"

#include <sys/stat.h>

#include "QuelmarEngine/host/AtomicFile.h"
#include "QuelmarEngine/host/FileReading.h"

namespace quelmar {

bool readInputFile(const std::string& path, std::string& text, std::string& error) {
    if(QuelmarEngine::readFile({path.data(), path.size()}, text, error)) return true;
    error = "can't read " + path + ": " + error;
    return false;
}

bool writeClipboardFile(const std::string& path, const std::string& project, const std::string& text, const bool force, std::string& error) {
    struct stat target, open;
    if(::stat(path.data(), &target) == 0) {
        /* Names can differ for one file: links, "./", another folder path */
        if(!project.empty() && ::stat(project.data(), &open) == 0 && open.st_dev == target.st_dev && open.st_ino == target.st_ino) {
            error = "can't write " + path + ": it is the open project file";
            return false;
        }
        if(!force) {
            error = "can't write " + path + ": it exists; --force replaces it";
            return false;
        }
    }
    if(QuelmarEngine::writeFileAtomically({path.data(), path.size()}, {text.data(), text.size()}, error)) return true;
    error = "can't write " + path + ": " + error;
    return false;
}

}
