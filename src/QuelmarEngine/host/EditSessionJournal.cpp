/* The session's recovery journal: writing an entry after every step, undo
   and redo, finding a journal at open, replaying or discarding it; and what
   changed in the project's file on disk. */
#include "QuelmarEngine/host/EditSession.h"

#include <algorithm>
#include <sstream>
#include <unistd.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine {

namespace {

/* The path text of @p change without its terminating zero */
Containers::StringView pathOf(const Change& change) {
    return change.path.isEmpty() ? Containers::StringView{} : Containers::StringView{change.path.data(), change.path.size() - 1};
}

/* "1 entry", "2 entries" */
std::string plural(const std::size_t count, const char* const one, const char* const many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}

std::string EditSession::fileChangeOnDisk() const {
    if(_path.empty()) return {};
    FileStamp now;
    std::string error;
    if(!readStamp({_path.data(), _path.size()}, now, error)) return "it can't be read (" + error + ")";
    return describeFileChange(_editor.data.project.fileStamp(), now);
}

std::string EditSession::journalPath() const {
    return _path.empty() || (!_journalling && !_pendingJournal) ? std::string{} : journalPathFor({_path.data(), _path.size()});
}

std::size_t EditSession::journalEntryCount() const {
    return _pendingJournal ? _pendingJournal->entries.size() : _journalEntries;
}

void EditSession::closeJournal(const bool always) {
    const bool owned = _journal.isOpen();
    _journal.close();
    if(!_path.empty() && (always || (owned && isSaved())))
        ::unlink(journalPathFor({_path.data(), _path.size()}).data());
    _journalEntries = 0;
    _journalDropped = false;
}

void EditSession::findJournal(EditResult& result) {
    _pendingJournal = nullptr;
    _mirrorStart = _mirrorCount = 0;
    if(_path.empty()) return;
    const std::string path = journalPathFor({_path.data(), _path.size()});
    Containers::Pointer<JournalContents> contents{new JournalContents};
    std::string error;
    /* A journal without entries (or cut short in its first bytes) holds no work */
    if(!readJournal({path.data(), path.size()}, *contents, error)) return;
    if(contents->entries.empty()) {
        if(contents->validSize != contents->fileSize)
            result.addWarning("the journal " + path + " is damaged before its first entry and holds nothing that can be replayed");
        return;
    }

    const FileStamp& file = _editor.data.project.fileStamp();
    const FileStamp& base = contents->base;
    _pendingIsStale = base.exists != file.exists || (file.exists && (base.size != file.size || base.hash != file.hash));
    if(_pendingIsStale) result.addWarning("the journal " + path + " was written for another version of " + _path +
        " and can't be replayed; the project is read-only until the journal is discarded");
    else {
        std::string line = "the journal " + path + " holds " + plural(contents->entries.size(), "entry", "entries") +
            " of unsaved work from a session that ended without saving";
        if(contents->validSize != contents->fileSize) line += ", and a damaged tail that recovery drops";
        result.addWarning(line + "; the project is read-only until it is recovered or discarded");
    }
    _pendingJournal = std::move(contents);
}

void EditSession::writeJournal(const std::string& entries, const std::size_t count, EditResult& result) {
    if(_journalDropped || entries.empty()) return;
    const std::string frame = journalFrame(entries);
    std::string error;
    const std::string path = journalPathFor({_path.data(), _path.size()});
    if(!_journal.isOpen() && !_journal.create(path, _editor.data.project.fileStamp(), error))
        result.addWarning("the journal " + path + " can't be made (" + error + "): a crash would lose this change");
    else if(!_journal.append({frame.data(), frame.size()}, error))
        result.addWarning("the journal " + path + " can't be written (" + error + "): a crash would lose this change");
    else _journalEntries += count;
}

std::string EditSession::journalStep(const EditStep& step) const {
    JournalStep entry{{step.label.data(), step.label.size()}};
    const ChangeManager& manager = *_editor.changeManager;
    for(std::size_t i = step.firstRecord; i != step.firstRecord + step.recordCount; ++i) {
        const Change& change = manager.change(i);
        entry.add(pathOf(change), change.newValue.get());
    }
    return entry.finish();
}

bool EditSession::isJournalling() const {
    return _journalling && !_replaying && !_path.empty();
}

std::vector<std::pair<std::string, bool>> EditSession::touchedMembers(const std::size_t first, const std::size_t last) const {
    std::vector<std::pair<std::string, bool>> touched;
    const auto steps = _history.steps();
    for(std::size_t i = first; i != last; ++i) for(std::size_t r = 0; r != steps[i].recordCount; ++r) {
        const Containers::StringView path = pathOf(_editor.changeManager->change(steps[i].firstRecord + r));
        std::string member{path.data(), path.size()};
        member = member.substr(0, member.find('/', 1));
        bool known = false;
        for(const auto& found: touched) known = known || found.first == member;
        if(!known) touched.emplace_back(member, value({member.data(), member.size()}) != nullptr);
    }
    return touched;
}

void EditSession::journalTravel(const std::size_t from, const std::size_t count, const bool forward, const std::vector<std::pair<std::string, bool>>& touched, EditResult& result) {
    const bool writing = isJournalling();
    if(!forward) {
        if(count <= from - _mirrorStart) {
            if(writing) writeJournal(QuelmarEngine::journalTravel(JournalEntryKind::Undo, count), 1, result);
            return;
        }
        /* The replay never had some of the steps undone: it gets the
           top-level members they all touched as they are now, in one step */
        JournalStep entry{"undo past the saved state"};
        for(const auto& member: touched) {
            const rapidjson::Value* const now = value({member.first.data(), member.first.size()});
            if(now || member.second) entry.add({member.first.data(), member.first.size()}, now);
        }
        if(writing) writeJournal(entry.finish(), 1, result);
        _mirrorStart = from - count;
        _mirrorCount = 0;
        return;
    }
    /* One frame: a crash leaves all of the redo or none */
    const std::size_t known = std::min(count, _mirrorStart + _mirrorCount - from);
    std::string entries;
    if(known && writing) entries = QuelmarEngine::journalTravel(JournalEntryKind::Redo, known);
    /* Steps the replay never had come to it as new ones */
    for(std::size_t i = from + known; i != from + count; ++i) {
        ++_mirrorCount;
        if(writing) entries += journalStep(_history.steps()[i]);
    }
    writeJournal(entries, (known ? 1 : 0) + count - known, result);
}

EditResult EditSession::replay(const JournalEntry& entry) {
    if(entry.kind == JournalEntryKind::Undo) return undo(entry.count);
    if(entry.kind == JournalEntryKind::Redo) return redo(entry.count);
    std::vector<rapidjson::Document> values(entry.records.size());
    for(std::size_t i = 0; i != values.size(); ++i) {
        const std::string& bytes = entry.records[i].value;
        if(entry.records[i].hasValue && !readJournalValue({bytes.data(), bytes.size()}, values[i]))
            return EditResult::failure("the value for " + entry.records[i].path + " can't be read");
    }
    return step(entry.label, [&]{
        ChangeManager& manager = *_editor.changeManager;
        std::ostringstream errors;
        Utility::Error redirect{&errors};
        manager.beginGroup();
        for(std::size_t i = 0; i != values.size(); ++i) {
            const int last = manager.lastChangeIndex();
            const std::string& path = entry.records[i].path;
            JsonPointer pointer{{path.data(), path.size()}};
            if(!pointer.isValid() || path.find('\0') != std::string::npos) {
                manager.commit();
                return EditResult::failure("invalid JSON Pointer " + path);
            }
            Containers::Array<char> pathCopy{ValueInit, path.size() + 1};
            std::copy(path.begin(), path.end(), pathCopy.data());
            manager.pushChange(std::move(pathCopy), entry.records[i].hasValue ? &values[i] : nullptr, false);
            if(manager.lastChangeIndex() != last + 1) {
                manager.commit();
                return EditResult::failure("the change of " + path + " can't be made");
            }
        }
        manager.commit();
        return EditResult{};
    });
}

EditResult EditSession::recover() {
    if(!_pendingJournal) return EditResult::failure("there is no journal to recover");
    if(_pendingIsStale) return EditResult::failure("the journal was written for another version of " + _path + " and can only be discarded");
    const Containers::Pointer<JournalContents> contents = std::move(_pendingJournal);
    EditResult result;
    std::size_t replayed = 0;
    _replaying = true;
    for(const JournalEntry& entry: contents->entries) {
        EditResult outcome = replay(entry);
        if(!outcome) {
            result.addWarning("entry " + std::to_string(replayed + 1) + " of the journal can't be replayed (" + outcome.message() + "); it and the " +
                plural(contents->entries.size() - replayed - 1, "entry", "entries") + " after it are dropped");
            break;
        }
        ++replayed;
    }
    _replaying = false;
    if(contents->validSize != contents->fileSize)
        result.addWarning("the journal's last " + plural(contents->fileSize - contents->validSize, "byte", "bytes") + " were torn or damaged and are dropped");

    /* The journal goes on from the last entry replayed; the replay knows
       every step of the history */
    const std::string path = journalPathFor({_path.data(), _path.size()});
    std::string error;
    if(!replayed) ::unlink(path.data());
    else if(!_journal.resume(path, contents->entries[replayed - 1].end, error))
        result.addWarning("the journal " + path + " can't be continued (" + error + "); it starts over at the next change");
    else _journalEntries = replayed;
    _mirrorStart = 0;
    _mirrorCount = _history.steps().size();
    result.setText("replayed " + plural(replayed, "entry", "entries") + ": " + plural(undoCount(), "step", "steps") + " to undo, " + std::to_string(redoCount()) + " to redo");
    return result;
}

EditResult EditSession::discardJournal() {
    if(!_pendingJournal && !_journal.isOpen()) return EditResult::failure("there is no journal to discard");
    /* Later entries would apply to a document the file doesn't hold */
    if(!_pendingJournal) _journalDropped = true;
    _pendingJournal = nullptr;
    _journal.close();
    _journalEntries = 0;
    ::unlink(journalPathFor({_path.data(), _path.size()}).data());
    _mirrorStart = _history.position();
    _mirrorCount = 0;
    return {};
}

}
