#include "QuelmarEngine/host/StringArray.h"

#include <cstring>
#include <utility>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Utility/Assert.h>
#include <Corrade/Utility/Debug.h>

namespace QuelmarEngine {

namespace {
    /* Views with no storage of their own point here */
    const char Empty[] = "";
}

StringArrayView::StringArrayView(): _data{Empty} {
    Containers::arrayAppend(_starts, std::size_t{0});
}

StringArrayView::StringArrayView(StringArrayView&& other) noexcept: _data{other._data}, _starts{std::move(other._starts)} {
    other._data = Empty;
    Containers::arrayAppend(other._starts, std::size_t{0});
}

StringArrayView& StringArrayView::operator=(StringArrayView&& other) noexcept {
    std::swap(_data, other._data);
    std::swap(_starts, other._starts);
    return *this;
}

StringArrayView::~StringArrayView() = default;

const char* StringArrayView::get(const std::size_t i) const {
    if(i >= size()) {
        Utility::Error{} << "StringArrayView::get(): invalid index" << i << "for size" << size();
        std::abort();
    }
    return _data + _starts[i];
}

StringArray::StringArray(const std::size_t capacity) {
    Containers::arrayReserve(_starts, capacity + 1);
    Containers::arrayReserve(_storage, capacity*16);
}

StringArray::StringArray(StringArray&& other) noexcept: StringArrayView{std::move(other)}, _storage{std::move(other._storage)} {}

StringArray& StringArray::operator=(StringArray&& other) noexcept {
    StringArrayView::operator=(std::move(other));
    std::swap(_storage, other._storage);
    return *this;
}

StringArray::~StringArray() = default;

void StringArray::add(const char* const string, const int length) {
    const std::size_t size = length < 0 ? std::strlen(string) : std::size_t(length);
    const std::size_t start = _starts[_starts.size() - 1];
    const std::size_t end = start + size + 1;
    /* The string may be one of ours, which growing would move */
    const bool own = string >= _storage.data() && string < _storage.data() + _storage.size();
    const std::size_t offset = own ? std::size_t(string - _storage.data()) : 0;
    /* Resizing alone would reallocate to the exact size on every add */
    const std::size_t capacity = Containers::arrayCapacity(_storage);
    if(end > capacity)
        Containers::arrayReserve(_storage, end > 2*capacity ? end : 2*capacity);
    Containers::arrayResize(_storage, end);
    std::memmove(_storage.data() + start, own ? _storage.data() + offset : string, size);
    _storage[start + size] = '\0';
    Containers::arrayAppend(_starts, start + size + 1);
    _data = _storage.data();
}

}
