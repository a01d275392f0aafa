/* The session's commands on any record and any value: duplicating and
   removing resource records, setting and removing values by JSON Pointer. */
#include "QuelmarEngine/host/EditSession.h"

#include <functional>
#include <iterator>
#include <unordered_set>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectCheck.h"
#include "QuelmarEngine/host/RecordReferences.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"
#include "QuelmarEngine/host/Implementation/StepLabels.h"

namespace QuelmarEngine {

using Implementation::text;

namespace {

/* For a value that isn't JSON because it was meant as a string and isn't
   quoted, such as a bare word: how to write it */
std::string quotingHint(const Containers::StringView json) {
    std::string value = text(json);
    const std::size_t begin = value.find_first_not_of(" \t\r\n");
    if(begin == std::string::npos) return {};
    value = value.substr(begin, value.find_last_not_of(" \t\r\n") + 1 - begin);
    const char first = value[0];
    if(first == '{' || first == '[' || first == '"' || first == '-' || (first >= '0' && first <= '9')) return {};
    if(value.size() > 1 && first == '\'' && value.back() == '\'') value = value.substr(1, value.size() - 2);
    return " (a string needs double quotes: " + writeJson(rapidjson::Value{rapidjson::StringRef(value.data(), value.size())}) + ")";
}

/* Runs @p change, adding a warning for every inconsistency around
   @p pointer that wasn't there before */
EditResult warningOfNewInconsistencies(QuelmarEditor& editor, const JsonPointer& pointer, const std::function<EditResult()>& change) {
    std::vector<std::string> found = findInconsistenciesAround(editor, pointer);
    const std::unordered_set<std::string> before{std::make_move_iterator(found.begin()), std::make_move_iterator(found.end())};
    EditResult result = change();
    if(result) for(std::string& line: findInconsistenciesAround(editor, pointer))
        if(!before.count(line)) result.addWarning(std::move(line));
    return result;
}

}

const rapidjson::Value* EditSession::findRecord(const Containers::StringView type, const Containers::StringView key, EditResult& result) const {
    std::string path;
    appendPointerToken(path, type);
    const rapidjson::Value* const map = value(path.data());
    appendPointerToken(path, key);
    const rapidjson::Value* const record = map && map->IsObject() ? value(path.data()) : nullptr;
    if(!map) result.fail("the project has no " + text(type));
    else if(!map->IsObject()) result.fail(text(type) + " is not a map of records");
    else if(!record) result.fail(text(type) + " has no record " + text(key));
    return record;
}

EditResult EditSession::duplicateResource(const Containers::StringView type, const Containers::StringView key) {
    EditResult found;
    if(!findRecord(type, key, found)) return found;
    const std::string typeText = text(type), keyText = text(key);
    if(typeText == "objects")
        if(std::string problem = objectRoomProblem(_editor.data.project, 1); !problem.empty()) return EditResult::failure(problem);

    return step("duplicate-resource " + typeText + " " + keyText, [&]{
        const Containers::String newKey = QuelmarEngine::duplicateResource(_editor, typeText.data(), keyText.data());
        return EditResult{}.addKey(newKey.data());
    });
}

EditResult EditSession::deleteResource(const Containers::StringView type, const Containers::StringView key, const DanglingReferences dangling) {
    EditResult found;
    if(!findRecord(type, key, found)) return found;
    const std::string typeText = text(type), keyText = text(key);
    EditResult result;
    if(typeText == "objects" || typeText == "skins") {
        const std::unordered_set<std::string> removed{keyText}, none;
        const std::vector<RecordReference> left = referencesInto(*_editor.data.project.document,
            typeText == "objects" ? removed : none, typeText == "skins" ? removed : none);
        const std::string what = "references to /" + typeText + "/" + keyText;
        if(!left.empty() && dangling == DanglingReferences::Refuse)
            return EditResult::failure(what + " would remain: " + listReferences(left, false));
        if(!left.empty()) result.addWarning("left " + what + ": " + listReferences(left, false));
    }
    return step("delete-resource " + typeText + " " + keyText, [&]{
        QuelmarEngine::deleteResource(_editor, typeText.data(), keyText.data());
        return result;
    });
}

EditResult EditSession::set(const Containers::StringView pointer, const Containers::StringView json) {
    const std::string path = text(pointer);
    const JsonPointer parsedPointer{pointer};
    if(EditResult checked = checkPointer(parsedPointer, pointer); !checked) return checked;

    if(std::string problem = changeTargetProblem(_editor.data.project, parsedPointer, pointer, false); !problem.empty())
        return EditResult::failure(problem);

    /* The document as a whole stays within the nesting a load accepts */
    rapidjson::Document parsed;
    JsonParseError error;
    if(!parseJson(parsed, json, error, unsigned(JsonMaxDepth - parsedPointer.tokenCount())))
        return EditResult::failure("invalid JSON at line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ": " + std::string{error.reason.data(), error.reason.size()} + quotingHint(json));
    if(std::string problem = changeProblem(_editor.data.project, parsedPointer, pointer, &parsed); !problem.empty())
        return EditResult::failure(problem);

    return warningOfNewInconsistencies(_editor, parsedPointer, [&]{
        return step("set " + path + " " + Implementation::labelValue(parsed), [&]{
            _editor.changeManager->pushChange(path.data(), parsed, false);
            return EditResult{};
        });
    });
}

EditResult EditSession::remove(const Containers::StringView pointer) {
    const std::string path = text(pointer);
    const JsonPointer parsedPointer{pointer};
    if(EditResult checked = checkPointer(parsedPointer, pointer); !checked) return checked;
    if(std::string problem = changeProblem(_editor.data.project, parsedPointer, pointer, nullptr); !problem.empty())
        return EditResult::failure(problem);

    return warningOfNewInconsistencies(_editor, parsedPointer, [&]{
        return step("remove " + path, [&]{
            _editor.changeManager->pushRemoval(path.data());
            return EditResult{};
        });
    });
}

std::vector<std::string> EditSession::inconsistencies() {
    return findInconsistencies(_editor);
}

}
