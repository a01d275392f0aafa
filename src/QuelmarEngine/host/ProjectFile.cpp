#include "QuelmarEngine/host/ProjectFile.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <unordered_set>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/host/JsonPrinter.h"

namespace QuelmarEngine {

namespace {

/* Why a key can't stand unescaped in a JSON Pointer or a clipboard text */
const char* keyProblem(const rapidjson::Value& key) {
    const char* const data = key.GetString();
    for(std::size_t i = 0, size = key.GetStringLength(); i != size; ++i) {
        const unsigned char c = data[i];
        if(c == '/') return "contains \"/\"";
        if(c == '~') return "contains \"~\"";
        if(c == '"') return "contains a double quote";
        if(c == '\\') return "contains a backslash";
        if(c < 0x20 || c == 0x7f) return "contains a control character";
    }
    return nullptr;
}

std::string quoted(const rapidjson::Value& key) {
    return writeJson(key);
}

/* The reason a parsed document can't be a project, or an empty string */
std::string projectProblem(const rapidjson::Document& document) {
    if(!document.IsObject()) return "the root is not a JSON object";
    for(const char* map: {"objects", "skins"}) {
        const rapidjson::Value* const value = findMember(document, map);
        if(value && !value->IsObject())
            return std::string{"\""} + map + "\" is not a JSON object";
    }

    std::unordered_set<std::string> seen;
    for(auto top = document.MemberBegin(); top != document.MemberEnd(); ++top) {
        if(const char* problem = keyProblem(top->name))
            return "the member name " + quoted(top->name) + " " + problem;
        if(!seen.emplace(top->name.GetString(), top->name.GetStringLength()).second)
            return "the member name " + quoted(top->name) + " is there twice";
        if(!top->value.IsObject()) continue;

        std::unordered_set<std::string> keys;
        keys.reserve(top->value.MemberCount());
        for(auto record = top->value.MemberBegin(); record != top->value.MemberEnd(); ++record) {
            if(const char* problem = keyProblem(record->name))
                return "the key " + quoted(record->name) + " in " + quoted(top->name) + " " + problem;
            if(!keys.emplace(record->name.GetString(), record->name.GetStringLength()).second)
                return "the key " + quoted(record->name) + " is in " + quoted(top->name) + " twice";
        }
    }

    const rapidjson::Value* const objects = findMember(document, "objects");
    if(objects && objects->MemberCount() > ProjectFile::MaxObjects)
        return "\"objects\" holds " + std::to_string(objects->MemberCount()) + " records, more than the " + std::to_string(ProjectFile::MaxObjects) + " that a project can have";
    return {};
}

const char Base36[] = "0123456789abcdefghijklmnopqrstuvwxyz";

void appendBase36(std::string& out, unsigned long long value, const std::size_t minDigits) {
    char digits[16];
    std::size_t count = 0;
    do {
        digits[count++] = Base36[value % 36];
        value /= 36;
    } while(value);
    for(std::size_t i = count; i < minDigits; ++i) out += '0';
    while(count) out += digits[--count];
}

}

ProjectFile::ProjectFile(): ValueAccess{*this}, document{Containers::pointer<rapidjson::Document>()} {
    document->SetObject();
}

ProjectFile::~ProjectFile() = default;

namespace {

/* Parses and checks a project text; on failure prints one line that names
   the source and returns null */
Containers::Pointer<rapidjson::Document> parseProject(const Containers::StringView json, const std::string& source) {
    auto parsed = Containers::pointer<rapidjson::Document>();
    JsonParseError error;
    std::string problem;
    if(!parseJson(*parsed, json, error))
        problem = "invalid JSON at byte " + std::to_string(error.offset) + ": " + std::string{error.reason.data(), error.reason.size()};
    else problem = projectProblem(*parsed);
    if(problem.empty()) return parsed;

    Utility::Error{} << "Can't load " + source + ": " + problem;
    return nullptr;
}

std::string errnoText() {
    return std::strerror(errno);
}

}

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

    if(_idPrefix.isEmpty()) {
        /* Seconds since the epoch keep keys of later sessions sorting after
           earlier ones; two random digits keep two sessions started in the
           same second apart */
        std::string prefix;
        appendBase36(prefix, (unsigned long long)std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count(), 6);
        std::random_device random;
        appendBase36(prefix, random() % (36*36), 2);
        _idPrefix = Containers::String{prefix.data(), prefix.size()};
    }

    for(;;) {
        std::string key{_idPrefix.data(), _idPrefix.size()};
        appendBase36(key, ++_idCounter, 4);
        bool taken = false;
        for(auto map = document->MemberBegin(); map != document->MemberEnd() && !taken; ++map)
            taken = map->value.IsObject() && findMember(map->value, {key.data(), key.size()});
        if(!taken) return Containers::String{key.data(), key.size()};
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
