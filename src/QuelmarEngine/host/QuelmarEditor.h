#ifndef QuelmarEngine_host_QuelmarEditor_h
#define QuelmarEngine_host_QuelmarEditor_h
/* The editor context that every command takes: editor state, scene, change
   manager and key-to-index map, kept in step with the project document. */

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/EditorData.h"
#include "QuelmarEngine/host/ObjectLookup.h"
#include "QuelmarEngine/host/Scene.h"

namespace QuelmarEngine {

/**
@brief Editor context

A default-constructed editor is fully set up on an empty project. The scene
graph, the key-to-index map and the selection follow the document: a change
handler marks them stale, and the first read through their accessors after
a batch of changes rebuilds them once. Object indices stay with their keys
for as long as the keys name records.

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

        /** Rebuilds the scene now if the document changed since the last rebuild */
        void refresh();

        /** How many times the scene was rebuilt */
        std::size_t rebuildCount() const { return _rebuildCount; }

        EditorData data;
        Containers::Pointer<Scene> scene;
        Containers::Pointer<ChangeManager> changeManager;
        Containers::Pointer<ObjectLookup> objectLookup;

    private:
        void reset();
        void rebuild();
        /* Problems of the document show at every rebuild until fixed; say
           each once a session */
        void warnOnce(std::string message);

        bool _dirty{};
        bool _rebuilding{};
        std::size_t _rebuildCount{};
        /* Indices handed out so far, the root's included; arrays indexed by
           object index never shrink below it, so no index goes stale */
        std::size_t _indexCount{1};
        std::vector<unsigned short> _freeIndices;
        std::vector<std::size_t> _seen;
        std::size_t _generation{};
        std::unordered_set<std::string> _warnings;
};

}

#endif
