/* The session's objects by name: finding them by key, name or pattern, where
   they are in the tree, and renaming them. */
#include "QuelmarEngine/host/EditSession.h"

#include <algorithm>
#include <Corrade/Utility/FormatStl.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/host/Glob.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"
#include "QuelmarEngine/host/Implementation/StepLabels.h"

namespace QuelmarEngine {

namespace {

using Implementation::text;

/* Candidates that an ambiguous name lists before it says how many more */
constexpr std::size_t ListedCandidates = 8;

std::string joinedPath(const std::vector<std::string>& names) {
    std::string out;
    for(const std::string& name: names) out += "/" + name;
    return out;
}

}

std::size_t EditSession::livePosition(const std::string& key) {
    const ObjectKeyMap& keyToIndex = _editor.objectLookup->keyToIndex();
    const auto found = keyToIndex.find(Containers::String{key.data(), key.size()});
    return found == keyToIndex.end() ? 0 : _editor.scene->sceneGraph->indexToPosition()[found->second];
}

EditResult EditSession::findObject(const Containers::StringView reference) {
    const std::string key = text(reference);
    /* No record has a key that couldn't stand in a path */
    const bool usableKey = isUsableKey(reference);
    if(usableKey && livePosition(key)) return EditResult{}.addKey(key);

    std::vector<std::pair<std::size_t, std::string>> named;
    for(const std::string& candidate: _names.keys(reference))
        if(const std::size_t position = livePosition(candidate)) named.emplace_back(position, candidate);
    if(named.size() == 1) return EditResult{}.addKey(named[0].second);
    if(!named.empty()) {
        std::sort(named.begin(), named.end());
        std::string message = "the name " + Implementation::labelWord(reference) + " is shared by " + std::to_string(named.size()) + " objects: ";
        for(std::size_t i = 0; i != named.size() && i != ListedCandidates; ++i)
            message += (i ? ", " : "") + named[i].second + " at " + joinedPath(treePath({named[i].second.data(), named[i].second.size()}));
        if(named.size() > ListedCandidates) message += " and " + std::to_string(named.size() - ListedCandidates) + " more";
        return EditResult::failure(message + "; use a key to name one");
    }

    /* Only a failure pays for the lookup of the record */
    if(usableKey && value(Implementation::objectPath(reference).data()))
        return EditResult::failure("object " + key + " is not in the scene: it or an ancestor is deleted");
    return EditResult::failure("there is no object " + key);
}

EditResult EditSession::findObjects(const Containers::StringView reference) {
    EditResult found = findObject(reference);
    if(found || !isGlobPattern(reference)) return found;
    found = findByName(reference);
    if(found.keys().empty()) return EditResult::failure("no object's name matches " + text(reference));
    return found;
}

EditResult EditSession::findByName(const Containers::StringView pattern) {
    std::vector<std::pair<std::size_t, std::string>> found;
    for(std::string& key: _names.keysMatching(pattern))
        if(const std::size_t position = livePosition(key)) found.emplace_back(position, std::move(key));
    std::sort(found.begin(), found.end());
    EditResult result;
    for(auto& object: found) result.addKey(std::move(object.second));
    return result;
}

const std::string* EditSession::objectName(const Containers::StringView key) {
    return _names.name(key);
}

std::vector<std::string> EditSession::treePath(const Containers::StringView key) {
    std::vector<std::string> path;
    const auto& graph = *_editor.scene->sceneGraph;
    for(std::size_t p = livePosition(text(key)); p; p = graph.hierarchy()[p].parent) {
        const char* const ancestor = graph.objectKeys().get(graph.positionToIndex()[p]);
        const std::string* const name = _names.name(ancestor);
        path.push_back(name ? *name : ancestor);
    }
    std::reverse(path.begin(), path.end());
    return path;
}

EditResult EditSession::renameObject(const Containers::StringView reference, const Containers::StringView name) {
    if(name.isEmpty()) return EditResult::failure("an object's name can't be empty");
    const EditResult found = findObject(reference);
    if(!found) return found;
    const std::string& key = found.keys()[0];

    /* As adding does: every retry suffixes the given name */
    const std::string given = text(name);
    std::string candidate = given;
    const auto takenByAnother = [&](const std::string& text) {
        const std::vector<std::string>& keys = _names.keys({text.data(), text.size()});
        return keys.size() > 1 || (keys.size() == 1 && keys[0] != key);
    };
    for(int counter = 0; takenByAnother(candidate); ++counter)
        candidate = Utility::format("{}.{:.3d}", given, counter).data();

    const std::string path = Implementation::objectPath({key.data(), key.size()}, "name");
    const JsonPointer pointer{{path.data(), path.size()}};
    const rapidjson::Value newName{rapidjson::StringRef(candidate.data(), candidate.size())};
    if(std::string problem = changeProblem(_editor.data.project, pointer, {path.data(), path.size()}, &newName); !problem.empty())
        return EditResult::failure(problem);

    /* The history copies a value's own strings, not those it refers to */
    rapidjson::Document owned;
    owned.SetString(candidate.data(), rapidjson::SizeType(candidate.size()), owned.GetAllocator());
    return step("rename " + key + " " + Implementation::labelWord({candidate.data(), candidate.size()}), [&]{
        const std::string* const current = _names.name({key.data(), key.size()});
        if(!current || *current != candidate) _editor.changeManager->pushChange(path.data(), owned, false);
        return EditResult{}.addKey(key).setText(candidate);
    });
}

}
