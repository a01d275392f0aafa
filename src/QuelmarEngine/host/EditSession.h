#ifndef QuelmarEngine_host_EditSession_h
#define QuelmarEngine_host_EditSession_h
/* The facade a host drives: one project with its file, every user action as
   one labelled undo step, the saved state, and the rules that keep the
   document loadable, with every error handed back as a value. */

#include <cstddef>
#include <functional>
#include <utility>
#include <string>
#include <vector>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/host/EditHistory.h"
#include "QuelmarEngine/host/EditResult.h"
#include "QuelmarEngine/host/Journal.h"
#include "QuelmarEngine/host/ObjectNames.h"
#include "QuelmarEngine/host/Placement.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarEngine {

/** Whether an action works on the selected objects alone or on their whole trees */
enum class SelectionExtent: unsigned char {
    Objects,    /**< The selected objects */
    Trees       /**< The selected objects and everything below them */
};

/** Where a paste puts the pasted objects */
enum class PastePlacement: unsigned char {
    Beside,     /**< Under the parent of the first selected object */
    Under       /**< Under the first selected object */
};

/** What a reparent keeps of the moved objects */
enum class ReparentMode: unsigned char {
    KeepLocal,  /**< The local transformation: they move along with the new parent */
    KeepWorld   /**< The place in the world: the local transformation is rewritten */
};

/** The space a transformation edit works in */
enum class TransformSpace: unsigned char {
    Local,      /**< The parent's */
    World       /**< The world's */
};

/** Whether a transformation edit sets a value or changes it */
enum class TransformAmount: unsigned char {
    /** Sets the translation, the rotation or the scaling */
    To,
    /**
     * Adds to the translation, rotates further about the axes of the space
     * (around the object's origin), or multiplies the scaling
     */
    By
};

/** What a save does about a file that changed on disk since the session loaded or saved it */
enum class DiskChanges: unsigned char {
    Refuse,     /**< Refuses the save, naming what changed */
    Overwrite   /**< Writes over the file all the same */
};

/** What compaction does with the memory of the pool it leaves */
enum class FreedMemory: unsigned char {
    /**
     * Left to the C library for what the process allocates next: cheap, and
     * the process stays at the size it peaked at
     */
    Reuse,
    /**
     * Given back to the system: the process shrinks to what is live, and
     * what it allocates next costs page faults again
     */
    Release
};

/** Where an object is */
struct ObjectPlacement {
    /** In its parent's space, as its "transformation" says */
    Placement local;
    /** In the world */
    Placement world;
};

/** What an action does about references to the records it removes */
enum class DanglingReferences: unsigned char {
    Refuse,     /**< Refuses the action, naming them */
    Leave       /**< Removes the records all the same, warning about them */
};

/**
@brief An editing session on one project

Owns the @ref QuelmarEditor. Every action that changes the document is
checked first and refused with a message when it would break a rule; a
refused action changes nothing, neither the document nor the history nor the
selection. Every action that changes the document becomes exactly one step of
the history under a label, whatever change groups the commands open; the
steps and their labels live here, beside the change history. A label reads
like the command that made the step, with objects by their keys:
@cb{.txt} add Lamp stage @ce, @cb{.txt} duplicate --trees @ce,
@cb{.txt} set /objects/k/name "Knight" @ce, @cb{.txt} reparent root --keep-transform @ce.

After every step, undo and redo of a project with a file, what rebuilds the
document from the saved file is appended to the recovery journal beside it
(see @ref journalPath()); a save empties it. Opening a project whose journal
holds entries leaves the project read-only until @ref recover() replays them
or @ref discardJournal() drops them.

Objects named in arguments are found through @ref findObject(). An empty
parent means the root, as "parent": "" does in a record. Hosts change the
document only through this class: a change pushed to the editor's change
manager directly is a fatal error at the next step, undo or redo.
*/
class EditSession {
    public:
        /** A session on an empty project with no file */
        EditSession();

        EditSession(const EditSession&) = delete;
        EditSession& operator=(const EditSession&) = delete;

        /** Removes the journal when the state is saved; otherwise it stays for a later recovery */
        ~EditSession();

