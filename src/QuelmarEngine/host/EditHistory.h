#ifndef QuelmarEngine_host_EditHistory_h
#define QuelmarEngine_host_EditHistory_h
/* The steps of an edit session beside the change history: one label and a
   run of change records per user action, the position, and where the saved
   file stands. */

#include <cstddef>
#include <string>
#include <utility>
#include <vector>
#include <Corrade/Containers/ArrayView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** One user action in the history */
struct EditStep {
    /** What the action was, for listings */
    std::string label;
    /** Number of the step, never given to another step of the session */
    std::size_t serial;
    /** Index of its first change record in the change history */
    std::size_t firstRecord;
    /** Number of its change records, at least one */
    std::size_t recordCount;
    /** Bytes of the document's pool that it took when it was made */
    std::size_t byteCount;
};

/**
@brief Steps, position and saved state

Knows nothing of the change records themselves. The saved state is the serial
of the newest applied step when the file was written (0 for the state before
any step); since serials are never reused, a history truncated past that step
can never compare equal to it again, and neither can one whose oldest steps
were dropped past it.
*/
class EditHistory {
    public:
        /** What @ref savedPosition() gives when the saved state is no longer in the history */
        static constexpr std::size_t NotInHistory = ~std::size_t{};

        /** Forgets every step; the state before them counts as saved */
        void clear();

        /** Appends a step at the position, dropping the steps after it */
        void add(std::string label, std::size_t firstRecord, std::size_t recordCount, std::size_t byteCount = 0);

        /**
         * @brief Drops the oldest @p count steps
         *
         * Their state after them becomes the oldest one; the records of the
         * remaining steps are taken to have moved down by as many as the
         * dropped ones had, which it returns. Expects as many applied steps.
         */
        std::size_t dropOldest(std::size_t count);

        /** Sum of the steps' byte counts, the undone ones included */
        std::size_t byteCount() const { return _byteCount; }

        /** Drops the steps after the position, whose records are gone */
        void dropUndone();

        /** Moves the position back by @p count steps. Expects as many applied steps. */
        void moveBack(std::size_t count);

        /** Moves the position forward by @p count steps. Expects as many undone steps. */
        void moveForward(std::size_t count);

        /** Every step, oldest first, the undone ones included */
        Containers::ArrayView<const EditStep> steps() const { return {_steps.data(), _steps.size()}; }

        /** Number of applied steps */
        std::size_t position() const { return _position; }

        /** Number of change records of the applied steps */
        std::size_t appliedRecordCount() const;

        /** Remembers the current state as the saved one */
        void markSaved();

        /** Whether the current state is the saved one */
        bool isSaved() const;

        /** Number of applied steps in the saved state, or @ref NotInHistory */
        std::size_t savedPosition() const;

        /**
         * @brief Steps that lie between the saved state and the current one
         *
         * Returned as the index of the first and one past the last. When the
         * saved state is no longer in the history, the steps since the two
         * parted.
         */
        std::pair<std::size_t, std::size_t> unsavedSteps() const;

    private:
        std::size_t currentSerial() const;

        std::vector<EditStep> _steps;
        std::size_t _position{};
        std::size_t _lastSerial{};
        std::size_t _savedSerial{};
        /* How many leading steps lie on the way to the saved state */
        std::size_t _savedLineage{};
        /* The serial of the state before the oldest step kept */
        std::size_t _baseSerial{};
        std::size_t _byteCount{};
};

}

#endif
