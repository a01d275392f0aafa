/* The session's commands on objects: the selection, adding, deleting,
   reparenting, copy, paste and duplicate. */
#include "QuelmarEngine/host/EditSession.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/host/WorldKeepingReparent.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"
#include "QuelmarEngine/host/Implementation/StepLabels.h"

namespace QuelmarEngine {

namespace {

using Implementation::text;
using Implementation::objectPath;

unsigned short indexOf(QuelmarEditor& editor, const std::string& key) {
    const ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const auto found = keyToIndex.find(Containers::String{key.data(), key.size()});
    return found == keyToIndex.end() ? 0 : found->second;
}

/* Whether the object at @p index, or one of its ancestors, is selected */
bool isSelectedOrBelowSelected(QuelmarEditor& editor, unsigned short index) {
    const auto& graph = *editor.scene->sceneGraph;
    while(index) {
        if(editor.data.isSelected(index)) return true;
        index = graph.positionToIndex()[graph.hierarchy()[graph.indexToPosition()[index]].parent];
    }
    return false;
}

/* Keeping the world placement divides by the parent's world matrix */
bool hasInvertibleWorldTransformation(QuelmarEditor& editor, const unsigned short index) {
    auto& graph = *editor.scene->sceneGraph;
    graph.computeAbsoluteTransformations();
    const auto scaling = graph.absoluteScalings()[graph.indexToPosition()[index]];
    const float determinant = scaling.x()*scaling.y()*scaling.z();
    return determinant != 0.0f && std::isfinite(determinant);
}

/* Keys of the live objects from position @p first on, through @p last */
void addKeysOfPositions(QuelmarEditor& editor, const std::size_t first, const std::size_t last, EditResult& result) {
    const auto& graph = *editor.scene->sceneGraph;
    for(std::size_t p = first; p <= last; ++p) result.addKey(graph.objectKeys().get(graph.positionToIndex()[p]));
}

void addKeys(const StringArrayView& keys, EditResult& result) {
    for(std::size_t i = 0; i != keys.size(); ++i) result.addKey(keys.get(i));
}

}

EditResult EditSession::select(const Containers::ArrayView<const Containers::StringView> references) {
    StringArray keys{references.size()};
    for(const Containers::StringView reference: references) {
        const EditResult found = findObject(reference);
        if(!found) return found;
        keys.add(found.keys()[0].data());
    }
    selectObjects(_editor, keys);
    return {};
}

StringArray EditSession::selection() {
    return selectedObjectKeys(_editor);
}

EditResult EditSession::addObject(const Containers::StringView name, const Containers::StringView parent) {
    if(name.isEmpty()) return EditResult::failure("an object's name can't be empty");
    std::string parentKey;
    if(!parent.isEmpty()) {
        const EditResult found = findObject(parent);
        if(!found) return found;
        parentKey = found.keys()[0];
    }
    if(std::string problem = objectRoomProblem(_editor.data.project, 1); !problem.empty()) return EditResult::failure(problem);

    return step("add " + Implementation::labelWord(name) + (parentKey.empty() ? "" : " " + parentKey), [&]{
        const Containers::String key = QuelmarEngine::addObject(_editor, name, {parentKey.data(), parentKey.size()});
        const std::string* const given = _names.name(key);
        return EditResult{}.addKey(key.data()).setText(given ? *given : std::string{});
    });
}

EditResult EditSession::deleteObject(const Containers::StringView reference) {
    const EditResult found = findObject(reference);
    if(!found) return found;
    const std::string& key = found.keys()[0];
    const auto& graph = *_editor.scene->sceneGraph;
    const std::size_t position = graph.indexToPosition()[indexOf(_editor, key)];
    EditResult deleted;
    addKeysOfPositions(_editor, position, position + graph.hierarchy()[position].descendants, deleted);

    return step("delete " + key, [&]{
        QuelmarEngine::deleteObject(_editor, key.data());
        return deleted;
    });
}

EditResult EditSession::deleteSelection() {
    const StringArray keys = selectedObjectKeysWithTrees(_editor);
    if(keys.isEmpty()) return EditResult::failure("nothing is selected");
    return step("delete", [&]{
        /* It makes its own group */
        deleteSelectedObjects(_editor);
        EditResult deleted;
        addKeys(keys, deleted);
        return deleted;
    });
}

EditResult EditSession::reparentSelection(const Containers::StringView parent, const ReparentMode mode) {
    const StringArray keys = selectedObjectKeys(_editor);
    if(keys.isEmpty()) return EditResult::failure("nothing is selected");
    std::string parentKey;
    if(!parent.isEmpty()) {
        const EditResult found = findObject(parent);
        if(!found) return found;
        parentKey = found.keys()[0];
        const unsigned short index = indexOf(_editor, parentKey);
        /* A parent cycle would hide the objects */
        if(isSelectedOrBelowSelected(_editor, index))
            return EditResult::failure("can't move the selected objects under " + parentKey + ", which is selected or lies below a selected object");
        if(mode == ReparentMode::KeepWorld && !hasInvertibleWorldTransformation(_editor, index))
            return EditResult::failure("can't keep world placements under " + parentKey + ": its world transformation has a zero scale");
    }
    const char* const parentArgument = parent.isEmpty() ? nullptr : parentKey.data();

    const std::string label = "reparent " + (parent.isEmpty() ? std::string{"root"} : parentKey);
    if(mode == ReparentMode::KeepLocal) return step(label, [&]{
        for(std::size_t i = 0; i != keys.size(); ++i) reparentObject(_editor, keys.get(i), parentArgument);
        return EditResult{};
    });

    return step(label + " --keep-transform", [&]{
        const ChangeManager& manager = *_editor.changeManager;
        const std::size_t first = std::size_t(manager.lastChangeIndex() + 1);
        /* It makes its own group and skips objects whose ancestor moves */
        reparentSelectionKeepingWorld(_editor, parentArgument);
        /* A nearly singular parent can still give numbers past single
           precision; the step then takes the move back */
        for(std::size_t i = first; i <= std::size_t(manager.lastChangeIndex()); ++i) {
            const Change& change = manager.change(i);
            const std::string path{change.path.data()};
            if(!change.newValue || path.size() < 15 || path.compare(path.size() - 15, 15, "/transformation") != 0) continue;
            const std::string key = path.substr(9, path.size() - 9 - 15);
            if(!transformationProblem({key.data(), key.size()}, *change.newValue).empty())
                return EditResult::failure("can't keep the world placement of " + key + " under " + (parent.isEmpty() ? std::string{"the root"} : parentKey) + ": its local transformation would be out of range");
        }
        return EditResult{};
    });
}

EditResult EditSession::copy(const SelectionExtent extent) {
    const StringArray keys = extent == SelectionExtent::Trees ? selectedObjectKeysWithTrees(_editor) : selectedObjectKeys(_editor);
    if(keys.isEmpty()) return EditResult::failure("nothing is selected");
    EditResult result;
    result.setText(extent == SelectionExtent::Trees ? copySelectedTrees(_editor) : copySelected(_editor));
    addKeys(keys, result);
    /* The skins the text holds: the objects' own, each once, in order */
    std::vector<std::string> skins;
    for(std::size_t i = 0; i != keys.size(); ++i) {
        const rapidjson::Value* const skin = value(objectPath(keys.get(i), "skin").data());
        if(!skin || !skin->IsString()) continue;
        std::string skinKey{skin->GetString(), skin->GetStringLength()};
        if(std::find(skins.begin(), skins.end(), skinKey) == skins.end()) skins.push_back(std::move(skinKey));
    }
    for(std::string& skin: skins) result.addSkinKey(std::move(skin));
    return result;
}

EditResult EditSession::paste(const Containers::StringView clipboard, const PastePlacement placement, const Containers::StringView source) {
    /* The library reports text it can't read and then still clears the
       selection, so everything it could refuse is refused here first */
    const std::string name = text(source);
    if(std::memchr(clipboard.data(), 0, clipboard.size()))
        return EditResult::failure(name + " holds a NUL byte");
    rapidjson::Document parsed;
    JsonParseError error;
    if(!parseJson(parsed, clipboard, error))
        return EditResult::failure(name + " is not valid JSON at line " + std::to_string(error.line) + ", column " + std::to_string(error.column) + ": " + std::string{error.reason.data(), error.reason.size()});
    if(!parsed.IsObject()) return EditResult::failure(name + " is not a JSON object");
    if(std::string problem = clipboardProblem(parsed); !problem.empty())
        return EditResult::failure(name + " can't be pasted: " + problem);
    const auto objects = parsed.FindMember("objects");
    if(std::string problem = objectRoomProblem(_editor.data.project, objects == parsed.MemberEnd() ? 0 : objects->value.MemberCount()); !problem.empty())
        return EditResult::failure(problem);
    if(placement == PastePlacement::Under && selectedObjectKeys(_editor).isEmpty())
        return EditResult::failure("nothing is selected to paste under");

    const std::string pasted = text(clipboard);
    return step(placement == PastePlacement::Under ? "paste --child" : "paste", [&]{
        /* Both make their own group */
        if(placement == PastePlacement::Under) pasteChild(_editor, pasted);
        else QuelmarEngine::paste(_editor, pasted);
        EditResult result;
        addKeys(selectedObjectKeys(_editor), result);
        return result;
    });
}

EditResult EditSession::duplicate(const SelectionExtent extent) {
    const bool trees = extent == SelectionExtent::Trees;
    const std::size_t count = trees ? selectedObjectKeysWithTrees(_editor).size() : selectedObjectKeys(_editor).size();
    if(!count) return EditResult::failure("nothing is selected");
    if(std::string problem = objectRoomProblem(_editor.data.project, count); !problem.empty()) return EditResult::failure(problem);

    return step(trees ? "duplicate --trees" : "duplicate", [&]{
        /* Both make their own group */
        if(trees) duplicateTrees(_editor);
        else QuelmarEngine::duplicate(_editor);
        EditResult result;
        addKeys(selectedObjectKeys(_editor), result);
        return result;
    });
}

}
