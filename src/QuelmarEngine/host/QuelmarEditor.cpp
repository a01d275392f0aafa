#include "QuelmarEngine/host/QuelmarEditor.h"

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/ChangeHandler.h"
#include "QuelmarEngine/host/SceneKeeper.h"

namespace QuelmarEngine {

namespace {

void refreshEditor(void* editor) {
    static_cast<QuelmarEditor*>(editor)->refresh();
}

}

QuelmarEditor::QuelmarEditor():
    scene{Containers::pointer<Scene>()},
    changeManager{Containers::pointer<ChangeManager>(data.project)},
    objectLookup{Containers::pointer<ObjectLookup>()},
    _sceneKeeper{Containers::pointer<SceneKeeper>(*this)}
{
    scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
    reset();
}

QuelmarEditor::~QuelmarEditor() = default;

bool QuelmarEditor::loadFromString(const Containers::StringView json) {
    if(!data.project.loadFromString(json)) return false;
    reset();
    return true;
}

bool QuelmarEditor::loadFromFile(const Containers::StringView path) {
    if(!data.project.loadFromFile(path)) return false;
    reset();
    return true;
}

void QuelmarEditor::reset() {
    changeManager->reset(data.project);
    /* A fresh history matches the file as it was opened */
    changeManager->markSave();
    changeManager->addChangeHandler("", [](const Change& change, Containers::ArrayView<const Containers::String> path, void* keeper) {
        static_cast<SceneKeeper*>(keeper)->note(change, path);
    }, _sceneKeeper.get());

    const RefreshHook hook{refreshEditor, this};
    data.setRefreshHook(hook);
    scene->sceneGraph->setRefreshHook(hook);
    objectLookup->setRefreshHook(hook);
    _sceneKeeper->reset();
}

void QuelmarEditor::refresh() {
    _sceneKeeper->refresh();
}

void QuelmarEditor::rebuildScene() {
    _sceneKeeper->rebuild();
}

void QuelmarEditor::setIncrementalRefresh(const bool incremental) {
    _sceneKeeper->setIncremental(incremental);
}

std::size_t QuelmarEditor::rebuildCount() const {
    return _sceneKeeper->changeCount();
}

}
