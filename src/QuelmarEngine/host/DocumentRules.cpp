#include "QuelmarEngine/host/DocumentRules.h"

#include <cfloat>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/host/ProjectFile.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"

namespace QuelmarEngine {

namespace {

using Implementation::text;
using Implementation::objectPath;

const char* const KeyCharacters = "/ ~ \" \\ or a control character";

std::string text(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

std::string tokenText(const JsonPointer& pointer, const std::size_t i) {
    return text(pointer.token(i).name);
}

bool isRecordMap(const std::string& name) {
    return name == "objects" || name == "skins";
}

const char* typeName(const rapidjson::Value& value) {
    if(value.IsObject()) return "an object";
    if(value.IsArray()) return "an array";
    if(value.IsString()) return "a string";
    if(value.IsNumber()) return "a number";
    if(value.IsBool()) return "a boolean";
    return "null";
}

/* The member @p name of @p object, scanning; for records and parsed texts,
   which are small or not part of the document */
const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* const name) {
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

/* The parent cycle in the map @p objects, as "the parents of K lead back to
   K" for its first key in the map, or an empty string. Every record is
   walked up once. */
std::string cycleInMap(const rapidjson::Value& objects) {
    std::unordered_map<std::string, const rapidjson::Value*> records;
    for(auto it = objects.MemberBegin(); it != objects.MemberEnd(); ++it)
        records.emplace(text(it->name), &it->value);
    enum: char { OnPath = 1, Done = 2 };
    std::unordered_map<std::string, char> state;
    std::vector<std::string> path;
    for(auto it = objects.MemberBegin(); it != objects.MemberEnd(); ++it) {
        std::string current = text(it->name);
        path.clear();
        for(;;) {
            char& visited = state[current];
            if(visited == Done) break;
            if(visited == OnPath) return "the parents of " + current + " lead back to " + current;
            visited = OnPath;
            path.push_back(current);
            const rapidjson::Value* const record = records.find(current)->second;
            const rapidjson::Value* const parent = record->IsObject() ? memberOf(*record, "parent") : nullptr;
            if(!parent || !parent->IsString() || !parent->GetStringLength() || !records.count(text(*parent))) break;
            current = text(*parent);
        }
        for(const std::string& key: path) state[key] = Done;
    }
    return {};
}

/* The rules for one record of the map @p map */
std::string recordProblem(const ProjectFile& project, const std::string& map, const Containers::StringView key, const rapidjson::Value& record) {
    if(!isRecordMap(map)) return {};
    if(!record.IsObject()) return "a record of " + map + " has to be a JSON object";
    if(map != "objects") return {};
    if(const rapidjson::Value* const transformation = memberOf(record, "transformation"))
        if(std::string problem = transformationProblem(key, *transformation); !problem.empty()) return problem;
    const rapidjson::Value* const parent = memberOf(record, "parent");
    return parent && parent->IsString() ? parentProblem(project, key, {parent->GetString(), parent->GetStringLength()}) : std::string{};
}

/* The rules for the top-level member @p name as a whole */
std::string topLevelProblem(const std::string& name, const rapidjson::Value& value) {
    if(!value.IsObject()) {
        if(isRecordMap(name)) return name + " has to be a JSON object";
        return {};
    }
    if(name == "objects" && value.MemberCount() > ProjectFile::MaxObjects)
        return "a project can have at most " + std::to_string(ProjectFile::MaxObjects) + " objects";
    std::unordered_set<std::string> keys;
    keys.reserve(value.MemberCount());
    for(auto it = value.MemberBegin(); it != value.MemberEnd(); ++it) {
        const std::string key = text(it->name);
        if(!isUsableKey({it->name.GetString(), it->name.GetStringLength()}))
            return "the key " + key + " in " + name + " holds one of " + KeyCharacters;
        if(!keys.insert(key).second)
            return "the key " + key + " is in " + name + " twice";
        if(isRecordMap(name) && !it->value.IsObject())
            return "record " + key + " of " + name + " has to be a JSON object";
        const rapidjson::Value* const transformation = name == "objects" ? memberOf(it->value, "transformation") : nullptr;
        if(transformation)
            if(std::string problem = transformationProblem({key.data(), key.size()}, *transformation); !problem.empty()) return problem;
    }
    return name == "objects" ? cycleInMap(value) : std::string{};
}

/* The transformation @p current as a change of its element @p token would
   leave it, into @p out; false when it isn't an array */
bool changedTransformation(const rapidjson::Value& current, const JsonPointer::Token& token, const rapidjson::Value* value, rapidjson::Document& out) {
    if(!current.IsArray()) return false;
    out.CopyFrom(current, out.GetAllocator());
    const bool append = token.name.size() == 1 && token.name.data()[0] == '-';
    if(value && (append || token.index == out.Size()))
        out.PushBack(rapidjson::Value{}.CopyFrom(*value, out.GetAllocator()), out.GetAllocator());
    else if(token.index >= out.Size()) return true;
    else if(value) out[token.index].CopyFrom(*value, out.GetAllocator());
    else out.Erase(out.Begin() + token.index);
    return true;
}

/* The rules for a change below a record of "objects", @p pointer having at
   least three tokens */
std::string objectMemberProblem(const ProjectFile& project, const JsonPointer& pointer, const rapidjson::Value* value) {
    const std::string key = tokenText(pointer, 1);
    const std::string member = tokenText(pointer, 2);
    const std::size_t count = pointer.tokenCount();
    if(member == "parent" && count == 3 && value && value->IsString())
        return parentProblem(project, {key.data(), key.size()}, {value->GetString(), value->GetStringLength()});
    if(member != "transformation") return {};
    if(count == 3) return value ? transformationProblem({key.data(), key.size()}, *value) : std::string{};

    /* An element: the transformation has to be whole afterwards */
    const std::string path = objectPath({key.data(), key.size()}, "transformation");
    const rapidjson::Value* const current = project.getValue(path.data(), false);
    rapidjson::Document changed;
    if(count > 4 || !current || !changedTransformation(*current, pointer.token(3), value, changed))
        changed.SetNull();
    return transformationProblem({key.data(), key.size()}, changed);
}

}

std::string changeTargetProblem(const ProjectFile& project, const JsonPointer& pointer, const Containers::StringView pathView, const bool removal) {
    const std::string path = text(pathView);
    const std::size_t count = pointer.tokenCount();
    if(!count) return removal ? "remove can't remove the whole document" : "set can't replace the whole document; set its members instead";
    if(count >= JsonMaxDepth) return "the pointer " + path + " is nested too deep";
    if(removal) return project.getValue(path.data(), false) ? std::string{} : "there is no value at " + path;

    /* A valid pointer's last token starts at its last slash, escaped slashes
       being "~1" */
    const std::string parentPath = path.substr(0, path.rfind('/'));
    const rapidjson::Value* const parent = project.getValue(parentPath.data(), false);
    const std::string parentName = parentPath.empty() ? std::string{"the document"} : parentPath;
    if(!parent) return "there is no value at " + parentPath + " to set a member of";
    const JsonPointer::Token& last = pointer.token(count - 1);
    if(parent->IsArray()) {
        const bool append = last.name.size() == 1 && last.name.data()[0] == '-';
        if(!append && last.index == JsonPointer::InvalidIndex)
            return parentName + " is an array: the last token has to be an index or -";
        if(!append && last.index > parent->Size())
            return "index " + std::to_string(last.index) + " is past the end of the array at " + parentName +
                ", which has " + std::to_string(parent->Size()) + " elements";
        return {};
    }
    if(!parent->IsObject()) return parentName + " is " + typeName(*parent) + ", which has no members";

    /* Top-level names and the keys of top-level maps go into change paths
       unescaped */
    if(count == 1 && !isUsableKey(last.name))
        return std::string{"a top-level name can't hold "} + KeyCharacters;
    if(count == 2 && !isUsableKey(last.name))
        return std::string{"a key can't hold "} + KeyCharacters;
    return {};
}

bool isUsableKey(const Containers::StringView key) {
    for(std::size_t i = 0; i != key.size(); ++i) {
        const char c = key.data()[i];
        const unsigned char u = c;
        if(c == '/' || c == '~' || c == '"' || c == '\\' || u < 0x20 || u == 0x7f) return false;
    }
    return true;
}

std::string objectRoomProblem(const ProjectFile& project, const std::size_t count) {
    const rapidjson::Value* const objects = project.getValue("/objects", false);
    const std::size_t existing = objects && objects->IsObject() ? objects->MemberCount() : 0;
    /* A project file with more objects would not load again */
    if(existing + count <= ProjectFile::MaxObjects) return {};
    return "the project has " + std::to_string(existing) + " objects and can have at most " + std::to_string(ProjectFile::MaxObjects);
}

std::string transformationProblem(const Containers::StringView key, const rapidjson::Value& transformation) {
    bool valid = transformation.IsArray() && transformation.Size() == 16;
    /* The scene computes in single precision, where larger numbers are infinite */
    for(rapidjson::SizeType i = 0; valid && i != 16; ++i)
        valid = transformation[i].IsNumber() && std::abs(transformation[i].GetDouble()) <= FLT_MAX;
    if(valid) return {};
    return "the \"transformation\" of " + text(key) + " has to be an array of 16 numbers, each at most 3.4e38 in size";
}

std::string parentProblem(const ProjectFile& project, const Containers::StringView key, const Containers::StringView parent) {
    const rapidjson::Value* const objects = project.getValue("/objects", false);
    /* Walk up from the new parent; a loaded file may hold a cycle that
       doesn't pass the object, which the bound ends */
    std::string current = text(parent);
    for(std::size_t steps = objects && objects->IsObject() ? objects->MemberCount() + 1 : 1; steps && !current.empty(); --steps) {
        if(Containers::StringView{current.data(), current.size()} == key)
            return parent == key ? "can't make " + text(key) + " its own parent" :
                "can't make " + text(parent) + " the parent of " + text(key) + ": " + text(parent) + " lies below " + text(key);
        const std::string path = objectPath({current.data(), current.size()}, "parent");
        const rapidjson::Value* const next = project.getValue(path.data(), false);
        if(!next || !next->IsString()) break;
        current = text(*next);
    }
    return {};
}

std::string changeProblem(const ProjectFile& project, const JsonPointer& pointer, const Containers::StringView path, const rapidjson::Value* const value) {
    const std::string pathText = text(path);
    if(std::string problem = changeTargetProblem(project, pointer, path, !value); !problem.empty()) return problem;

    const std::size_t count = pointer.tokenCount();
    const std::string top = tokenText(pointer, 0);
    if(count == 1) return value ? topLevelProblem(top, *value) : std::string{};
    if(count == 2) {
        std::string mapPath;
        appendPointerToken(mapPath, pointer.token(0).name);
        const rapidjson::Value* const map = project.getValue(mapPath.data(), false);
        if(!value || !map || !map->IsObject()) return {};
        if(std::string problem = recordProblem(project, top, pointer.token(1).name, *value); !problem.empty()) return problem;
        return top == "objects" && !project.getValue(pathText.data(), false) ? objectRoomProblem(project, 1) : std::string{};
    }
    return top == "objects" ? objectMemberProblem(project, pointer, value) : std::string{};
}

std::string clipboardProblem(const rapidjson::Value& clipboard) {
    for(const char* const name: {"objects", "skins"}) {
        const rapidjson::Value* const map = memberOf(clipboard, name);
        if(!map) continue;
        if(!map->IsObject()) return std::string{name} + " has to be a JSON object";
        for(auto it = map->MemberBegin(); it != map->MemberEnd(); ++it) {
            if(!it->value.IsObject()) return "record " + text(it->name) + " of " + name + " has to be a JSON object";
            const rapidjson::Value* const transformation = memberOf(it->value, "transformation");
            if(transformation && std::string{name} == "objects")
                if(std::string problem = transformationProblem({it->name.GetString(), it->name.GetStringLength()}, *transformation); !problem.empty()) return problem;
        }
    }
    return {};
}

}