        /** @{ @name Opening and saving */

        /**
         * @brief Opens the project file at @p path
         *
         * A path where nothing exists yet starts an empty project that is
         * written there at the first save. Refuses files that aren't regular,
         * files past @ref DefaultMaxFileSize and documents that aren't
         * projects, keeping what is open. When the project's journal holds
         * entries, says so in a warning and makes the project read-only.
         */
        EditResult open(Containers::StringView path);

        /** Opens the project in @p json, with no file */
        EditResult openText(Containers::StringView json);

        /** The project's file; empty for none */
        const std::string& path() const { return _path; }

        /** Whether the project was never read from its file or written to one: no file yet, or none at its path when opened */
        bool isNew() const { return _isNew; }

        /** Whether the document is as last saved (or opened) */
        bool isSaved() const { return _history.isSaved(); }

        /**
         * @brief Writes the project to its file atomically and marks the state saved
         *
         * Unless told to overwrite, refuses when the file changed on disk
         * since the session loaded or saved it, as @ref fileChangeOnDisk()
         * says.
         */
        EditResult save(DiskChanges changes = DiskChanges::Refuse);

        /** Writes the project to @p path atomically, makes it the project's file and marks the state saved */
        EditResult saveAs(Containers::StringView path);

        /**
         * @brief What changed in the project's file since the session loaded or saved it
         *
         * Reads the file. Empty when nothing did or there is no file name;
         * otherwise such as "its size (120 -> 135 bytes), modification time
         * and content" or "it was removed".
         */
        std::string fileChangeOnDisk() const;

        /** @} */

        /** @{ @name Recovery journal */

        /** Turns journalling on or off; on by default. Takes effect at the next open or save. */
        void setJournalling(bool enabled) { _journalling = enabled; }

        /** Where the project's journal is; empty when there is no file name or journalling is off */
        std::string journalPath() const;

        /** Whether the project is read-only until its journal is recovered or discarded */
        bool isReadOnly() const { return bool(_pendingJournal); }

        /** Entries in the journal: those waiting to be recovered, else those written since the last open or save */
        std::size_t journalEntryCount() const;

        /**
         * @brief Replays the journal found at open
         *
         * Rebuilds the document, the steps with their labels and the saved
         * state. An undo that reached past the saved state comes back as a
         * step. A torn or damaged tail is dropped with a warning, as is an
         * entry that can't be replayed, together with what follows it. The
         * journal goes on from there.
         */
        EditResult recover();

        /**
         * @brief Removes the journal
         *
         * One found at open: the project stays as loaded and is no longer
         * read-only. One being written: the unsaved changes are no longer
         * recoverable, and nothing is journalled until the next open or save.
         */
        EditResult discardJournal();

        /** @} */

        /** @{ @name History */

        /**
         * @brief Runs @p action as one step labelled @p label
         *
         * The action may push changes and call commands, grouped or not, and
         * the session's own actions: all of it is one step. When it fails,
         * whatever it pushed is taken back and can't be redone. An action
         * that changes nothing leaves no step. Warnings written meanwhile,
         * and those of the scene refresh after it, come back in the result.
         */
        EditResult step(std::string label, const std::function<EditResult()>& action);

        /**
         * @brief Undoes the last @p count steps
         *
         * Refused when there are fewer. Afterwards the undone steps are
         * @cpp steps()[undoCount()] @ce to
         * @cpp steps()[undoCount() + count - 1] @ce.
         */
        EditResult undo(std::size_t count = 1);

        /**
         * @brief Redoes the next @p count undone steps
         *
         * Refused when there are fewer. Afterwards the redone steps are the
         * @p count steps before @cpp steps()[undoCount()] @ce.
         */
        EditResult redo(std::size_t count = 1);

        /** Number of steps that can be undone */
        std::size_t undoCount() const { return _history.position(); }

        /** Number of steps that can be redone */
        std::size_t redoCount() const { return _history.steps().size() - _history.position(); }

        /** The steps and the saved state */
        const EditHistory& history() const { return _history; }

