#ifndef QuelmarEngine_host_SceneKeeper_h
#define QuelmarEngine_host_SceneKeeper_h
/* Keeps an editor's scene graph, key-to-index map and selection size in step
   with the project document: change handlers note what changed, and the
   first read after a batch brings the scene up to date in proportion to the
   change, or rebuilds it whole where the change was to the whole map. */

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/host/ObjectTree.h"
#include "QuelmarEngine/host/SceneLayout.h"

namespace QuelmarEngine {

/**
@brief The scene side of a @ref QuelmarEditor

Object indices stay with their keys while the keys name records. New keys
take the smallest free index, in "objects" map order; an index freed by a
removed record clears its selection bit. Objects past
@ref ProjectFile::MaxObjects wait, in map order, for an index to be freed.
*/
class SceneKeeper {
    public:
        explicit SceneKeeper(QuelmarEditor& editor);
        ~SceneKeeper();

        SceneKeeper(const SceneKeeper&) = delete;
        SceneKeeper& operator=(const SceneKeeper&) = delete;

        /** Forgets every index, warning and note, and rebuilds from the document */
        void reset();

        /** Notes a change the change manager applied, for the next @ref refresh() */
        void note(const Change& change, Containers::ArrayView<const Containers::String> path);

        /** Whether something was noted since the last refresh */
        bool isStale() const { return _stale; }

        /** Brings the scene up to date with what was noted */
        void refresh();

        /** Rebuilds the scene from the document, whatever was noted */
        void rebuild();

        /** Whether a refresh may update in place, or always rebuilds */
        void setIncremental(bool incremental) { _incremental = incremental; }

        /** How many times the graph changed */
        std::size_t changeCount() const { return _changeCount; }

    private:
        /* What a change may have changed in a record */
        struct Note {
            enum: std::uint8_t {
                Parent = 1,
                Deleted = 2,
                Transformation = 4,
                AllFields = 7,
                /* The record may have appeared, gone, or come back at
                   another place in the map */
                Place = 8
            };
        };

        /* A record of the "objects" map as the rebuild meets it */
        struct Record {
            Containers::StringView key;
            const rapidjson::Value* value;
            std::size_t position;
            unsigned short index;
        };

        /* A noted key that has no index */
        struct Noted {
            std::string key;
            std::uint8_t what;
        };

        /* A record that needs an order: one that appeared, or came back at
           another place in the map */
        struct Placed {
            std::size_t position;
            const rapidjson::Value* record;
            std::string key;
            unsigned short index;
            bool appeared;
        };

        /* The "objects" map, or null when there is none */
        const rapidjson::Value* objects() const;
        /* The record of @p key in @p objects, or null */
        const rapidjson::Value* recordOf(const rapidjson::Value* objects, Containers::StringView key) const;

        /* Rebuilding, in steps */
        std::vector<Record> assignIndices(const rapidjson::Value* objects);
        void clearState();
        void readRecords(const std::vector<Record>& records);
        void breakAllCycles(const std::vector<Record>& records);
        void orderChildren(const std::vector<Record>& records);
        void layOut(std::size_t from, bool changesOnly);
        void fillSelection(bool laidOut);

        /* Updating, in steps; false when only a rebuild can help */
        bool update();
        void collectNotes(std::vector<unsigned short>& indexed, std::vector<Noted>& unindexed);
        bool locateNoted(const rapidjson::Value* objects, std::vector<unsigned short>& indexed, std::vector<const rapidjson::Value*>& records, std::vector<Noted>& unindexed, std::vector<Placed>& placed);
        bool writeTransformations();
        void forgetStrayKeys();
        void removeObject(unsigned short i);
        bool placeRecords(const rapidjson::Value& objects, std::vector<Placed>& placed);
        std::uint64_t orderAt(const rapidjson::Value& objects, std::size_t position) const;
        void readNoted(const std::vector<unsigned short>& indexed, const std::vector<const rapidjson::Value*>& records);
        void adoptDanglingChildren(unsigned short i, const std::string& key);
        void settle();

        /* Shared by both */
        void growIndices(std::size_t count);
        void reserveIndices(std::size_t count);
        unsigned short takeIndex();
        void freeIndex(unsigned short i);
        void readRecord(unsigned short i, const rapidjson::Value& record, std::uint8_t what);
        bool nameParent(unsigned short i, Containers::StringView key);
        void warnCycles(const std::vector<ObjectTree::Cycle>& cycles);
        void warnOnce(std::string message);
        bool wasLaidOut(unsigned short i) const;
        void markChanged(unsigned short i);
        void clearNotes();

        QuelmarEditor& _editor;
        /* The parts last laid out; a host that swaps one in gets a rebuild */
        const void* _graph{};
        const void* _lookup{};

        /* Notes since the last refresh: key characters, and per key its
           offset, size and what may have changed */
        std::string _noteKeys;
        std::vector<std::size_t> _noteOffsets;
        std::vector<std::uint8_t> _noteWhat;
        bool _stale{};
        bool _rebuildNeeded{};
        bool _refreshing{};
        bool _incremental{true};
        std::size_t _changeCount{};

        ObjectTree _tree;
        /* Per index: whether a record has it, what its notes say, whether
           this refresh moved it, the key its "parent" names when no object
           with an index has it */
        std::vector<char> _used;
        std::vector<std::uint8_t> _noted;
        std::vector<char> _changed;
        std::vector<std::string> _danglingParent;
        /* Objects whose "parent" names a key without an index, by that key */
        std::unordered_map<std::string, std::vector<unsigned short>> _dangling;
        /* Records past the object limit, by key, with their order */
        std::unordered_map<std::string, std::uint64_t> _pending;
        /* Free indices below _indexCount, smallest on top */
        std::vector<unsigned short> _free;
        std::size_t _indexCount{1};
        /* A bit per index, set for objects that have a position; the
           selection was last masked with it at this many selects */
        std::vector<std::uint32_t> _live;
        std::uint64_t _maskedAt{~std::uint64_t{}};

        /* This refresh: objects to attach again, the first position a
           change shows at, the last position a changed object had, what to
           lay out */
        std::vector<unsigned short> _moved, _touched, _transformed;
        std::size_t _from{}, _lastOldPosition{};
        SceneLayout _layout;
        /* Kept from one refresh to the next, so that a small change makes
           no allocations */
        std::vector<unsigned short> _indexed;
        std::vector<Noted> _unindexed;
        std::vector<const rapidjson::Value*> _records;
        std::vector<Placed> _placed;

        std::unordered_set<std::string> _warnings;
};

}

#endif
