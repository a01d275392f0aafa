#ifndef QuelmarEngine_host_Journal_h
#define QuelmarEngine_host_Journal_h
/* The recovery journal's file: entries that rebuild a session's document
   from its saved file, each one checksummed and synced as it is appended, so
   that a crash at any moment leaves every completed entry readable and a
   torn one recognisable. */

#include <cstddef>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/host/FileStamp.h"

namespace QuelmarEngine {

/** Where the journal of the project file @p path lives: `.NAME.journal` beside it */
std::string journalPathFor(Containers::StringView path);

/** One change of a journalled step: the path and the new value in the journal's binary form, or no value for a removal */
struct JournalRecord {
    std::string path;
    bool hasValue;
    std::string value;
};

/**
@brief Reads a value that a journal holds into @p value

Every number comes back bit for bit and as the same kind of number. False
for bytes that aren't a value or nest deeper than @ref JsonMaxDepth.
*/
bool readJournalValue(Containers::StringView bytes, rapidjson::Document& value);

/** What an entry of the journal does */
enum class JournalEntryKind: char {
    Step = 'S',     /**< A step with its label and changes */
    Undo = 'U',     /**< Undoes a count of steps */
    Redo = 'R'      /**< Redoes a count of steps */
};

/** One entry as read back */
struct JournalEntry {
    JournalEntryKind kind;
    std::string label;
    std::vector<JournalRecord> records;
    std::size_t count{};
    /** Offset in the file just past the entry's frame */
    std::size_t end{};
};

/** Builds the bytes of one step entry */
class JournalStep {
    public:
        explicit JournalStep(Containers::StringView label);

        /** Adds a change of @p path (without its terminating zero) to @p value; null removes */
        void add(Containers::StringView path, const rapidjson::Value* value);

        /** The entry, to be framed by @ref journalFrame() */
        std::string finish();

    private:
        std::string _payload;
        std::size_t _countAt;
        std::uint32_t _count{};
};

/** The bytes of an undo or a redo entry of @p count steps, to be framed by @ref journalFrame() */
std::string journalTravel(JournalEntryKind kind, std::size_t count);

/** The entries @p entries, one after another, as one frame with its length and checksum: they are read back all or none */
std::string journalFrame(const std::string& entries);

/** What a journal file holds */
struct JournalContents {
    /** The project file the entries start from */
    FileStamp base;
    std::vector<JournalEntry> entries;
    /** Length of the readable part; what follows is a torn or corrupt tail */
    std::size_t validSize{};
    /** Length of the file */
    std::size_t fileSize{};
};

/**
@brief Reads the journal at @p path

False with @p error set when there is none or its start can't be read. A
torn or corrupt entry ends the readable part: neither it nor anything after
it is in @ref JournalContents::entries.
*/
bool readJournal(Containers::StringView path, JournalContents& contents, std::string& error);

/**
@brief Appends entries to a journal

Each frame is in the file when @ref append() returns, where it outlives the
process whatever ends it. Syncing it to the disk, which may take milliseconds,
happens on a thread of the writer's own, one sync for whatever was appended
since the last, so that a step never waits for the disk. The file starts with
the stamp of the project file the entries apply to.
*/
class JournalWriter {
    public:
        JournalWriter() = default;
        JournalWriter(const JournalWriter&) = delete;
        JournalWriter& operator=(const JournalWriter&) = delete;
        ~JournalWriter();

        /** Whether a file is open */
        bool isOpen() const { return _fd >= 0; }

        /** Starts the journal at @p path afresh for entries on the file @p base; the first @ref append() writes it */
        bool create(const std::string& path, const FileStamp& base, std::string& error);

        /** Continues the journal at @p path, dropping what follows its first @p size bytes */
        bool resume(const std::string& path, std::size_t size, std::string& error);

        /**
         * @brief Writes the frame @p frame and has it synced
         *
         * On failure takes back whatever part of it was written, so that
         * the next frame still follows a whole one. A sync of earlier frames
         * that failed is reported here too.
         */
        bool append(Containers::StringView frame, std::string& error);

        /** Waits for the sync and closes the file, leaving it */
        void close();

    private:
        void syncLoop(std::string folder);


        int _fd{-1};
        std::size_t _size{};
        /* The magic and the stamp, written with the first frame */
        std::string _start;
        std::thread _syncer;
        std::mutex _mutex;
        std::condition_variable _wake;
        std::size_t _appended{}, _syncedCount{};
        bool _stop{};
        std::string _syncError;
};

}

#endif
