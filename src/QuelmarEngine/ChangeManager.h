#ifndef QuelmarEngine_ChangeManager_h
#define QuelmarEngine_ChangeManager_h
/* The edit history of the project document: change records, pushing them,
   change groups, the save mark, applying, undo and redo, change handlers. */

#include <cstddef>
#include <cstdint>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"
#include "QuelmarEngine/ChangeHandler.h"
#include "QuelmarEngine/StaticMap.h"

namespace QuelmarEngine {

namespace Implementation { struct AppliedChange; }

/**
@brief One record of the history

No @ref oldValue means the change creates the value, no @ref newValue that it
removes it, both that it replaces it. The values are owned; what they hold
lives in the document's pool allocator.
*/
struct Change {
    Change() noexcept: group{-1} {}

    /** Takes the path and values, leaving them empty in @p other; copies the group */
    Change(Change&& other) noexcept;

    /** Exchanges path and values with @p other and copies its group */
    Change& operator=(Change&& other) noexcept;

    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

    /* Members are destroyed in reverse order: newValue, oldValue, path */

    /** JSON Pointer text followed by a zero byte, which the size counts */
    Containers::Array<char> path;
    Containers::Pointer<rapidjson::Value> oldValue;
    Containers::Pointer<rapidjson::Value> newValue;
    /** Group open at the push, or -1 */
    std::int32_t group;
};

/** Prints e.g. `Change /objects/a/name: "A" -> "B"` or `Create /x: () -> 1` */
Utility::Debug& operator<<(Utility::Debug& debug, const Change& change);

/**
@brief Undo history of a project document

Every push records the change with copies of the old and the new value and
applies it at once. Records pushed between @ref beginGroup() and
@ref commit() form one undo step and reach the handlers at the commit; other
changes reach them when applied. Handlers must not push changes.

Undo is exact: undoing a step gives back the document exactly as it was
before the step, member order included, and redoing gives back exactly the
document after it. Beside each record the manager keeps what its application
did (where a created value landed and which containers it made, where a
removed member or element stood and which emptied containers the cleanup
erased), so that undoing a creation erases only what the creation made and
undoing a removal puts everything back where it stood. This holds as long as
only the manager changes the document (and the accessors' setters on values
the step just made); where a host changed it otherwise, undo falls back to
applying the inverse record.
*/
class ChangeManager {
    public:
        /** A manager without a project; @ref reset() gives it one */
        ChangeManager();

        /** A manager on @p project, which has to outlive it */
        explicit ChangeManager(ProjectFile& project);

        ChangeManager(const ChangeManager&) = delete;
        ChangeManager& operator=(const ChangeManager&) = delete;
        ~ChangeManager();

        /**
         * @brief Switches to @p project
         *
         * Destroys the history and every handler. The save mark and the group
         * state stay.
         */
        void reset(ProjectFile& project);

        /** The project document's allocator. Expects a project. */
        JsonAllocator& allocator();

        /**
         * @brief Pushes a change of @p path to @p value
         *
         * A null @p value removes. @p path has to hold a valid JSON Pointer
         * followed by a zero byte; it is exchanged with the path the reused
         * history slot held (nothing for a new slot), or left alone when the
         * push merges. Expects a project.
         *
         * With @p merge, a record of the open group (or of the newest
         * ungrouped run) with the same path, other than the very first
         * record, takes the new value, keeps its old one and becomes the
         * newest, exchanging places with the record that was newest. The
         * push merges only where that keeps undo exact, and records a new
         * change otherwise: @p value is not null, the path names a value now,
         * which the merge overwrites in place; no record of the redo tail has
         * a path that is the same as, above or below @p path; and when the
         * matched record isn't the newest one, it and every record after it
         * are replacements (old and new value), none of those after it has a
         * path above or below @p path, and none between it and the newest
         * one has a path above or below the newest one's.
         *
         * A change that would pad an array with more than a million nulls
         * (an index far past the end) is refused with a message through
         * @ref Utility::Error; nothing is recorded or changed.
         */
        void pushChange(Containers::Array<char>&& path, const rapidjson::Value* value, bool merge);
        void pushChange(const char* path, const rapidjson::Value& value, bool merge);

        /**
         * @brief Pushes a change of @p path to @p value, taking the value over
         *
         * As the above without a merge, but @p value becomes the record's new
         * value as it is instead of being copied: it has to live in the
         * document's allocator. A null @p value removes.
         */
        void pushChange(Containers::Array<char>&& path, Containers::Pointer<rapidjson::Value>&& value);

        /** Pushes a JSON string holding a copy of @p value */
        void pushChange(const char* path, const char* value, bool merge);

        /** As above with the text of @p path, which is neither taken nor changed */
        void pushChange(Containers::Array<char>&& path, const char* value, bool merge);

        /** Pushes the removal of @p path */
        void pushRemoval(const char* path);
        void pushRemoval(Containers::Array<char>&& path);

        /**
         * @brief Pushes the array at @p path with a string appended
         *
         * A value that is absent or not an array counts as an empty array.
         * One change of the whole array.
         */
        void pushAppend(const char* path, const char* value);

