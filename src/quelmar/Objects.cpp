/* Finding objects and records by the keys the user names. */
#include "Objects.h"

#include <Corrade/Containers/String.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"
#include "Session.h"

namespace quelmar {

bool findLiveObject(Session& session, const std::string& key, unsigned short& index) {
    QuelmarEditor& editor = session.editor;
    /* find() rather than the subscript, which would enter an unknown key */
    QuelmarEngine::ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const auto found = keyToIndex.find(Corrade::Containers::String{key.data(), key.size()});
    if(found != keyToIndex.end() && found->second && editor.scene->sceneGraph->indexToPosition()[found->second]) {
        index = found->second;
        return true;
    }
    /* Only a failure pays for the scan of the map */
    const rapidjson::Value* const objects = QuelmarEngine::findMember(*editor.data.project.document, "objects");
    if(objects && objects->IsObject() && QuelmarEngine::findMember(*objects, {key.data(), key.size()}))
        return session.fail("object " + key + " is not in the scene: it or an ancestor is deleted");
    return session.fail("there is no object " + key);
}

const rapidjson::Value* findRecord(Session& session, const std::string& type, const std::string& key) {
    const rapidjson::Value* const map = QuelmarEngine::findMember(*session.editor.data.project.document, {type.data(), type.size()});
    const rapidjson::Value* const record = map && map->IsObject() ? QuelmarEngine::findMember(*map, {key.data(), key.size()}) : nullptr;
    if(!map) session.fail("the project has no " + type);
    else if(!map->IsObject()) session.fail(type + " is not a map of records");
    else if(!record) session.fail(type + " has no record " + key);
    return record;
}

std::vector<const rapidjson::Value*> recordsByIndex(Session& session) {
    QuelmarEditor& editor = session.editor;
    QuelmarEngine::ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    std::vector<const rapidjson::Value*> records(editor.scene->sceneGraph->indexToPosition().size());
    const rapidjson::Value* const objects = QuelmarEngine::findMember(*editor.data.project.document, "objects");
    if(!objects || !objects->IsObject()) return records;
    for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it) {
        const auto found = keyToIndex.find(Corrade::Containers::String{it->name.GetString(), it->name.GetStringLength()});
        if(found != keyToIndex.end() && found->second < records.size()) records[found->second] = &it->value;
    }
    return records;
}

std::string displayName(const rapidjson::Value* const record) {
    const rapidjson::Value* const name = record && record->IsObject() ? QuelmarEngine::findMember(*record, "name") : nullptr;
    if(!name || !name->IsString()) return "(no name)";
    /* Quoted and escaped, so that no name can break a listing's lines */
    return QuelmarEngine::writeJson(*name);
}

bool checkRoomForObjects(Session& session, const std::size_t count) {
    const rapidjson::Value* const objects = QuelmarEngine::findMember(*session.editor.data.project.document, "objects");
    const std::size_t existing = objects && objects->IsObject() ? objects->MemberCount() : 0;
    /* A project file with more objects would not load again */
    if(existing + count <= QuelmarEditor::MaxObjects) return true;
    return session.fail("the project has " + std::to_string(existing) + " objects and can have at most " + std::to_string(QuelmarEditor::MaxObjects));
}

bool isUsableKey(const std::string& key) {
    if(key.empty()) return false;
    for(const char c: key) {
        const unsigned char u = c;
        if(c == '/' || c == '~' || c == '"' || c == '\\' || u < 0x20 || u == 0x7f) return false;
    }
    return true;
}

}
