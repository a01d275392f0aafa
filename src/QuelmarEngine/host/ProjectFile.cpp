#include "QuelmarEngine/host/ProjectFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectText.h"

namespace QuelmarEngine {

namespace {

std::string errnoText() {
    return std::strerror(errno);
}

}

ProjectFile::ProjectFile(): ValueAccess{*this}, document{Containers::pointer<rapidjson::Document>()} {
    document->SetObject();
}

ProjectFile::~ProjectFile() = default;

bool ProjectFile::loadFromString(const Containers::StringView json) {
    Containers::Pointer<rapidjson::Document> parsed = parseProject(json, "the project");
    if(!parsed) return false;
    document = std::move(parsed);
    documentChanged();
    return true;
}

bool ProjectFile::loadFromFile(const Containers::StringView path) {
    const std::string filename{path.data(), path.size()};
    std::string text;
    {
        const int fd = ::open(filename.data(), O_RDONLY|O_CLOEXEC);
        struct stat info;
        if(fd < 0 || ::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
            const std::string reason = fd >= 0 ? "it is a directory" : errnoText();
            if(fd >= 0) ::close(fd);
            Utility::Error{} << "Can't load " + filename + ": " + reason;
            return false;
        }
        char buffer[65536];
        ssize_t count;
        while((count = ::read(fd, buffer, sizeof(buffer))) > 0 || (count < 0 && errno == EINTR))
            if(count > 0) text.append(buffer, std::size_t(count));
        const std::string reason = count < 0 ? errnoText() : std::string{};
        ::close(fd);
        if(count < 0) {
            Utility::Error{} << "Can't load " + filename + ": " + reason;
            return false;
        }
    }

    Containers::Pointer<rapidjson::Document> parsed = parseProject({text.data(), text.size()}, filename);
    if(!parsed) return false;
    document = std::move(parsed);
    documentChanged();
    return true;
}

Containers::String ProjectFile::toJson() const {
    const std::string text = writeJson(*document);
    return Containers::String{text.data(), text.size()};
}

bool ProjectFile::saveToFile(const Containers::StringView path) const {
    std::string target{path.data(), path.size()};
    /* Replace what a link points to, not the link */
    struct stat info;
    if(::lstat(target.data(), &info) == 0 && S_ISLNK(info.st_mode)) {
        if(char* resolved = ::realpath(target.data(), nullptr)) {
            target = resolved;
            std::free(resolved);
        }
    }

    const std::string text = writeJson(*document, JsonLayout::Indented) + "\n";
    std::string temporary = target + ".XXXXXX";
    const int fd = ::mkstemp(temporary.data());
    if(fd < 0) {
        Utility::Error{} << "Can't save " + target + ": " + errnoText();
        return false;
    }

    /* Keep the permissions of the file that is replaced, else the usual ones */
    mode_t mode;
    if(::stat(target.data(), &info) == 0) mode = info.st_mode & 07777;
    else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }

    std::string failure;
    for(std::size_t written = 0; written < text.size() && failure.empty(); ) {
        const ssize_t count = ::write(fd, text.data() + written, text.size() - written);
        if(count < 0 && errno == EINTR) continue;
        if(count <= 0) failure = errnoText();
        else written += std::size_t(count);
    }
    if(failure.empty() && ::fchmod(fd, mode) != 0) failure = errnoText();
    if(failure.empty() && ::fsync(fd) != 0) failure = errnoText();
    if(::close(fd) != 0 && failure.empty()) failure = errnoText();
    if(failure.empty() && ::rename(temporary.data(), target.data()) != 0) failure = errnoText();
    if(!failure.empty()) {
        ::unlink(temporary.data());
        Utility::Error{} << "Can't save " + target + ": " + failure;
        return false;
    }

    /* Make the rename itself durable */
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : target.substr(0, slash);
    const int folderFd = ::open(folder.data(), O_RDONLY|O_DIRECTORY|O_CLOEXEC);
    if(folderFd >= 0) {
        ::fsync(folderFd);
        ::close(folderFd);
    }
    return true;
}

Containers::String ProjectFile::generateId() {
    if(_idGenerator) return _idGenerator();
    for(;;) {
        Containers::String key = _keys.next();
        bool taken = false;
        for(auto map = document->MemberBegin(); map != document->MemberEnd() && !taken; ++map)
            taken = map->value.IsObject() && findMember(map->value, key);
        if(!taken) return key;
    }
}

void ProjectFile::setIdGenerator(std::function<Containers::String()> generator) {
    _idGenerator = std::move(generator);
}

const rapidjson::Value* ProjectFile::resourceByName(const Containers::String& type, const Containers::String& name) const {
    _names.bind(*document);
    return _names.find(memberIndex(), type, name);
}

rapidjson::Value* ProjectFile::getValue(const char* const path, bool) const {
    const JsonPointer pointer{path};
    /* The document is the host's to change; this is only a way to it */
    return pointer.isValid() ? pointer.get(const_cast<rapidjson::Document&>(*document), &memberIndex()) : nullptr;
}

rapidjson::Value* ProjectFile::findMember(const rapidjson::Value& object, const Containers::StringView name) const {
    MemberIndex& index = memberIndex();
    const rapidjson::SizeType position = index.find(object, name);
    if(position == object.MemberCount()) return nullptr;
    /* The document is the host's to change; this is only a way to it */
    return &const_cast<rapidjson::Value&>((object.MemberBegin() + position)->value);
}

MemberIndex& ProjectFile::memberIndex() const {
    _memberIndex.bind(*document);
    return _memberIndex;
}

void ProjectFile::valueChanged(const JsonPointer& pointer) {
    _names.bind(*document);
    _names.valueChanged(memberIndex(), pointer);
}

void ProjectFile::documentChanged() {
    _memberIndex.clear();
    _names.clear();
}

JsonAllocator& ProjectFile::allocator() {
    return document->GetAllocator();
}

}
