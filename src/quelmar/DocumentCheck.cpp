/* What get, set and remove accept: pointers and values that can't break
   the document, its history or a later load of the saved file. */
#include "DocumentCheck.h"

#include <unordered_set>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "Objects.h"
#include "Session.h"

namespace quelmar {

using QuelmarEngine::JsonPointer;

namespace {

std::string tokenText(const JsonPointer& pointer, const std::size_t i) {
    const auto& name = pointer.token(i).name;
    return std::string{name.data(), name.size()};
}

/* The pointer text of the parent: a valid pointer's last token starts at
   its last slash, escaped slashes being "~1" */
std::string parentText(const std::string& text) {
    return text.substr(0, text.rfind('/'));
}

const char* typeName(const rapidjson::Value& value) {
    if(value.IsObject()) return "an object";
    if(value.IsArray()) return "an array";
    if(value.IsString()) return "a string";
    if(value.IsNumber()) return "a number";
    if(value.IsBool()) return "a boolean";
    return "null";
}

bool isRecordMap(const std::string& name) {
    return name == "objects" || name == "skins";
}

/* A top-level object is a resource map: a load refuses keys that can't
   stand in a path, and keys that are there twice */
bool checkMap(Session& session, const std::string& name, const rapidjson::Value& map) {
    if(!map.IsObject()) {
        if(isRecordMap(name)) return session.fail(name + " has to be a JSON object");
        return true;
    }
    if(name == "objects" && map.MemberCount() > QuelmarEditor::MaxObjects)
        return session.fail("a project can have at most " + std::to_string(QuelmarEditor::MaxObjects) + " objects");
    std::unordered_set<std::string> keys;
    keys.reserve(map.MemberCount());
    for(auto it = map.MemberBegin(); it != map.MemberEnd(); ++it) {
        const std::string key{it->name.GetString(), it->name.GetStringLength()};
        if(!isUsableKey(key))
            return session.fail("the key " + key + " in " + name + " is empty or holds one of / ~ \" \\ or a control character");
        if(!keys.insert(key).second)
            return session.fail("the key " + key + " is in " + name + " twice");
        if(isRecordMap(name) && !it->value.IsObject())
            return session.fail("record " + key + " of " + name + " has to be a JSON object");
    }
    return true;
}

}

bool checkPointer(Session& session, const JsonPointer& pointer, const std::string& text) {
    if(pointer.isValid()) return true;
    return session.fail("invalid JSON Pointer " + text + " at byte " + std::to_string(pointer.errorOffset()) +
        ": it has to be empty or start with /, and ~ has to be followed by 0 or 1");
}

bool checkSetTarget(Session& session, const JsonPointer& pointer, const std::string& text) {
    const std::size_t count = pointer.tokenCount();
    if(!count) return session.fail("set can't replace the whole document; set its members instead");
    if(count >= QuelmarEngine::JsonMaxDepth) return session.fail("the pointer " + text + " is nested too deep");

    const std::string parentPath = parentText(text);
    const rapidjson::Value* const parent = JsonPointer{{parentPath.data(), parentPath.size()}}.get(*session.editor.data.project.document);
    const std::string parentName = parentPath.empty() ? std::string{"the document"} : parentPath;
    if(!parent) return session.fail("there is no value at " + parentPath + " to set a member of");

    const JsonPointer::Token& last = pointer.token(count - 1);
    if(parent->IsArray()) {
        const bool append = last.name.size() == 1 && last.name.data()[0] == '-';
        if(!append && last.index == JsonPointer::InvalidIndex)
            return session.fail(parentName + " is an array: the last token has to be an index or -");
        if(!append && last.index > parent->Size())
            return session.fail("index " + std::to_string(last.index) + " is past the end of the array at " + parentName +
                ", which has " + std::to_string(parent->Size()) + " elements");
    } else if(!parent->IsObject())
        return session.fail(parentName + " is " + typeName(*parent) + ", which has no members");

    /* Top-level names and the keys of top-level maps go into change paths
       unescaped */
    if(count == 1 && !isUsableKey(tokenText(pointer, 0)))
        return session.fail("a top-level name can't be empty or hold / ~ \" \\ or a control character");
    if(count == 2 && parent->IsObject() && !isUsableKey(tokenText(pointer, 1)))
        return session.fail("a key can't be empty or hold / ~ \" \\ or a control character");
    if(count == 2 && tokenText(pointer, 0) == "objects" && !pointer.get(*session.editor.data.project.document))
        return checkRoomForObjects(session, 1);
    return true;
}

bool checkSetValue(Session& session, const JsonPointer& pointer, const rapidjson::Value& value) {
    const std::size_t count = pointer.tokenCount();
    if(count == 1) return checkMap(session, tokenText(pointer, 0), value);
    if(count == 2 && isRecordMap(tokenText(pointer, 0)) && !value.IsObject())
        return session.fail("a record of " + tokenText(pointer, 0) + " has to be a JSON object");
    return true;
}

bool checkRemoveTarget(Session& session, const JsonPointer& pointer, const std::string& text) {
    if(!pointer.tokenCount()) return session.fail("remove can't remove the whole document");
    if(!pointer.get(*session.editor.data.project.document)) return session.fail("there is no value at " + text);
    return true;
}

}