        /** Number of change records, the undone ones included */
        std::size_t recordCount() const;

        /** The JSON Pointer path of change record @p i */
        std::string recordPath(std::size_t i) const;

        /** Change record @p i in one line, such as @cb{.txt} Change /objects/a/name: "A" -> "B" @ce */
        std::string recordText(std::size_t i) const;

        /** @} */

        /**
         * @{ @name Memory
         *
         * The document and the values its history keeps share one pool that
         * never frees. A step counts the bytes the pool grew by while it ran:
         * the values its records keep and what it added to the document.
         * Undone steps that a new step replaced, dropped steps and overwritten
         * values stay in the pool as waste until @ref compact() moves what is
         * live into a fresh pool.
         */

        /** The history budget a session starts with, 256 MiB */
        static constexpr std::size_t DefaultHistoryBudget = std::size_t{256} << 20;

        /**
         * @brief Bounds the bytes the steps of the history count
         *
         * Whenever a step, or a lower budget, takes the steps past
         * @p bytes, the oldest steps are dropped whole, records and labels,
         * until they count at most seven eighths of it; the newest applied
         * step always stays. Undo then stops at the oldest step left, and a
         * saved state among the dropped steps can't be reached any more
         * (@ref EditHistory::savedPosition() says so; @ref isSaved() stays
         * right). Expects not to run inside a step.
         */
        void setHistoryBudget(std::size_t bytes);

        /** The bytes the steps of the history may count */
        std::size_t historyBudget() const { return _historyBudget; }

        /** Bytes in use in the document's pool, live or not */
        std::size_t poolSize() const;

        /**
         * @brief An estimate of the pool's bytes that nothing holds
         *
         * What the pool grew by since it was filled by the load or the last
         * compaction, beyond what the steps kept since count. Costs as much
         * as walking the pool's list of 64 kB chunks.
         */
        std::size_t poolWaste() const;

        /**
         * @brief Moves the document and the history it keeps into a fresh pool
         *
         * The document, undo and redo, the saved state, the scene, the
         * selection and names stay exactly as they were, and the project's
         * indices are rebuilt at their next lookups. Costs a copy of the
         * document and of the history. Pointers into the document handed out
         * before (@ref value(), @ref findValue(), values read from the
         * editor's document) are left dangling; names from
         * @ref objectName() stay valid. Expects not to run inside a step.
         */
        void compact(FreedMemory freed = FreedMemory::Reuse);

        /**
         * @brief Compacts when the waste passes half of what is live
         *
         * For a host to call at a moment of its choosing, such as after a
         * save or while idle between commands. Returns whether it compacted.
         */
        bool compactIfWasteful(FreedMemory freed = FreedMemory::Reuse);

        /** @} */

        /** @{ @name Objects and the selection */

        /**
         * @brief Finds the object that @p reference names
         *
         * A reference is the key of a live object (a record of "objects"
         * that neither it nor an ancestor flags deleted), or else the name
         * of exactly one live object: a key always wins over a name. A name
         * of several live objects is refused with a message that lists them.
         * On success the result's only key is the object's.
         */
        EditResult findObject(Containers::StringView reference);

        /**
         * @brief Finds the objects that @p reference names
         *
         * One object as @ref findObject() finds it, or, failing that, when
         * @p reference holds a wildcard, every live object whose name
         * matches it as a glob pattern (see @ref matchesGlob()), of which
         * there has to be one at least. The result's keys are in tree order.
         */
        EditResult findObjects(Containers::StringView reference);

        /** Keys of the live objects whose names match the glob @p pattern, in tree order; finding none is a success */
        EditResult findByName(Containers::StringView pattern);

        /** The name of object @p key, or null when it has none that is a string; valid until the next change */
        const std::string* objectName(Containers::StringView key);

        /**
         * @brief Where the live object @p key is in the tree
         *
         * The names of its ancestors below the root and of itself, from the
         * top down; an object without a name counts by its key. Empty for an
         * object that isn't live.
         */
        std::vector<std::string> treePath(Containers::StringView key);

