/* The basic edits of objects and resource records: add, flag deleted,
   reparent, duplicate and remove, and whether an object counts as deleted. */

#include "QuelmarEngine/Tools/ProjectTools.h"

#include <cstring>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

bool isObjectDeleted(EditorData& data, const char* objectId) {
    /* Without a cycle a walk meets every record at most once, so a walk that
       is longer than the map has gone round a cycle, every member of which
       it has checked already. Bounding it by the record count keeps each step
       O(1) beyond the lookups themselves. */
    const rapidjson::Value& objects = data.project["objects"].readValue();
    const std::size_t recordCount = objects.IsObject() ? objects.MemberCount() : 0;

    const char* current = objectId;
    for(std::size_t visited = 1; ; ++visited) {
        const ValueAccess record{data.project["objects"]->subValue(current)};
        if(record["deleted"].asBool()) return true;

        const char* const parent = record["parent"].asString();
        if(!parent || !*parent) return false;
        /* A dangling parent ends the walk as the root would */
        if(!data.project["objects"]->subValue(parent)->exists()) return false;
        /* A self-parent or a longer cycle with no flagged member is live */
        if(std::strcmp(parent, current) == 0 || visited >= recordCount) return false;

        current = parent;
    }
}

Containers::String addObject(QuelmarEditor& editor, const Containers::String& name, const Containers::String& parent) {
    /* Every retry suffixes the given name, never the previous candidate */
    Containers::String candidate = name;
    for(int counter = 0; editor.data.project.resourceByName("objects", candidate); ++counter)
        candidate = Utility::format("{}.{:.3d}", name, counter);

    Containers::String key = editor.data.project.generateId();
    editor.changeManager->pushChange(Utility::format("/objects/{}", key).data(), rapidjson::Value{rapidjson::kObjectType}, false);
    editor.changeManager->pushChange(Utility::format("/objects/{}/name", key).data(), candidate.data(), false);
    if(!parent.isEmpty())
        editor.changeManager->pushChange(Utility::format("/objects/{}/parent", key).data(), parent.data(), false);
    return key;
}

void deleteObject(QuelmarEditor& editor, const char* objectId) {
    const Containers::String path = Utility::format("/objects/{}/deleted", objectId);
    editor.changeManager->pushChange(path.data(), rapidjson::Value{true}, false);
}

Containers::String duplicateResource(QuelmarEditor& editor, const char* type, const char* id) {
    Containers::String key = editor.data.project.generateId();
    const ValueAccess source{editor.data.project[type]->subValue(id)};
    /* The manager copies the record before it applies the change, so the
       reference into the document may be invalidated by the push */
    editor.changeManager->pushChange(Utility::format("/{}/{}", type, key).data(), source.readValue(), false);
    return key;
}

void deleteResource(QuelmarEditor& editor, const char* type, const char* id) {
    const Containers::String path = Utility::format("/{}/{}", type, id);
    editor.changeManager->pushRemoval(path.data());
}

void deleteSelectedObjects(QuelmarEditor& editor) {
    Scene& scene = *editor.scene;
    const Data::DynamicSceneGraph<unsigned short>& graph = *scene.sceneGraph;
    ChangeManager& changeManager = *editor.changeManager;

    changeManager.beginGroup();
    /* Inside the group nothing is notified, so the graph and the key
       pointers it hands out stay as they were before the first push */
    for(std::size_t p = 1; p < graph.header().objectCount; ) {
        const unsigned short i = graph.positionToIndex()[p];
        if(!editor.data.isSelected(i)) {
            ++p;
            continue;
        }

        const std::size_t last = p + graph.hierarchy()[p].descendants;
        for(std::size_t q = last; q > p; --q)
            deleteObject(editor, graph.objectKeys().get(graph.positionToIndex()[q]));
        deleteObject(editor, graph.objectKeys().get(i));
        /* Selected objects inside this subtree are flagged already */
        p = last + 1;
    }
    editor.changeManager->commit();
}

void reparentObject(QuelmarEditor& editor, const char* objectId, const char* parent) {
    Utility::Debug{} << "Reparenting object" << objectId << "to" << (parent ? parent : "root");
    const Containers::String path = Utility::format("/objects/{}/parent", objectId);
    if(parent) editor.changeManager->pushChange(path.data(), parent, false);
    else editor.changeManager->pushChange(path.data(), rapidjson::Value{}, false);
}

}
