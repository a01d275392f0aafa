#include "QuelmarEngine/ChangeManager.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Assert.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/MemberIndex.h"
#include "QuelmarEngine/Implementation/ChangeApplication.h"
#include "QuelmarEngine/host/ProjectFile.h"

namespace QuelmarEngine {

namespace {

/* The text of a stored path, up to its terminating zero */
Containers::StringView pathText(const Containers::Array<char>& path) {
    if(path.isEmpty()) return {};
    return {path.data(), strnlen(path.data(), path.size())};
}

std::string toString(Containers::StringView text) {
    return std::string(text.data(), text.size());
}

Containers::Array<char> copyPath(const char* path) {
    const std::size_t size = std::strlen(path);
    Containers::Array<char> out{ValueInit, size + 1};
    std::memcpy(out.data(), path, size);
    return out;
}

Containers::Pointer<rapidjson::Value> copyValue(const rapidjson::Value& value, JsonAllocator& allocator) {
    return Containers::Pointer<rapidjson::Value>{new rapidjson::Value{value, allocator}};
}

/* A value holding what @p value holds, as RapidJSON's own raw moves make
   one; the pool allocator never frees, so destroying it frees nothing */
static_assert(!JsonAllocator::kNeedFree, "shared values rely on a pool that never frees");
Containers::Pointer<rapidjson::Value> share(const rapidjson::Value& value) {
    Containers::Pointer<rapidjson::Value> out{new rapidjson::Value};
    std::memcpy(static_cast<void*>(out.get()), static_cast<const void*>(&value), sizeof(rapidjson::Value));
    return out;
}

/* Whether one path is the other or lies below it */
bool areNested(const Containers::StringView a, const Containers::StringView b) {
    const Containers::StringView& shorter = a.size() < b.size() ? a : b;
    const Containers::StringView& longer = a.size() < b.size() ? b : a;
    return std::memcmp(shorter.data(), longer.data(), shorter.size()) == 0 &&
        (longer.size() == shorter.size() || longer.data()[shorter.size()] == '/');
}

}

Change::Change(Change&& other) noexcept: path{std::move(other.path)}, oldValue{std::move(other.oldValue)}, newValue{std::move(other.newValue)}, group{other.group} {}

Change& Change::operator=(Change&& other) noexcept {
    using std::swap;
    swap(path, other.path);
    swap(oldValue, other.oldValue);
    swap(newValue, other.newValue);
    group = other.group;
    return *this;
}

Utility::Debug& operator<<(Utility::Debug& debug, const Change& change) {
    /* The colon follows the path without a space, and Debug has no way to
       drop a single separator, so they go out as one piece */
    std::string path = toString(pathText(change.path));
    if(change.oldValue) {
        path += ':';
        debug << (change.newValue ? "Change" : "Remove") << path.data() << *change.oldValue;
    } else {
        path += ": ()";
        debug << "Create" << path.data();
    }
    debug << "->";
    if(change.newValue) debug << *change.newValue;
    else debug << "()";
    return debug;
}

ChangeManager::ChangeManager(): _lastChange{-1}, _savedChange{-1}, _group{-1}, _groupWord{}, _groupCounter{}, _project{} {
    arrayReserve(_changes, 64);
}

ChangeManager::ChangeManager(ProjectFile& project): ChangeManager{} {
    _project = &project;
}

ChangeManager::~ChangeManager() = default;

void ChangeManager::reset(ProjectFile& project) {
    _project = &project;
    arrayResize(_changes, 0);
    arrayResize(_applied, 0);
    _lastChange = -1;
    _handlers.clear();
}

JsonAllocator& ChangeManager::allocator() {
    CORRADE_ASSERT(_project, "ChangeManager::allocator(): no project file", *static_cast<JsonAllocator*>(nullptr));
    return _project->allocator();
}

void ChangeManager::pushChange(Containers::Array<char>&& path, const rapidjson::Value* value, bool merge) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );

    /* Parsed once, before anything changes; the application and the history
       share it. Exchanging the array below moves no characters, so the text
       stays where it was parsed from. */
    const Containers::StringView text = pathText(path);
    JsonPointer pointer{text};
    CORRADE_ASSERT(pointer.isValid(), "ChangeManager::pushChange(): invalid JSON pointer" << text, );

    /* Copied first, in case the value lives in a record the push destroys */
    Containers::Pointer<rapidjson::Value> newValue;
    if(value) newValue = copyValue(*value, allocator());

    if(merge && value) {
        const std::int32_t found = mergeTarget(text, pointer);
        if(found != -1) {
            if(found != _lastChange) {
                using std::swap;
                Change other = std::move(_changes[found]);
                _changes[found] = std::move(_changes[_lastChange]);
                _changes[_lastChange] = std::move(other);
                swap(_applied[found], _applied[_lastChange]);
            }
            /* The matched record left a value at the path: overwriting it is
               what applying the merged record from before it gives */
            Change& target = lastChange();
            target.newValue = std::move(newValue);
            target.group = _group;
            pointer.get(*_project->document, &_project->memberIndex())->CopyFrom(*target.newValue, allocator());
            _project->valueChanged(pointer);
            if(_group < 0) notify(target);
            return;
        }
    }

    record(std::move(path), std::move(pointer), std::move(newValue));
}

