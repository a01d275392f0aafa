/* add, select, selection, delete and reparent: editing objects by key and
   through the selection. */
#include <cmath>
#include <iostream>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "Command.h"
#include "Objects.h"
#include "OneStep.h"
#include "Session.h"

namespace quelmar {

namespace {

std::string objectsText(const std::size_t count) {
    return std::to_string(count) + (count == 1 ? " object" : " objects");
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

}

bool runAdd(Session& session, const Arguments& arguments) {
    const std::string& name = arguments.positional[0];
    if(name.empty()) return session.fail("an object's name can't be empty");
    std::string parent;
    if(arguments.positional.size() == 2) {
        unsigned short index;
        if(!findLiveObject(session, arguments.positional[1], index)) return false;
        parent = arguments.positional[1];
    }
    if(!checkRoomForObjects(session, 1)) return false;

    Corrade::Containers::String key;
    inOneStep(session.editor, [&]{
        key = QuelmarEngine::addObject(session.editor, {name.data(), name.size()}, {parent.data(), parent.size()});
    });
    std::cout << key.data() << std::endl;
    return true;
}

bool runSelect(Session& session, const Arguments& arguments) {
    QuelmarEngine::StringArray keys{arguments.positional.size()};
    for(const std::string& key: arguments.positional) {
        unsigned short index;
        if(!findLiveObject(session, key, index)) return false;
        keys.add(key.data(), int(key.size()));
    }
    QuelmarEngine::selectObjects(session.editor, keys);
    return true;
}

bool runSelection(Session& session, const Arguments&) {
    const QuelmarEngine::StringArray keys = QuelmarEngine::selectedObjectKeys(session.editor);
    if(keys.isEmpty()) {
        std::cout << "nothing is selected" << std::endl;
        return true;
    }
    const std::vector<const rapidjson::Value*> records = recordsByIndex(session);
    QuelmarEngine::ObjectKeyMap& keyToIndex = session.editor.objectLookup->keyToIndex();
    for(std::size_t i = 0; i != keys.size(); ++i) {
        const auto found = keyToIndex.find(Corrade::Containers::String{keys.get(i)});
        const rapidjson::Value* const record = found == keyToIndex.end() ? nullptr : records[found->second];
        std::cout << keys.get(i) << ' ' << displayName(record) << '\n';
    }
    std::cout.flush();
    return true;
}

bool runDelete(Session& session, const Arguments& arguments) {
    QuelmarEditor& editor = session.editor;
    std::size_t count;
    if(arguments.positional.empty()) {
        count = QuelmarEngine::selectedObjectKeysWithTrees(editor).size();
        if(!count) return session.fail("nothing is selected");
        /* It makes its own group */
        QuelmarEngine::deleteSelectedObjects(editor);
    } else {
        const std::string& key = arguments.positional[0];
        unsigned short index;
        if(!findLiveObject(session, key, index)) return false;
        const auto& graph = *editor.scene->sceneGraph;
        count = graph.hierarchy()[graph.indexToPosition()[index]].descendants + 1u;
        inOneStep(editor, [&]{
            QuelmarEngine::deleteObject(editor, key.data());
        });
    }
    std::cout << "deleted " << objectsText(count) << std::endl;
    return true;
}

bool runReparent(Session& session, const Arguments& arguments) {
    QuelmarEditor& editor = session.editor;
    const QuelmarEngine::StringArray keys = QuelmarEngine::selectedObjectKeys(editor);
    if(keys.isEmpty()) return session.fail("nothing is selected");

    const std::string& parentKey = arguments.positional[0];
    const bool toRoot = parentKey == "root";
    const char* const parent = toRoot ? nullptr : parentKey.data();
    if(!toRoot) {
        unsigned short parentIndex;
        if(!findLiveObject(session, parentKey, parentIndex)) return false;
        /* The library checks nothing, and a parent cycle would hide objects */
        if(isSelectedOrBelowSelected(editor, parentIndex))
            return session.fail("can't move the selected objects under " + parentKey + ", which is selected or lies below a selected object");
        if(arguments.has("--keep-transform") && !hasInvertibleWorldTransformation(editor, parentIndex))
            return session.fail("can't keep world placements under " + parentKey + ": its world transformation has a zero scale");
    }

    if(arguments.has("--keep-transform")) {
        /* It makes its own group and skips objects whose ancestor moves */
        QuelmarEngine::reparentObjectsKeepTransform(editor, editor.data.selection(), parent);
    } else inOneStep(editor, [&]{
        for(std::size_t i = 0; i != keys.size(); ++i)
            QuelmarEngine::reparentObject(editor, keys.get(i), parent);
    });
    return true;
}

}