        /** Opens a new group; an open one is left without a commit */
        void beginGroup();

        /** Closes the group and notifies the handlers of its records, newest first */
        void commit();

        /** Whether a group is open */
        bool isGroupOpen() const { return _group != -1; }

        /** The newest applied record. Expects there is one. */
        Change& lastChange();

        /** Number of records, the undone ones included */
        std::size_t changeCount() const { return _changes.size(); }

        /** Record @p i, oldest first */
        const Change& change(std::size_t i) const;

        /** Index of the newest applied record, -1 for none */
        int lastChangeIndex() const { return _lastChange; }

        /**
         * @brief The value of @ref lastChangeIndex() at the last save
         *
         * -1 for none, @ref SavedStateDropped once @ref dropOldest() dropped
         * the records that led to it.
         */
        int savedChangeIndex() const { return _savedChange; }

        /** What @ref savedChangeIndex() gives when the saved state can't be reached */
        static constexpr int SavedStateDropped = -2;

        /** Whether there is an applied record */
        bool canUndo() const { return _lastChange >= 0; }

        /** Whether there is an undone record */
        bool canRedo() const { return _lastChange + 1 < int(_changes.size()); }

        /** Remembers the current history position as the saved one */
        void markSave();

        /** Whether the history position differs from the saved one */
        bool hasUnsavedChanges() const;

        /**
         * @brief Writes @p change into the document
         *
         * Notifies the handlers when no group is open. Removal erases the
         * containers it leaves empty up to, but never including, a top-level
         * member. Creation under an index key inserts into the array; a
         * negative index key inserts at position 0. A removal that carries
         * an old value and whose last token is "-" (or a negative index key)
         * on an array removes the last (or the first) element, so that it
         * takes back what the creation through that path added. Does not
         * touch the history, and keeps nothing for an exact undo: undo and
         * redo of history records don't go through here. Expects a project.
         */
        void applyChange(const Change& change);

        /** The inverse of @p change: same path, values exchanged, no group */
        Change reverse(const Change& change);

        /**
         * @brief Undoes @p change and steps the history back by one
         *
         * Exact for the newest applied record; for any other record, applies
         * @ref reverse() of it. The handlers hear of the inverse record.
         */
        void undo(const Change& change);

        /** Undoes the newest applied record or group. Expects no open group. */
        void undoLast();

        /** Redoes the next undone record or group. Expects no open group. */
        void redoLastUndo();

        /**
         * @brief Forgets the oldest @p count records
         *
         * For a host that bounds the history: the document stays as it is,
         * the state before the remaining records becomes the oldest one undo
         * reaches, and record indices shift down by @p count. A saved state
         * older than that can no longer be reached. Cuts through a group
         * when asked to; the host picks whole groups. Expects no open group
         * and at most @ref lastChangeIndex() + 1 records, as undone ones
         * can't be forgotten from below applied ones. A manager that is never
         * asked keeps every record, as its history only grows.
         */
        void dropOldest(std::size_t count);

        /**
         * @brief Moves the document and the history into a fresh pool
         *
         * The document's pool allocator never frees: every undone,
         * overwritten or forgotten value stays in it. This copies the live
         * document and the values the history keeps into a new pool and
         * frees the old one, so that memory drops to what is live. The
         * document object stays the same, undo and redo stay exact, the
         * project's indices are told to rebuild; pointers into the old pool
         * (values, member names, strings handed out before) are left
         * dangling. Expects no open group.
         */
        void compactPool();

        /**
         * @brief Registers @p handler under @p key
         *
         * The manager takes over the handler. @p key is not copied and has to
         * outlive the registration.
         */
        void addChangeHandler(const char* key, Containers::Pointer<ChangeHandler>&& handler);
        void addChangeHandler(const char* key, FunctionChangeHandler::Function function, void* userData);

        /** The registered handlers */
        const StaticMap<Containers::Pointer<ChangeHandler>>& handlers() const { return _handlers; }

    private:
        void record(Containers::Array<char>&& path, JsonPointer&& pointer, Containers::Pointer<rapidjson::Value>&& newValue);
        std::int32_t mergeTarget(Containers::StringView path, const JsonPointer& pointer) const;
        void applyRecord(std::int32_t index, Containers::Pointer<rapidjson::Value>* oldValue);
        void notify(const Change& change);
        void notifyInverse(const Change& change);

        std::int32_t _lastChange;
        std::int32_t _savedChange;
        std::int32_t _group;
        /* Reset when a group opens; kept for hosts, never read here */
        std::uint64_t _groupWord;
        std::int32_t _groupCounter;
        ProjectFile* _project;
        Containers::Array<Change> _changes;
        /* What the application of each record did, for an exact undo */
        Containers::Array<Implementation::AppliedChange> _applied;
        StaticMap<Containers::Pointer<ChangeHandler>> _handlers;
        /* The path components that notify() hands the handlers */
        Containers::Array<Containers::String> _components;
};

}

#endif
