// Non-owning view on a contiguous array.
#ifndef Corrade_Containers_ArrayView_h
#define Corrade_Containers_ArrayView_h

#include <cstddef>
#include <type_traits>

#include "Corrade/Containers/Containers.h"

namespace Corrade { namespace Containers {

/**
 * @brief Array view
 *
 * Pointer and size of memory owned by someone else. An @ref Array converts
 * to it implicitly, and so does a view on mutable data to a view on const
 * data.
 */
template<class T> class ArrayView {
    public:
        typedef T Type;

        /** @brief Empty view */
        constexpr /*implicit*/ ArrayView(std::nullptr_t = nullptr) noexcept: _data{}, _size{} {}

        /** @brief View on @p size items starting at @p data */
        constexpr /*implicit*/ ArrayView(T* data, std::size_t size) noexcept: _data{data}, _size{size} {}

        /** @brief View on a C array */
        template<std::size_t size> constexpr /*implicit*/ ArrayView(T(&data)[size]) noexcept: _data{data}, _size{size} {}

        /** @brief View on @cpp const T @ce from a view on @cpp T @ce */
        template<class U, class = typename std::enable_if<std::is_same<const U, T>::value>::type> constexpr /*implicit*/ ArrayView(ArrayView<U> other) noexcept: _data{other.data()}, _size{other.size()} {}

        constexpr T* data() const { return _data; }
        constexpr std::size_t size() const { return _size; }
        constexpr bool isEmpty() const { return !_size; }

        /** @brief Item; expects that @p i is less than @ref size() */
        constexpr T& operator[](std::size_t i) const { return _data[i]; }

        constexpr T* begin() const { return _data; }
        constexpr T* end() const { return _data + _size; }

    private:
        T* _data;
        std::size_t _size;
};

}}

#endif
