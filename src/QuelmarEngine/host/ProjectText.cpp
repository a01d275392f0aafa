#include "QuelmarEngine/host/ProjectText.h"

#include <string>
#include <unordered_set>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectFile.h"

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

}

Containers::Pointer<rapidjson::Document> parseProject(const Containers::StringView json, const std::string& source) {
    auto parsed = Containers::pointer<rapidjson::Document>();
    JsonParseError error;
    std::string problem;
    if(!parseJson(*parsed, json, error))
        problem = "invalid JSON at line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ": " + std::string{error.reason.data(), error.reason.size()};
    else problem = projectProblem(*parsed);
    if(problem.empty()) return parsed;

    Utility::Error{} << "Can't load " + source + ": " + problem;
    return nullptr;
}

}
