#include "Corrade/Containers/String.h"

#include <cstring>
#include <utility>

namespace Corrade { namespace Containers {

namespace {
    char* copyOf(const char* const data, const std::size_t size) {
        if(!size) return nullptr;
        char* const out = new char[size + 1];
        std::memcpy(out, data, size);
        out[size] = '\0';
        return out;
    }

    /* Storage of all empty strings; only its NUL byte is ever touched */
    char emptyString[1]{};
}

String::String(const char* const data): String{data, data ? std::strlen(data) : 0} {}

String::String(const char* const data, const std::size_t size): _data{copyOf(data, size)}, _size{size} {}

String::String(const StringView view): String{view.data(), view.size()} {}

String::String(const String& other): String{other.data(), other._size} {}

String::String(String&& other) noexcept: _data{other._data}, _size{other._size} {
    other._data = nullptr;
    other._size = 0;
}

String::~String() { delete[] _data; }

String& String::operator=(const String& other) {
    if(this != &other) {
        char* const data = copyOf(other.data(), other._size);
        delete[] _data;
        _data = data;
        _size = other._size;
    }
    return *this;
}

String& String::operator=(String&& other) noexcept {
    std::swap(_data, other._data);
    std::swap(_size, other._size);
    return *this;
}

String::operator StringView() const noexcept {
    return {data(), _size, StringViewFlag::NullTerminated};
}

char* String::data() { return _data ? _data : emptyString; }

const char* String::data() const { return _data ? _data : emptyString; }

}}
