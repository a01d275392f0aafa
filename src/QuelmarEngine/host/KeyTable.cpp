#include "QuelmarEngine/host/KeyTable.h"

#include <cstring>
#include <utility>
#include <Corrade/Containers/GrowableArray.h>

namespace QuelmarEngine {

namespace {

/* Grows geometrically; arrayResize alone would reallocate to the exact size */
template<class T> void resizeGrowing(Containers::Array<T>& array, const std::size_t size) {
    const std::size_t capacity = Containers::arrayCapacity(array);
    if(size > capacity) Containers::arrayReserve(array, size > 2*capacity ? size : 2*capacity);
    Containers::arrayResize(array, size);
}

}

/* Offset 0 holds the empty string that every new entry points to */
KeyTable::KeyTable() {
    Containers::arrayAppend(_storage, '\0');
    _data = _storage.data();
}

KeyTable::KeyTable(const StringArrayView& keys): KeyTable{} {
    resize(keys.size());
    for(std::size_t i = 0; i != keys.size(); ++i) set(i, keys.get(i));
}

KeyTable::KeyTable(KeyTable&& other) noexcept: StringArrayView{std::move(other)}, _storage{std::move(other._storage)}, _unused{other._unused} {
    other._unused = 0;
}

KeyTable& KeyTable::operator=(KeyTable&& other) noexcept {
    StringArrayView::operator=(std::move(other));
    std::swap(_storage, other._storage);
    std::swap(_unused, other._unused);
    return *this;
}

KeyTable::~KeyTable() = default;

void KeyTable::resize(const std::size_t size) {
    const std::size_t before = this->size();
    for(std::size_t i = size; i < before; ++i) set(i, {});
    /* One start more than entries, as the view expects */
    resizeGrowing(_starts, size + 1);
}

void KeyTable::set(const std::size_t i, const Containers::StringView key) {
    const std::size_t old = std::strlen(_data + _starts[i]);
    if(old) _unused += old + 1;
    if(key.isEmpty()) {
        _starts[i] = 0;
    } else {
        const std::size_t start = _storage.size();
        resizeGrowing(_storage, start + key.size() + 1);
        std::memcpy(_storage.data() + start, key.data(), key.size());
        _storage[start + key.size()] = '\0';
        _data = _storage.data();
        _starts[i] = start;
    }
    if(_unused > 4096 && _unused > _storage.size()/2) pack();
}

void KeyTable::pack() {
    Containers::Array<char> packed;
    Containers::arrayReserve(packed, _storage.size() - _unused);
    Containers::arrayAppend(packed, '\0');
    for(std::size_t i = 0; i + 1 < _starts.size(); ++i) {
        const char* const key = _storage.data() + _starts[i];
        const std::size_t size = std::strlen(key);
        if(!size) {
            _starts[i] = 0;
            continue;
        }
        const std::size_t start = packed.size();
        resizeGrowing(packed, start + size + 1);
        std::memcpy(packed.data() + start, key, size + 1);
        _starts[i] = start;
    }
    _storage = std::move(packed);
    _data = _storage.data();
    _unused = 0;
}

}
