/* The session's purge: removing the records of deleted objects for good,
   with everything below them, unless references to them would remain. */
#include "QuelmarEngine/host/EditSession.h"

#include <unordered_map>
#include <unordered_set>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/host/RecordReferences.h"
#include "QuelmarEngine/host/StrHash.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"

namespace QuelmarEngine {

namespace {

using Implementation::text;
using Implementation::objectPath;

std::string keyOf(const rapidjson::Value& name) {
    return {name.GetString(), name.GetStringLength()};
}

/* Whether object @p key is in the scene */
bool isLive(QuelmarEditor& editor, const std::string& key) {
    const ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const auto found = keyToIndex.find(Containers::String{key.data(), key.size()});
    return found != keyToIndex.end() && found->second && editor.scene->sceneGraph->indexToPosition()[found->second];
}

/* @p roots and every record of @p objects below them, walking up from every
   record once */
std::unordered_set<std::string> withEverythingBelow(const rapidjson::Value& objects, const std::vector<std::string>& roots) {
    enum: char { Unknown, Walking, Below, NotBelow };
    std::unordered_map<Containers::StringView, char, StrHash, StrEq> state;
    state.reserve(objects.MemberCount());
    for(const std::string& root: roots) state[{root.data(), root.size()}] = Below;
    std::unordered_set<std::string> out{roots.begin(), roots.end()};
    std::vector<Containers::StringView> path;
    for(auto it = objects.MemberBegin(); it != objects.MemberEnd(); ++it) {
        Containers::StringView key{it->name.GetString(), it->name.GetStringLength()};
        const rapidjson::Value* record = &it->value;
        path.clear();
        char found = NotBelow;
        while(record) {
            char& visited = state[key];
            /* Coming back onto the walk is a parent cycle, which no root is on */
            if(visited != Unknown) {
                if(visited != Walking) found = visited;
                break;
            }
            visited = Walking;
            path.push_back(key);
            const rapidjson::Value* const parent = record->IsObject() ? findMember(*record, "parent") : nullptr;
            if(!parent || !parent->IsString() || !parent->GetStringLength()) break;
            key = {parent->GetString(), parent->GetStringLength()};
            record = findMember(objects, key);
        }
        for(const Containers::StringView walked: path) {
            state[walked] = found;
            if(found == Below) out.emplace(walked.data(), walked.size());
        }
    }
    return out;
}

}

EditResult EditSession::purge(const Containers::ArrayView<const Containers::StringView> references, const DanglingReferences dangling) {
    const rapidjson::Value* const objects = value("/objects");
    std::unordered_set<std::string> purged;
    std::string label = "purge";
    if(references.isEmpty()) {
        if(objects) for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it)
            if(!isLive(_editor, keyOf(it->name))) purged.insert(keyOf(it->name));
        if(purged.empty()) return EditResult::failure("there are no deleted objects to purge");
    } else {
        std::vector<std::string> roots;
        for(const Containers::StringView reference: references) {
            const EditResult found = findObject(reference);
            if(found) return EditResult::failure("object " + found.keys()[0] + " is in the scene; only deleted objects and what lies below them can be purged");
            /* Not in the scene, yet a record */
            if(!isUsableKey(reference) || !value(objectPath(reference).data())) return found;
            roots.push_back(text(reference));
            label += " " + roots.back();
        }
        purged = withEverythingBelow(*objects, roots);
    }

    const std::vector<RecordReference> left = referencesInto(*_editor.data.project.document, purged, {});
    if(!left.empty() && dangling == DanglingReferences::Refuse)
        return EditResult::failure("references to purged objects would remain: " + listReferences(left, true));

    EditResult result;
    for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it)
        if(purged.count(keyOf(it->name))) result.addKey(keyOf(it->name));
    if(!left.empty()) result.addWarning("left references to purged objects: " + listReferences(left, true));

    return step(label, [&]{
        ChangeManager& manager = *_editor.changeManager;
        manager.beginGroup();
        /* From the end of the map, where removing moves the fewest members */
        for(auto key = result.keys().rbegin(); key != result.keys().rend(); ++key)
            manager.pushRemoval(objectPath({key->data(), key->size()}).data());
        manager.commit();
        return result;
    });
}

}
