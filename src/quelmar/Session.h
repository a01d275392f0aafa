/* What one run of the program works on: the editor, the file, the clipboard
   and where the file's saved state lies in the history. */
#ifndef quelmar_Session_h
#define quelmar_Session_h

#include <string>

#include "QuelmarEngine/host/QuelmarEditor.h"

namespace quelmar {

using QuelmarEngine::QuelmarEditor;

/** What @ref Session::savedPosition() gives when the saved state is gone */
constexpr int NoSavedPosition = -2;

class Session {
    public:
        /** Opens @p path, keeping what is open when it can't be read */
        bool open(const std::string& path);

        /** Prints @p message as one error line and returns false */
        bool fail(const std::string& message) const;

        /** Remembers the history position as the file's saved state */
        void markSaved();

        /**
         * @brief Notes where a command that pushed changes started
         *
         * A push made while the history position is before the saved one
         * throws away the records that led to the saved state; the change
         * manager would still call a later return to an old position
         * "saved", so the session keeps its own account.
         */
        void notePushesFrom(int historyPositionBefore);

        /** Whether the document differs from the saved file */
        bool hasUnsavedChanges() const;

        /** The first and last history record that differ from the saved file; empty when none can be named */
        void unsavedRecords(int& first, int& last) const;

        /**
         * @brief Index of the last record of the saved state
         *
         * -1 when it is the state before the first record,
         * @ref NoSavedPosition when the history no longer leads to it.
         */
        int savedPosition() const {
            return _savedReachable ? _savedPosition : NoSavedPosition;
        }

        QuelmarEditor editor;
        /** The file the project came from or was last saved to; empty for none */
        std::string file;
        /** The session's clipboard text, empty before the first copy */
        std::string clipboard;
        /** Put before every error message, for example the script line */
        std::string location;
        bool quitRequested{};

    private:
        int _savedPosition{-1};
        /* Records 0 .. _sharedRecords - 1 are those of the saved state */
        int _sharedRecords{0};
        bool _savedReachable{true};
};

}

#endif
