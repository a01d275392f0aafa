// Owning, NUL-terminated string.
#ifndef Corrade_Containers_String_h
#define Corrade_Containers_String_h

#include <cstddef>

#include "Corrade/Containers/StringView.h"

namespace Corrade { namespace Containers {

/**
 * @brief String
 *
 * Owns a copy of its contents and always keeps a NUL byte after them.
 * Copyable and movable; a moved-from string is empty. Compares with
 * @ref String and @ref StringView through the @ref StringView operators.
 */
class String {
    public:
        /** @brief Empty string */
        /*implicit*/ String() noexcept: _data{}, _size{} {}

        /** @brief Copy of a NUL-terminated string; null gives an empty one */
        /*implicit*/ String(const char* data);

        /** @brief Copy of @p size bytes at @p data */
        /*implicit*/ String(const char* data, std::size_t size);

        /** @brief Copy of a view */
        /*implicit*/ String(StringView view);

        String(const String& other);
        String(String&& other) noexcept;
        ~String();
        String& operator=(const String& other);
        String& operator=(String&& other) noexcept;

        /** @brief View on the contents, marked @ref StringViewFlag::NullTerminated */
        /*implicit*/ operator StringView() const noexcept;

        /** @brief Contents, followed by a NUL byte */
        char* data();
        const char* data() const;

        std::size_t size() const { return _size; }
        bool isEmpty() const { return !_size; }

    private:
        char* _data; /* null when empty */
        std::size_t _size;
};

}}

#endif