void ChangeManager::pushChange(Containers::Array<char>&& path, Containers::Pointer<rapidjson::Value>&& value) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );
    JsonPointer pointer{pathText(path)};
    CORRADE_ASSERT(pointer.isValid(), "ChangeManager::pushChange(): invalid JSON pointer" << pathText(path), );
    record(std::move(path), std::move(pointer), std::move(value));
}

void ChangeManager::record(Containers::Array<char>&& path, JsonPointer&& pointer, Containers::Pointer<rapidjson::Value>&& newValue) {
    rapidjson::Document& document = *_project->document;
    if(Implementation::padsTooMuch(document, _project->memberIndex(), pointer, bool(newValue))) {
        Utility::Error{} << "ChangeManager::pushChange(): refusing" << pathText(path) << "as it would pad an array with more than" << Implementation::MaxArrayPadding << "nulls";
        return;
    }

    ++_lastChange;
    /* Geometric growth keeps a push amortised O(1); arrayResize alone would
       reallocate to the exact size every time */
    const std::size_t size = _lastChange + 1;
    const std::size_t capacity = arrayCapacity(_changes);
    if(size > capacity) {
        arrayReserve(_changes, std::max(size, 2*capacity));
        arrayReserve(_applied, std::max(size, 2*capacity));
    }
    arrayResize(_changes, size);
    arrayResize(_applied, size);
    if(_savedChange == _lastChange) _savedChange = -1;
    using std::swap;
    swap(path, _changes[_lastChange].path);

    Change& target = lastChange();
    target.newValue = std::move(newValue);
    target.group = _group;
    Implementation::AppliedChange& applied = _applied[_lastChange];
    applied.reset();
    applied.pointer = std::move(pointer);
    /* The value the application takes out of the document becomes the old
       value, which saves copying it */
    target.oldValue = nullptr;
    applyRecord(_lastChange, &target.oldValue);
}

std::int32_t ChangeManager::mergeTarget(const Containers::StringView path, const JsonPointer& pointer) const {
    if(_lastChange <= 0 || _changes[_lastChange].group != _group) return -1;
    std::int32_t found = _lastChange;
    while(found >= 1 && _changes[found].group == _group && pathText(_changes[found].path) != path) --found;
    if(found < 1 || _changes[found].group != _group) return -1;

    /* Only where the merged history undoes and redoes exactly: the merge
       overwrites a value in place, the redo tail's old values don't hold it,
       and a record that moves past others commutes with them */
    if(!_changes[found].newValue || !pointer.get(*_project->document, &_project->memberIndex())) return -1;
    for(std::size_t i = _lastChange + 1; i != _changes.size(); ++i)
        if(areNested(pathText(_changes[i].path), path)) return -1;
    if(found != _lastChange) {
        const Containers::StringView newest = pathText(_changes[_lastChange].path);
        for(std::int32_t i = found; i <= _lastChange; ++i) {
            const Change& change = _changes[i];
            if(!change.oldValue || !change.newValue) return -1;
            if(i == found) continue;
            if(areNested(pathText(change.path), path)) return -1;
            if(i != _lastChange && areNested(pathText(change.path), newest)) return -1;
        }
    }
    return found;
}