        /**
         * @brief Renames the object @p reference to @p name
         *
         * A name that another record of "objects" has gets a suffix, as
         * @ref addObject() gives it. The result's key is the object's, its
         * text the name it got.
         */
        EditResult renameObject(Containers::StringView reference, Containers::StringView name);

        /** Makes exactly the objects that @p references name selected; not a step */
        EditResult select(Containers::ArrayView<const Containers::StringView> references);

        /** Keys of the selected objects in tree order */
        StringArray selection();

        /** Adds an object named @p name under @p parent; the result's key is the new object's, its text the name it got */
        EditResult addObject(Containers::StringView name, Containers::StringView parent);

        /** Deletes the object @p reference and everything below it; the result's keys are the objects that left the scene */
        EditResult deleteObject(Containers::StringView reference);

        /** Deletes every selected object and everything below it; the result's keys are the objects that left the scene */
        EditResult deleteSelection();

        /**
         * @brief Moves the selected objects under @p parent
         *
         * Refuses a parent that is selected or lies below a selected object,
         * and, keeping world placements, a parent whose world transformation
         * can't be inverted.
         */
        EditResult reparentSelection(Containers::StringView parent, ReparentMode mode);

        /**
         * @brief Copies the selected objects and their skins
         *
         * Not a step. The result's text is the clipboard text, its keys the
         * copied objects and its skin keys the copied skins.
         */
        EditResult copy(SelectionExtent extent);

        /**
         * @brief Pastes the clipboard text @p text and selects what it added
         *
         * Text that can't be read, or whose records would break a rule, is
         * refused without touching the selection; @p source names the text
         * in the message. The result's keys are the pasted objects in tree
         * order.
         */
        EditResult paste(Containers::StringView text, PastePlacement placement, Containers::StringView source = "the clipboard text");

        /** Duplicates the selected objects beside the first one and selects the copies, which are the result's keys */
        EditResult duplicate(SelectionExtent extent);

        /**
         * @brief Removes the records of deleted objects with everything below them
         *
         * With no @p references, every record of "objects" that is not in
         * the scene; otherwise the objects they name, each deleted or below
         * a deleted object, and the records below those. References that
         * records left would keep to them (a skin's joints) are refused, or
         * left with a warning. The result's keys are the purged records in
         * the order of the map.
         */
        EditResult purge(Containers::ArrayView<const Containers::StringView> references, DanglingReferences dangling = DanglingReferences::Refuse);

        /** @} */

        /**
         * @{ @name Transformations
         *
         * An object's "transformation" as a translation, a rotation and a
         * scaling. Each edit is one step that writes the whole local matrix,
         * computed in double precision; a number within a few ulps of the
         * number that was at its place, of a whole number or of a short
         * decimal is written as that number.
         */

        /** Where the object @p reference is; the result's key is the object's */
        EditResult findPlacement(Containers::StringView reference, ObjectPlacement& placement);

        /** Moves the object @p reference to, or by, @p translation */
        EditResult move(Containers::StringView reference, const Magnum::Vector3d& translation, TransformSpace space, TransformAmount amount);

        /**
         * @brief Rotates the object @p reference to, or by, @p degrees
         *
         * The angles are about the X, then the Y, then the Z axis of the
         * space, as @ref eulerDegrees() gives them.
         */
        EditResult rotate(Containers::StringView reference, const Magnum::Vector3d& degrees, TransformSpace space, TransformAmount amount);

        /** Scales the object @p reference to, or by, @p scaling */
        EditResult scale(Containers::StringView reference, const Magnum::Vector3d& scaling, TransformSpace space, TransformAmount amount);

        /** @} */

        /** @{ @name Any record and any value */

        /** Copies record @p key of the top-level map @p type under a new key, the result's key */
        EditResult duplicateResource(Containers::StringView type, Containers::StringView key);

        /**
         * @brief Removes record @p key of the top-level map @p type
         *
         * For a record of "objects" or "skins", the references to it that
         * other records would keep are refused, or left with a warning.
         */
        EditResult deleteResource(Containers::StringView type, Containers::StringView key, DanglingReferences dangling = DanglingReferences::Refuse);

