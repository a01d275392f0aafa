#include "QuelmarEngine/ChangeManager.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Assert.h>
#include <Corrade/Utility/String.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/JsonPrinter.h"
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

Containers::StringView view(const std::string& text) {
    return {text.data(), text.size()};
}

Containers::Array<char> copyPath(const char* path) {
    const std::size_t size = std::strlen(path);
    Containers::Array<char> out{ValueInit, size + 1};
    std::memcpy(out.data(), path, size);
    return out;
}

/* Parent path and last segment, as splitting at every "/" and joining all
   but the last piece again would give */
std::string parentPathOf(Containers::StringView path) {
    const char* const begin = path.data();
    for(const char* i = begin + path.size(); i != begin; --i)
        if(i[-1] == '/') return std::string(begin, i - 1 - begin);
    return {};
}

Containers::StringView lastSegmentOf(Containers::StringView path) {
    const char* const begin = path.data();
    const char* const end = begin + path.size();
    for(const char* i = end; i != begin; --i)
        if(i[-1] == '/') return {i, std::size_t(end - i)};
    return path;
}

/* An optional "-" followed by one or more digits */
bool isIndexKey(Containers::StringView segment) {
    std::size_t i = 0;
    if(i != segment.size() && segment.data()[i] == '-') ++i;
    if(i == segment.size()) return false;
    for(; i != segment.size(); ++i)
        if(segment.data()[i] < '0' || segment.data()[i] > '9') return false;
    return true;
}

/* The segment as a decimal integer, clamped to int instead of overflowing */
int indexKeyValue(Containers::StringView segment) {
    const long value = std::strtol(toString(segment).data(), nullptr, 10);
    return value < INT_MIN ? INT_MIN : value > INT_MAX ? INT_MAX : int(value);
}

bool isEmptyContainer(const rapidjson::Value& value) {
    return (value.IsObject() && value.MemberCount() == 0) ||
           (value.IsArray() && value.Empty());
}

Containers::Pointer<rapidjson::Value> copyValue(const rapidjson::Value& value, JsonAllocator& allocator) {
    return Containers::Pointer<rapidjson::Value>{new rapidjson::Value{value, allocator}};
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
    _lastChange = -1;
    _handlers.clear();
}

JsonAllocator& ChangeManager::allocator() {
    CORRADE_ASSERT(_project, "ChangeManager::allocator(): no project file", *static_cast<JsonAllocator*>(nullptr));
    return _project->allocator();
}

