#ifndef QuelmarEngine_host_QuelmarEditor_h
#define QuelmarEngine_host_QuelmarEditor_h
/* The editor context that every command takes: editor state, scene, change
   manager and key-to-index map, kept in step with the project document. */

#include <cstddef>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/EditorData.h"
#include "QuelmarEngine/host/HostPointer.h"
#include "QuelmarEngine/host/ObjectLookup.h"
#include "QuelmarEngine/host/Scene.h"

namespace QuelmarEngine {

/**
@brief Editor context

A default-constructed editor is fully set up on an empty project. The scene
graph, the key-to-index map and the selection follow the document: a change
handler notes what changed, and the first read through their accessors after
a batch of changes brings them up to date once, in proportion to the change.
Object indices stay with their keys for as long as the keys name records.

Not copyable or movable, as the accessors' refresh hooks point back to it.
*/
class QuelmarEditor {
    public:
        /** Most objects a project can have */
        static constexpr std::size_t MaxObjects = ProjectFile::MaxObjects;

        QuelmarEditor();
        ~QuelmarEditor();

        QuelmarEditor(const QuelmarEditor&) = delete;
        QuelmarEditor& operator=(const QuelmarEditor&) = delete;

        /**
         * @brief Opens the project in @p json
         *
         * Refuses what @ref ProjectFile::loadFromString() refuses and then
         * keeps the open project. Otherwise resets the history and the
         * selection and rebuilds the scene.
         */
        bool loadFromString(Containers::StringView json);

        /** As @ref loadFromString(), reading the file at @p path */
        bool loadFromFile(Containers::StringView path);

        /** Brings the scene up to date now if the document changed since */
        void refresh();

        /**
         * @brief Rebuilds the scene from the whole document now
         *
         * For a host that changed the document without the change manager,
         * which the scene can't hear of.
         */
        void rebuildScene();

        /**
         * @brief Whether the scene follows changes in proportion to them
         *
         * On by default. Off, every refresh rebuilds the scene from the whole
         * document: slow on a big project, and the reference the default is
         * held to.
         */
        void setIncrementalRefresh(bool incremental);

        /** How many times the scene graph changed */
        std::size_t rebuildCount() const;

        EditorData data;
        HostPointer<Scene> scene;
        HostPointer<ChangeManager> changeManager;
        HostPointer<ObjectLookup> objectLookup;

    private:
        void reset();

        Containers::Pointer<SceneKeeper> _sceneKeeper;
};

}

#endif