        /**
         * @brief Sets the value at the JSON Pointer @p pointer to the JSON text @p json
         *
         * Warns of every inconsistency that the change makes, as
         * @ref inconsistencies() would list it, looking only at what the
         * change touches.
         */
        EditResult set(Containers::StringView pointer, Containers::StringView json);

        /** Removes the value at the JSON Pointer @p pointer, warning as @ref set() does */
        EditResult remove(Containers::StringView pointer);

        /**
         * @brief Every inconsistency of the project, one line each
         *
         * References that name no record, parent cycles, transformations
         * that aren't 16 numbers single precision can hold, live objects
         * sharing a name.
         */
        std::vector<std::string> inconsistencies();

        /** The document's value at the JSON Pointer @p pointer, or null with the reason in the result */
        EditResult findValue(Containers::StringView pointer, const rapidjson::Value*& value) const;

        /** The document's value at @p pointer, or null when there is none */
        const rapidjson::Value* value(Containers::StringView pointer) const;

        /** The editor, for reading its scene graph and selection */
        QuelmarEditor& editor() { return _editor; }

        /** @} */

    private:
        /* Why @p pointer, parsed from @p text, can't be used, or success */
        static EditResult checkPointer(const JsonPointer& pointer, Containers::StringView text);
        /* The record @p key of the map @p type, or null with why in @p result */
        const rapidjson::Value* findRecord(Containers::StringView type, Containers::StringView key, EditResult& result) const;
        /* Runs @p action with warnings captured into @p result, refreshing the scene last */
        void capturing(EditResult& result, const std::function<void()>& action);
        void expectHistoryInStep(const char* function) const;
        /* Undoes, or redoes when @p forward, @p count steps */
        EditResult travel(std::size_t count, bool forward);
        void joinIntoOneStep(std::size_t first, std::size_t last);
        /* Drops the oldest steps while the history is past its budget */
        void keepWithinBudget();
        /* Opens what @p loader loads, bound to @p path */
        EditResult load(const std::function<bool()>& loader, std::string path, bool isNew);
        /* Position of the live object @p key in the scene graph, 0 for none */
        std::size_t livePosition(const std::string& key);
        /* Looks for a journal left beside a freshly opened project */
        void findJournal(EditResult& result);
        /* Closes the journal, removing it when the state is saved or @p always */
        void closeJournal(bool always);
        /* Whether changes go to the journal now */
        bool isJournalling() const;
        /* Appends @p count @p entries as one frame, warning into @p result when it can't */
        void writeJournal(const std::string& entries, std::size_t count, EditResult& result);
        /* The journal entry of @p step */
        std::string journalStep(const EditStep& step) const;
        /* Journals a travel of @p count steps from position @p from */
        void journalTravel(std::size_t from, std::size_t count, bool forward, const std::vector<std::pair<std::string, bool>>& touched, EditResult& result);
        /* Top-level members that the steps in [first, last) change, each with whether it exists now */
        std::vector<std::pair<std::string, bool>> touchedMembers(std::size_t first, std::size_t last) const;
        EditResult replay(const JournalEntry& entry);

        QuelmarEditor _editor;
        EditHistory _history;
        std::string _path;
        ObjectNames _names;
        bool _isNew{true};
        /* Nested step() calls run inside the outermost one */
        std::size_t _stepDepth{};
        std::size_t _historyBudget{DefaultHistoryBudget};
        /* Pool bytes of the document as the load or the last compaction
           left it, beside the bytes the steps kept then */
        std::size_t _poolBaseline{};

        JournalWriter _journal;
        Containers::Pointer<JournalContents> _pendingJournal;
        /* Whether the pending journal was written for another file */
        bool _pendingIsStale{};
        bool _journalling{true};
        bool _replaying{};
        bool _journalDropped{};
        std::size_t _journalEntries{};
        /* A replay of the journal has steps _mirrorStart to _mirrorStart +
           _mirrorCount of the history as its newest ones; any other step is
           unknown to it, so travelling over one journals its changes */
        std::size_t _mirrorStart{};
        std::size_t _mirrorCount{};
};

}

#endif
