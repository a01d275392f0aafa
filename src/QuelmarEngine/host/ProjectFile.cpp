#include "QuelmarEngine/host/ProjectFile.h"

#include <cstdlib>
#include <string>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/AtomicFile.h"
#include "QuelmarEngine/host/FileReading.h"
#include "QuelmarEngine/host/ProjectText.h"

namespace QuelmarEngine {

ProjectFile::ProjectFile(): ValueAccess{*this}, document{Containers::pointer<rapidjson::Document>()} {
    document->SetObject();
}

ProjectFile::~ProjectFile() = default;

bool ProjectFile::loadFromString(const Containers::StringView json) {
    Containers::Pointer<rapidjson::Document> parsed = parseProject(json, "the project");
    if(!parsed) return false;
    document = std::move(parsed);
    documentChanged();
    _layout = {};
    _fileStamp = {};
    return true;
}

bool ProjectFile::loadFromFile(const Containers::StringView path) {
    const std::string filename{path.data(), path.size()};
    std::string text, error;
    if(!readFile(path, text, error)) {
        Utility::Error{} << "Can't load " + filename + ": " + error;
        return false;
    }
    Containers::Pointer<rapidjson::Document> parsed = parseProject({text.data(), text.size()}, filename);
    if(!parsed) return false;
    document = std::move(parsed);
    documentChanged();
    _layout = detectJsonFileLayout({text.data(), text.size()});
    _fileStamp = stampOf(path, {text.data(), text.size()});
    return true;
}

Containers::String ProjectFile::toJson() const {
    const std::string text = writeJson(*document);
    return Containers::String{text.data(), text.size()};
}

bool ProjectFile::saveToFile(const Containers::StringView path) const {
    const std::string text = writeJsonFile(*document, _layout);
    std::string error;
    if(writeFileAtomically(path, {text.data(), text.size()}, error)) {
        _fileStamp = stampOf(path, {text.data(), text.size()});
        return true;
    }
    Utility::Error{} << "Can't save " + std::string{path.data(), path.size()} + ": " + error;
    return false;
}

Containers::String ProjectFile::generateId() {
    /* A host's generator is checked too: a key that a loaded or pasted
       record already has would make the new record write over it */
    constexpr std::size_t MaxTaken = 1000;
    for(std::size_t taken = 0; ; ++taken) {
        Containers::String key = _idGenerator ? _idGenerator() : _keys.next();
        bool isTaken = false;
        for(auto map = document->MemberBegin(); map != document->MemberEnd() && !isTaken; ++map)
            isTaken = map->value.IsObject() && findMember(map->value, key);
        if(!isTaken) return key;
        if(_idGenerator && taken + 1 == MaxTaken) {
            Utility::Error{} << "ProjectFile::generateId(): the key generator gave" << MaxTaken << "keys in a row that records already have";
            std::abort();
        }
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
