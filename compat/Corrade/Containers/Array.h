// Owning array with a custom deleter.
#ifndef Corrade_Containers_Array_h
#define Corrade_Containers_Array_h

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#include "Corrade/Tags.h"
#include "Corrade/Containers/ArrayView.h"

namespace Corrade { namespace Containers {

namespace Implementation {
    /* Deleter of NoInit arrays: the storage is raw bytes, the caller
       constructed every item */
    template<class T> void noInitDeleter(T* data, std::size_t size) {
        for(std::size_t i = 0; i != size; ++i) data[i].~T();
        delete[] reinterpret_cast<char*>(data);
    }
}

/**
 * @brief Array
 *
 * Move-only owner of @p size items. On destruction calls the deleter, or
 * @cpp delete[] @ce if the deleter is null. A size alone doesn't make an
 * array: say how the items start, with @ref ValueInit or @ref NoInit.
 */
template<class T, class D> class Array {
    public:
        typedef T Type;
        typedef D Deleter;

        /** @brief Empty array */
        /*implicit*/ Array(std::nullptr_t = nullptr) noexcept: _data{}, _size{}, _deleter{} {}

        /** @brief Value-initialised array; no allocation if @p size is zero */
        explicit Array(ValueInitT, std::size_t size): _data{size ? new T[size]() : nullptr}, _size{size}, _deleter{} {}

        /**
         * @brief Array with uninitialised items
         *
         * The caller has to construct every item with placement new; the
         * deleter destroys them and frees the storage.
         */
        explicit Array(NoInitT, std::size_t size): _data{size ? reinterpret_cast<T*>(new char[size*sizeof(T)]) : nullptr}, _size{size}, _deleter{size ? Implementation::noInitDeleter<T> : D{}} {
            static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned types are not supported");
        }

        /** @brief Take over @p data; a null @p deleter means @cpp delete[] @ce */
        /*implicit*/ Array(T* data, std::size_t size, D deleter = D{}) noexcept: _data{data}, _size{size}, _deleter{deleter} {}

        Array(const Array&) = delete;
        Array(Array&& other) noexcept: _data{other._data}, _size{other._size}, _deleter{other._deleter} {
            other._data = nullptr;
            other._size = 0;
            other._deleter = D{};
        }

        ~Array() {
            if(_deleter) _deleter(_data, _size);
            else delete[] _data;
        }

        Array& operator=(const Array&) = delete;
        Array& operator=(Array&& other) noexcept {
            std::swap(_data, other._data);
            std::swap(_size, other._size);
            std::swap(_deleter, other._deleter);
            return *this;
        }

        /*implicit*/ operator ArrayView<T>() noexcept { return {_data, _size}; }
        /*implicit*/ operator ArrayView<const T>() const noexcept { return {_data, _size}; }

        T* data() { return _data; }
        const T* data() const { return _data; }
        std::size_t size() const { return _size; }
        bool isEmpty() const { return !_size; }
        D deleter() const { return _deleter; }

        /** @brief Item; expects that @p i is less than @ref size() */
        T& operator[](std::size_t i) { return _data[i]; }
        const T& operator[](std::size_t i) const { return _data[i]; }

        T* begin() { return _data; }
        const T* begin() const { return _data; }
        T* end() { return _data + _size; }
        const T* end() const { return _data + _size; }

        /**
         * @brief Release the data
         *
         * The deleter is not called; the array becomes empty. The caller is
         * responsible for the returned memory.
         */
        T* release() {
            T* const data = _data;
            _data = nullptr;
            _size = 0;
            _deleter = D{};
            return data;
        }

    private:
        T* _data;
        std::size_t _size;
        D _deleter;
};

}}

#endif