void ChangeManager::pushChange(Containers::Array<char>&& path, const rapidjson::Value* value, bool merge) {
    CORRADE_ASSERT(_project, "ChangeManager::pushChange(): no project file", );

    /* Parsed before anything changes. Exchanging the array below moves no
       characters, so the text stays where the pointer was parsed from. */
    const Containers::StringView text = pathText(path);
    const JsonPointer pointer{text};
    CORRADE_ASSERT(pointer.isValid(), "ChangeManager::pushChange(): invalid JSON pointer" << text, );

    /* Copied first, in case the value lives in a record the push destroys */
    Containers::Pointer<rapidjson::Value> newValue;
    if(value) newValue = copyValue(*value, allocator());

    bool merged = false;
    if(merge && _lastChange > 0 && _changes[_lastChange].group == _group) {
        for(std::int32_t i = _lastChange; i >= 1 && _changes[i].group == _group; --i) {
            if(pathText(_changes[i].path) != text) continue;
            if(i != _lastChange) {
                Change other = std::move(_changes[i]);
                _changes[i] = std::move(_changes[_lastChange]);
                _changes[_lastChange] = std::move(other);
            }
            merged = true;
            break;
        }
    }

    if(!merged) {
        ++_lastChange;
        /* Geometric growth keeps a push amortised O(1); arrayResize alone
           would reallocate to the exact size every time */
        const std::size_t size = _lastChange + 1;
        const std::size_t capacity = arrayCapacity(_changes);
        if(size > capacity) arrayReserve(_changes, std::max(size, 2*capacity));
        arrayResize(_changes, size);
        if(_savedChange == _lastChange) _savedChange = -1;
        using std::swap;
        swap(path, _changes[_lastChange].path);
    }

    Change& target = lastChange();
    if(!merged) {
        const rapidjson::Value* const found = pointer.get(*_project->document);
        target.oldValue = nullptr;
        if(found) target.oldValue = copyValue(*found, allocator());
    }
    target.newValue = std::move(newValue);
    target.group = _group;
    applyChange(target);
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
    const JsonPointer pointer{text};
    CORRADE_ASSERT(pointer.isValid(), "ChangeManager::applyChange(): invalid JSON pointer" << text, );
    const std::string parentPath = parentPathOf(text);
    const Containers::StringView lastSegment = lastSegmentOf(text);

    if(!change.newValue) {
        /* "-" and negative index keys name no element of an array, so a
           plain erase would leave the undo of a creation through them
           without effect. A removal that carries the value it takes back
           takes the element such a creation made: the last one for "-",
           the first one for a negative index. Without an old value there is
           nothing to take back and nothing is erased. */
        rapidjson::Value* const parent = JsonPointer{view(parentPath)}.get(document);
        const bool append = lastSegment.size() == 1 && lastSegment.data()[0] == '-';
        const bool negative = !append && isIndexKey(lastSegment) && lastSegment.data()[0] == '-';
        if(change.oldValue && (append || negative) && parent && parent->IsArray()) {
            if(!parent->Empty()) parent->Erase(append ? parent->End() - 1 : parent->Begin());
        } else pointer.erase(document);

        std::string path = parentPath;
        const rapidjson::Value* value = path.empty() ? nullptr : JsonPointer{view(path)}.get(document);
        while(!path.empty() && value && isEmptyContainer(*value)) {
            std::string grandparentPath = parentPathOf(view(path));
            /* A top-level member is never erased by the cleanup */
            if(grandparentPath.empty()) break;
            JsonPointer{view(path)}.erase(document);
            path = std::move(grandparentPath);
            value = JsonPointer{view(path)}.get(document);
        }

    } else if(change.oldValue) {
        pointer.create(document, allocator()).CopyFrom(*change.newValue, allocator());

    } else {
        const bool indexKey = isIndexKey(lastSegment);
        bool insert = false;
        if(const rapidjson::Value* const parent = JsonPointer{view(parentPath)}.get(document)) {
            insert = !parent->IsObject() && indexKey;
        } else {
            const rapidjson::Value* const value = _project->getValue(toString(text).data(), true);
            if(value && !value->IsObject() && !value->IsArray()) {
                JsonPointer{view(parentPath)}.create(document, allocator()).SetObject();
            } else insert = indexKey;
        }

        bool plain = !insert;
        if(insert) {
            int index = indexKeyValue(lastSegment);
            bool existed;
            rapidjson::Value& value = JsonPointer{view(parentPath)}.create(document, allocator(), &existed);
            if(!existed) value.SetArray();
            CORRADE_INTERNAL_ASSERT(value.IsArray());
            if(index >= 0 && rapidjson::SizeType(index) >= value.Size()) plain = true;
            else {
                /* Position 0 for a negative index keeps every exchange
                   inside the array */
                if(index < 0) index = 0;
                value.PushBack(rapidjson::Value{*change.newValue, allocator()}, allocator());
                for(rapidjson::SizeType i = value.Size() - 1; i != rapidjson::SizeType(index); --i)
                    value[i].Swap(value[i - 1]);
            }
        }
        if(plain)
            pointer.create(document, allocator()).CopyFrom(*change.newValue, allocator());
    }

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
    applyChange(reverse(change));
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
    applyChange(lastChange());
    const std::int32_t group = std::max(lastChange().group, 0);
    while(_lastChange + 1 < int(_changes.size()) && _changes[_lastChange + 1].group == group) {
        ++_lastChange;
        applyChange(lastChange());
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

    /* The stored path with its zero byte, so that the last component ends
       with it, as the handlers receive it */
    const std::vector<std::string> components = Utility::String::split(std::string(change.path.data(), change.path.size()), '/');

    /* Made on the first match only, then shared by every handler */
    Containers::Array<Containers::String> path;
    for(const std::string& component: components) {
        Containers::Pointer<ChangeHandler>* const handler = _handlers.findn(component.data(), std::strlen(component.data()) + 1);
        if(!handler) continue;
        if(path.isEmpty()) {
            path = Containers::Array<Containers::String>{ValueInit, components.size()};
            for(std::size_t i = 0; i != components.size(); ++i)
                path[i] = Containers::String{components[i].data(), components[i].size()};
        }
        (*handler)->handle(change, Containers::ArrayView<const Containers::String>{path.data(), path.size()});
    }
}

}