void ChangeManager::applyRecord(const std::int32_t index, Containers::Pointer<rapidjson::Value>* const oldValue) {
    const Change& change = _changes[index];
    rapidjson::Document& document = *_project->document;
    Implementation::applyForward(document, _project->memberIndex(), allocator(), change, _applied[index], oldValue);
    _project->valueChanged(_applied[index].pointer);
    if(_group < 0) notify(change);
}

void ChangeManager::pushChange(const char* path, const rapidjson::Value& value, bool merge) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );
    pushChange(copyPath(path), &value, merge);
}

void ChangeManager::pushChange(const char* path, const char* value, bool merge) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );
    const rapidjson::Value string{value, allocator()};
    pushChange(path, string, merge);
}

void ChangeManager::pushChange(Containers::Array<char>&& path, const char* value, bool merge) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );
    pushChange(toString(pathText(path)).data(), value, merge);
}

void ChangeManager::pushRemoval(const char* path) {
    CORRADE_ASSERT(_project, "ChangeManager::pushRemoval(): no project file", );
    pushChange(copyPath(path), static_cast<const rapidjson::Value*>(nullptr), false);
}

void ChangeManager::pushRemoval(Containers::Array<char>&& path) {
    CORRADE_ASSERT(_project, "ChangeManager::pushRemoval(): no project file", );
    pushChange(std::move(path), static_cast<const rapidjson::Value*>(nullptr), false);
}

void ChangeManager::pushAppend(const char* path, const char* value) {
    CORRADE_ASSERT(_project, "ChangeManager::pushAppend(): no project file", );
    rapidjson::Value array{rapidjson::kArrayType};
    if(const rapidjson::Value* const current = _project->getValue(path, false))
        array.CopyFrom(*current, allocator());
    if(!array.IsArray()) array.SetArray();
    array.PushBack(rapidjson::Value{value, allocator()}, allocator());
    pushChange(path, array, false);
}

void ChangeManager::beginGroup() {
    _group = ++_groupCounter;
    _groupWord = 0;
}

void ChangeManager::commit() {
    const std::int32_t closed = _group;
    _group = -1;
    for(std::int32_t i = _lastChange; i >= 0 && _changes[i].group == closed; --i)
        notify(_changes[i]);
}

Change& ChangeManager::lastChange() {
    CORRADE_INTERNAL_ASSERT(_lastChange >= 0 && _lastChange < int(_changes.size()));
    return _changes[_lastChange];
}

const Change& ChangeManager::change(std::size_t i) const {
    CORRADE_ASSERT(i < _changes.size(), "ChangeManager::change(): index" << i << "out of range for" << _changes.size() << "records", _changes[0]);
    return _changes[i];
}

void ChangeManager::markSave() {
    _savedChange = _lastChange;
}

bool ChangeManager::hasUnsavedChanges() const {
    return _savedChange != _lastChange;
}

void ChangeManager::applyChange(const Change& change) {
    CORRADE_ASSERT(_project, "ChangeManager::applyChange(): no project file", );
    rapidjson::Document& document = *_project->document;
    const Containers::StringView text = pathText(change.path);
    Implementation::AppliedChange applied;
    applied.pointer = JsonPointer{text};
    CORRADE_ASSERT(applied.pointer.isValid(), "ChangeManager::applyChange(): invalid JSON pointer" << text, );
    Implementation::applyForward(document, _project->memberIndex(), allocator(), change, applied, nullptr);
    _project->valueChanged(applied.pointer);
    if(_group < 0) notify(change);
}

Change ChangeManager::reverse(const Change& change) {
    CORRADE_ASSERT(_project, "ChangeManager::reverse(): no project file", Change{});
    Change out;
    out.path = Containers::Array<char>{ValueInit, change.path.size()};
    if(!change.path.isEmpty()) std::memcpy(out.path.data(), change.path.data(), change.path.size());
    if(change.oldValue) out.newValue = copyValue(*change.oldValue, allocator());
    if(change.newValue) out.oldValue = copyValue(*change.newValue, allocator());
    return out;
}

