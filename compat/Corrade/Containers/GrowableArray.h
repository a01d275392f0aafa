// Reserve, resize and append on an Array with spare capacity.
#ifndef Corrade_Containers_GrowableArray_h
#define Corrade_Containers_GrowableArray_h

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Array.h"

namespace Corrade { namespace Containers {

/**
 * @brief Allocator of growable arrays
 *
 * Allocates with @cpp new[] @ce and keeps the capacity in a @cpp std::size_t @ce
 * right before the first item. An @ref Array is growable when its deleter is
 * @ref deleter().
 */
template<class T> struct ArrayNewAllocator {
    typedef T Type;

    /* Bytes before the first item: the capacity, padded to T's alignment */
    enum: std::size_t {
        AllocationOffset = alignof(T) > sizeof(std::size_t) ? alignof(T) : sizeof(std::size_t)
    };

    /** @brief Allocate room for @p capacity items, constructing none */
    static T* allocate(std::size_t capacity) {
        static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned types are not supported");
        char* const memory = new char[AllocationOffset + capacity*sizeof(T)];
        *reinterpret_cast<std::size_t*>(memory + AllocationOffset - sizeof(std::size_t)) = capacity;
        return reinterpret_cast<T*>(memory + AllocationOffset);
    }

    /** @brief Free memory from @ref allocate() without destroying items */
    static void deallocate(T* data) {
        if(data) delete[] base(data);
    }

    /**
     * @brief Capacity to grow to
     *
     * Doubles small allocations and grows larger ones by half, but never
     * below @p desired. @p array may be null.
     */
    static std::size_t grow(T* array, std::size_t desired) {
        const std::size_t bytes = (array ? capacity(array)*sizeof(T) : 0) + AllocationOffset;
        std::size_t grown;
        if(bytes < 16) grown = 16;
        else if(bytes < 64) grown = bytes*2;
        else grown = bytes + bytes/2;
        const std::size_t candidate = (grown - AllocationOffset)/sizeof(T);
        return desired > candidate ? desired : candidate;
    }

    /** @brief Capacity of an array from @ref allocate() */
    static std::size_t capacity(T* array) {
        return *reinterpret_cast<std::size_t*>(base(array) + AllocationOffset - sizeof(std::size_t));
    }

    /** @brief Start of the allocation */
    static char* base(T* array) {
        return reinterpret_cast<char*>(array) - AllocationOffset;
    }

    /** @brief Array deleter: destroys @p size items and frees */
    static void deleter(T* data, std::size_t size) {
        for(std::size_t i = 0; i != size; ++i) data[i].~T();
        deallocate(data);
    }
};

namespace Implementation {
    template<class T, class Allocator> bool arrayIsGrowable(const Array<T>& array) {
        return array.deleter() == Allocator::deleter;
    }

    /* Move the first `count` items of `array` into a fresh allocation of
       `capacity` and make the array own it with `size` items; the items in
       [count, size) are left for the caller to construct. The old deleter
       destroys the moved-from items. */
    template<class T, class Allocator> T* arrayReallocate(Array<T>& array, std::size_t count, std::size_t capacity, std::size_t size) {
        T* const newData = Allocator::allocate(capacity);
        T* const oldData = array.data();
        for(std::size_t i = 0; i != count; ++i) new(newData + i) T(std::move(oldData[i]));
        array = Array<T>{newData, size, Allocator::deleter};
        return newData;
    }

    /* Give an array that has room for `size` items a new size */
    template<class T, class Allocator> T* arraySetSize(Array<T>& array, std::size_t size) {
        T* const data = array.release();
        array = Array<T>{data, size, Allocator::deleter};
        return data;
    }

    template<class T, class Allocator, class... Args> T& arrayEmplace(Array<T>& array, Args&&... args) {
        const std::size_t size = array.size();
        if(arrayIsGrowable<T, Allocator>(array) && Allocator::capacity(array.data()) > size) {
            new(array.data() + size) T(std::forward<Args>(args)...);
            return arraySetSize<T, Allocator>(array, size + 1)[size];
        }

        /* Construct the new item before the old ones are gone, so a value
           referring into the array itself stays valid */
        const std::size_t capacity = Allocator::grow(arrayIsGrowable<T, Allocator>(array) ? array.data() : nullptr, size + 1);
        T* const newData = Allocator::allocate(capacity);
        new(newData + size) T(std::forward<Args>(args)...);
        T* const oldData = array.data();
        for(std::size_t i = 0; i != size; ++i) new(newData + i) T(std::move(oldData[i]));
        array = Array<T>{newData, size + 1, Allocator::deleter};
        return newData[size];
    }
}

/**
 * @brief Capacity of an array
 *
 * The allocated capacity for a growable array, @ref Array::size() otherwise.
 */
template<class T, class Allocator = ArrayNewAllocator<T>> std::size_t arrayCapacity(Array<T>& array) {
    return Implementation::arrayIsGrowable<T, Allocator>(array) ? Allocator::capacity(array.data()) : array.size();
}

/**
 * @brief Reserve capacity
 *
 * Never shrinks. If @p capacity is more than @ref arrayCapacity(), moves the
 * items to a growable allocation of exactly @p capacity. Returns the new
 * capacity.
 */
template<class T, class Allocator = ArrayNewAllocator<T>> std::size_t arrayReserve(Array<T>& array, std::size_t capacity) {
    const std::size_t current = arrayCapacity<T, Allocator>(array);
    if(current >= capacity) return current;
    Implementation::arrayReallocate<T, Allocator>(array, array.size(), capacity, array.size());
    return capacity;
}

/**
 * @brief Resize an array
 *
 * Value-initialises new items and destroys items past @p size. If the
 * capacity is not enough, reallocates to exactly @p size. A non-growable
 * array is moved to a growable allocation of exactly @p size, unless
 * @p size equals its current size, in which case nothing is done.
 */
template<class T, class Allocator = ArrayNewAllocator<T>> void arrayResize(Array<T>& array, std::size_t size) {
    const std::size_t oldSize = array.size();
    if(oldSize == size) return;

    T* data;
    if(!Implementation::arrayIsGrowable<T, Allocator>(array) || Allocator::capacity(array.data()) < size) {
        data = Implementation::arrayReallocate<T, Allocator>(array, oldSize < size ? oldSize : size, size, size);
    } else {
        for(std::size_t i = size; i < oldSize; ++i) array.data()[i].~T();
        data = Implementation::arraySetSize<T, Allocator>(array, size);
    }

    for(std::size_t i = oldSize; i < size; ++i) new(data + i) T();
}

/**
 * @brief Append a copy of @p value
 *
 * Grows the capacity geometrically when it is used up. Returns the new item.
 */
template<class T, class Allocator = ArrayNewAllocator<T>> T& arrayAppend(Array<T>& array, const typename std::common_type<T>::type& value) {
    return Implementation::arrayEmplace<T, Allocator>(array, value);
}

/** @overload */
template<class T, class Allocator = ArrayNewAllocator<T>> T& arrayAppend(Array<T>& array, typename std::common_type<T>::type&& value) {
    return Implementation::arrayEmplace<T, Allocator>(array, std::move(value));
}

}}

#endif
