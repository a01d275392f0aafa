#include "QuelmarEngine/host/EditSession.h"

#include <cerrno>
#include <sstream>
#include <sys/stat.h>
#include <Corrade/Utility/Assert.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"

namespace QuelmarEngine {

namespace {

using Implementation::text;

constexpr const char ReadOnlyMessage[] = "the project is read-only until its journal is recovered or discarded";

/* The lines of @p stream's text */
std::vector<std::string> linesOf(const std::ostringstream& stream) {
    std::vector<std::string> lines;
    std::istringstream in{stream.str()};
    for(std::string line; std::getline(in, line); ) lines.push_back(std::move(line));
    return lines;
}

/* What the library reported through its error output, as one message
   that starts in lower case like every other ("Can't load ..." -> "can't
   load ...") */
std::string messageOf(const std::ostringstream& errors, const char* const fallback) {
    std::vector<std::string> lines = linesOf(errors);
    if(lines.empty()) return fallback;
    std::string& message = lines.front();
    if(message.size() > 1 && message[0] >= 'A' && message[0] <= 'Z' && (message[1] < 'A' || message[1] > 'Z'))
        message[0] = char(message[0] - 'A' + 'a');
    return std::move(message);
}

}

EditSession::EditSession() {
    /* A fresh change manager hands out group ids 1 and 2 to these two empty
       groups and never again, which leaves them to joinIntoOneStep() */
    for(int i = 0; i != 2; ++i) {
        _editor.changeManager->beginGroup();
        _editor.changeManager->commit();
    }
    _names.attach(_editor);
}

EditSession::~EditSession() {
    closeJournal(false);
}

void EditSession::capturing(EditResult& result, const std::function<void()>& action) {
    std::ostringstream warnings;
    {
        Utility::Warning redirect{&warnings};
        action();
        /* The scene rebuild warns about what it finds (parent cycles) */
        _editor.refresh();
    }
    for(std::string& line: linesOf(warnings)) result.addWarning(std::move(line));
}

void EditSession::expectHistoryInStep(const char* const function) const {
    const ChangeManager& manager = *_editor.changeManager;
    CORRADE_ASSERT(!_stepDepth, function << "can't run inside a step", );
    CORRADE_ASSERT(!manager.isGroupOpen() && std::size_t(manager.lastChangeIndex() + 1) == _history.appliedRecordCount(),
        function << "the change history was changed outside the session", );
}

EditResult EditSession::load(const std::function<bool()>& loader, std::string path, const bool isNew) {
    EditResult result;
    std::ostringstream errors;
    bool loaded;
    capturing(result, [&]{
        Utility::Error redirect{&errors};
        loaded = loader();
    });
    if(!loaded) {
        result.fail(messageOf(errors, "can't load the project"));
        return result;
    }
    closeJournal(false);
    _history.clear();
    _poolBaseline = poolSize();
    _path = std::move(path);
    _isNew = isNew;
    /* The load dropped the change handlers */
    _names.attach(_editor);
    findJournal(result);
    return result;
}

EditResult EditSession::open(const Containers::StringView path) {
    expectHistoryInStep("EditSession::open():");
    if(path.isEmpty()) return EditResult::failure("the project file name is empty");
    std::string file = text(path);
    /* Nothing there yet, in a folder that is: the first save makes the file */
    struct stat info;
    const std::size_t slash = file.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
    if(::stat(file.data(), &info) != 0 && errno == ENOENT && ::stat(folder.data(), &info) == 0 && S_ISDIR(info.st_mode))
        return load([&]{ return _editor.loadFromString("{}"); }, std::move(file), true);
    return load([&]{ return _editor.loadFromFile(path); }, std::move(file), false);
}

EditResult EditSession::openText(const Containers::StringView json) {
    expectHistoryInStep("EditSession::openText():");
    return load([&]{ return _editor.loadFromString(json); }, {}, true);
}

EditResult EditSession::save(const DiskChanges changes) {
    if(_path.empty()) return EditResult::failure("the project has no file yet");
    if(changes == DiskChanges::Refuse && !isReadOnly())
        if(const std::string change = fileChangeOnDisk(); !change.empty())
            return EditResult::failure(_path + " changed on disk since this session read or wrote it: " + change);
    return saveAs({_path.data(), _path.size()});
}

EditResult EditSession::saveAs(const Containers::StringView path) {
    expectHistoryInStep("EditSession::saveAs():");
    if(isReadOnly()) return EditResult::failure(ReadOnlyMessage);
    std::ostringstream errors;
    bool saved;
    {
        Utility::Error redirect{&errors};
        saved = _editor.data.project.saveToFile(path);
    }
    if(!saved) return EditResult::failure(messageOf(errors, "can't save the project"));
    /* The file now holds everything the journal held, and a journal at the
       new path belongs to contents that are gone */
    if(!_path.empty()) closeJournal(true);
    _path = text(path);
    closeJournal(true);
    _mirrorStart = _history.position();
    _mirrorCount = 0;
    _isNew = false;
    _history.markSaved();
    _editor.changeManager->markSave();
    return {};
}

void EditSession::joinIntoOneStep(const std::size_t first, const std::size_t last) {
    /* Undo and redo take back a run of records with one group id. Ids 1 and
       2 are this session's alone: alternating them keeps every step apart
       from the one before it. The records are the manager's own, so giving
       them another group is no write to a constant. */
    const ChangeManager& manager = *_editor.changeManager;
    const std::int32_t id = first && manager.change(first - 1).group == 1 ? 2 : 1;
    for(std::size_t i = first; i <= last; ++i)
        const_cast<Change&>(manager.change(i)).group = id;
}

EditResult EditSession::step(std::string label, const std::function<EditResult()>& action) {
    if(_stepDepth) return action();
    expectHistoryInStep("EditSession::step():");
    if(isReadOnly()) return EditResult::failure(ReadOnlyMessage);

    ChangeManager& manager = *_editor.changeManager;
    const std::size_t first = std::size_t(manager.lastChangeIndex() + 1);
    const std::size_t poolBefore = poolSize();
    EditResult result;
    capturing(result, [&]{
        ++_stepDepth;
        EditResult outcome = action();
        --_stepDepth;
        CORRADE_ASSERT(!manager.isGroupOpen(), "EditSession::step(): the action left a change group open", );
        CORRADE_ASSERT(manager.lastChangeIndex() + 1 >= int(first), "EditSession::step(): the action undid changes it didn't make", );
        const std::size_t end = std::size_t(manager.lastChangeIndex() + 1);
        if(end != first) {
            /* Pushing dropped the undone steps */
            _history.dropUndone();
            joinIntoOneStep(first, end - 1);
            if(outcome) {
                const std::size_t poolAfter = poolSize();
                _history.add(std::move(label), first, end - first, poolAfter > poolBefore ? poolAfter - poolBefore : 0);
                _mirrorCount = _history.position() - _mirrorStart;
                if(isJournalling()) writeJournal(journalStep(_history.steps()[_history.steps().size() - 1]), 1, outcome);
                keepWithinBudget();
            }
            /* Nothing of a failed action stays; the history no longer leads
               to its records, so they can't be redone */
            else manager.undoLast();
        }
        /* The capture adds its warnings to it */
        result = std::move(outcome);
    });
    return result;
}

EditResult EditSession::travel(const std::size_t count, const bool forward) {
    const std::size_t available = forward ? redoCount() : undoCount();
    const char* const verb = forward ? "redo" : "undo";
    if(!available) return EditResult::failure(std::string{"there is nothing to "} + verb);
    if(count > available)
        return EditResult::failure((available == 1 ? std::string{"there is only 1 step to "} : "there are only " + std::to_string(available) + " steps to ") + verb);
    const std::size_t from = _history.position();
    /* What an undo past the steps a replay knows has to write in full */
    const std::vector<std::pair<std::string, bool>> touched = forward || count <= from - _mirrorStart ? std::vector<std::pair<std::string, bool>>{} : touchedMembers(from - count, from);
    EditResult result;
    capturing(result, [&]{
        /* Every step is one run of records with one group id */
        for(std::size_t i = 0; i != count; ++i) {
            if(forward) _editor.changeManager->redoLastUndo();
            else _editor.changeManager->undoLast();
        }
    });
    if(forward) _history.moveForward(count);
    else _history.moveBack(count);
    journalTravel(from, count, forward, touched, result);
    return result;
}

EditResult EditSession::undo(const std::size_t count) {
    expectHistoryInStep("EditSession::undo():");
    if(isReadOnly()) return EditResult::failure(ReadOnlyMessage);
    return travel(count, false);
}

EditResult EditSession::redo(const std::size_t count) {
    expectHistoryInStep("EditSession::redo():");
    if(isReadOnly()) return EditResult::failure(ReadOnlyMessage);
    return travel(count, true);
}

std::size_t EditSession::recordCount() const {
    /* Records past the last step are those of a failed action, taken back */
    const auto steps = _history.steps();
    return steps.isEmpty() ? 0 : steps[steps.size() - 1].firstRecord + steps[steps.size() - 1].recordCount;
}

std::string EditSession::recordPath(const std::size_t i) const {
    const Change& change = _editor.changeManager->change(i);
    /* The stored path ends with a zero byte, which its size counts */
    return change.path.isEmpty() ? std::string{} : std::string{change.path.data()};
}

std::string EditSession::recordText(const std::size_t i) const {
    std::ostringstream out;
    {
        Utility::Debug debug{&out, Utility::Debug::Flag::NoNewlineAtTheEnd};
        debug << _editor.changeManager->change(i);
    }
    return out.str();
}

EditResult EditSession::checkPointer(const JsonPointer& pointer, const Containers::StringView path) {
    if(!pointer.isValid())
        return EditResult::failure("invalid JSON Pointer " + text(path) + " at byte " + std::to_string(pointer.errorOffset()) +
            ": it has to be empty or start with /, and ~ has to be followed by 0 or 1");
    /* The history keeps paths as zero-terminated text */
    for(std::size_t i = 0; i != path.size(); ++i)
        if(!path.data()[i]) return EditResult::failure("invalid JSON Pointer: it holds a NUL byte");
    return {};
}

EditResult EditSession::findValue(const Containers::StringView pointer, const rapidjson::Value*& value) const {
    value = nullptr;
    if(EditResult checked = checkPointer(JsonPointer{pointer}, pointer); !checked) return checked;
    value = this->value(pointer);
    if(!value) return EditResult::failure("there is no value at " + text(pointer));
    return {};
}

const rapidjson::Value* EditSession::value(const Containers::StringView pointer) const {
    return _editor.data.project.getValue(text(pointer).data(), false);
}

}