void ChangeManager::undo(const Change& change) {
    CORRADE_ASSERT(_project, "ChangeManager::undo(): no project file", );
    rapidjson::Document& document = *_project->document;
    /* A host that changed the document behind the history's back gets the
       inverse record applied, which is the best there is then */
    if(_lastChange >= 0 && &change == &_changes[_lastChange] &&
       Implementation::applyBackward(document, _project->memberIndex(), allocator(), change, _applied[_lastChange])) {
        _project->valueChanged(_applied[_lastChange].pointer);
        if(_group < 0) notifyInverse(change);
    } else applyChange(reverse(change));
    --_lastChange;
}

void ChangeManager::undoLast() {
    CORRADE_ASSERT(_group == -1, "ChangeManager::undoLast(): Can't undo/redo changes in group. Forgot commit()?", );
    CORRADE_ASSERT(_project, "ChangeManager::undoLast(): no project file", );
    if(_lastChange == -1) return;

    /* Ungrouped records carry -1 and no record carries 0, so an ungrouped
       record is undone alone */
    const std::int32_t group = std::max(lastChange().group, 0);
    do undo(lastChange());
    while(_lastChange != -1 && lastChange().group == group);
}

void ChangeManager::redoLastUndo() {
    CORRADE_ASSERT(_group == -1, "ChangeManager::redoLastUndo(): Can't undo/redo changes in group. Forgot commit()?", );
    CORRADE_ASSERT(_project, "ChangeManager::redoLastUndo(): no project file", );
    if(_lastChange + 1 == int(_changes.size())) return;

    ++_lastChange;
    applyRecord(_lastChange, nullptr);
    const std::int32_t group = std::max(lastChange().group, 0);
    while(_lastChange + 1 < int(_changes.size()) && _changes[_lastChange + 1].group == group) {
        ++_lastChange;
        applyRecord(_lastChange, nullptr);
    }
}

void ChangeManager::addChangeHandler(const char* key, Containers::Pointer<ChangeHandler>&& handler) {
    if(_handlers.count() == _handlers.capacity()) _handlers.grow(16);
    _handlers.put(key, std::move(handler));
    if(!_handlers.isCompiled()) _handlers.compile();
}

void ChangeManager::addChangeHandler(const char* key, FunctionChangeHandler::Function function, void* userData) {
    addChangeHandler(key, Containers::Pointer<ChangeHandler>{new FunctionChangeHandler{std::move(function), userData}});
}

void ChangeManager::notify(const Change& change) {
    if(!_handlers.count()) return;

    /* The components of the stored path with its zero byte, split at every
       "/" with empty ones kept, so that the last component ends with the
       zero byte, as the handlers receive it. Each is looked up by its text
       up to the first zero byte. */
    const char* const data = change.path.data();
    const std::size_t size = change.path.size();
    if(!size) return;

    /* Made on the first match only, then shared by every handler; the
       strings are kept from one change to the next, as every change of a
       big step would otherwise allocate them anew */
    std::size_t count = 0;
    for(std::size_t begin = 0, end = 0; end <= size; ++end) {
        if(end != size && data[end] != '/') continue;
        Containers::Pointer<ChangeHandler>* const handler = _handlers.find({data + begin, strnlen(data + begin, end - begin)});
        if(handler) {
            if(!count) {
                count = std::size_t(std::count(data, data + size, '/')) + 1;
                if(_components.size() < count) arrayResize(_components, count);
                std::size_t i = 0;
                for(std::size_t from = 0, to = 0; to <= size; ++to) if(to == size || data[to] == '/') {
                    /* Consecutive changes mostly share their leading
                       components, which then need no new string */
                    const Containers::StringView component{data + from, to - from};
                    if(Containers::StringView{_components[i]} != component) _components[i] = Containers::String{data + from, to - from};
                    ++i;
                    from = to + 1;
                }
            }
            (*handler)->handle(change, Containers::ArrayView<const Containers::String>{_components.data(), count});
        }
        begin = end + 1;
    }
}

void ChangeManager::notifyInverse(const Change& change) {
    if(!_handlers.count()) return;
    /* The handlers get the inverse record; sharing the record's path and
       values saves copying them, and destroying the shares frees nothing */
    Change inverse;
    inverse.path = Containers::Array<char>{const_cast<char*>(change.path.data()), change.path.size(), [](char*, std::size_t) {}};
    if(change.oldValue) inverse.newValue = share(*change.oldValue);
    if(change.newValue) inverse.oldValue = share(*change.newValue);
    notify(inverse);
}

}
