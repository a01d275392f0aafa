// Move-only owning pointer.
#ifndef Corrade_Containers_Pointer_h
#define Corrade_Containers_Pointer_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Utility/Assert.h"

namespace Corrade { namespace Containers {

namespace Implementation {
    /* Braces for aggregates, so plain structs can be made from members */
    template<class U, class... Args> U* pointerConstruct(Args&&... args) {
        if constexpr(std::is_aggregate<U>::value) return new U{std::forward<Args>(args)...};
        else return new U(std::forward<Args>(args)...);
    }
}

/**
 * @brief Owning pointer
 *
 * Deletes the object on destruction. @ref operator->() and @ref operator*()
 * expect the pointer not to be null.
 */
template<class T> class Pointer {
    public:
        typedef T Type;

        /** @brief Null pointer */
        /*implicit*/ Pointer(std::nullptr_t = nullptr) noexcept: _pointer{} {}

        /** @brief Take over @p pointer */
        explicit Pointer(T* pointer) noexcept: _pointer{pointer} {}

        /** @brief Take over a pointer to a derived type */
        template<class U, class = typename std::enable_if<std::is_base_of<T, U>::value>::type> /*implicit*/ Pointer(Pointer<U>&& other) noexcept: _pointer{other.release()} {}

        Pointer(const Pointer&) = delete;
        Pointer(Pointer&& other) noexcept: _pointer{other._pointer} { other._pointer = nullptr; }

        ~Pointer() { delete _pointer; }

        Pointer& operator=(const Pointer&) = delete;
        Pointer& operator=(Pointer&& other) noexcept {
            std::swap(_pointer, other._pointer);
            return *this;
        }

        bool operator==(std::nullptr_t) const { return !_pointer; }
        bool operator!=(std::nullptr_t) const { return _pointer; }
        friend bool operator==(std::nullptr_t, const Pointer& p) { return !p._pointer; }
        friend bool operator!=(std::nullptr_t, const Pointer& p) { return p._pointer; }

        explicit operator bool() const { return _pointer; }

        T* get() { return _pointer; }
        const T* get() const { return _pointer; }

        T* operator->() {
            CORRADE_ASSERT(_pointer, "Containers::Pointer: the pointer is null", nullptr);
            return _pointer;
        }
        const T* operator->() const {
            CORRADE_ASSERT(_pointer, "Containers::Pointer: the pointer is null", nullptr);
            return _pointer;
        }
        T& operator*() {
            CORRADE_ASSERT(_pointer, "Containers::Pointer: the pointer is null", *_pointer);
            return *_pointer;
        }
        const T& operator*() const {
            CORRADE_ASSERT(_pointer, "Containers::Pointer: the pointer is null", *_pointer);
            return *_pointer;
        }

        /** @brief Give up ownership; the pointer becomes null */
        T* release() {
            T* const pointer = _pointer;
            _pointer = nullptr;
            return pointer;
        }

        /** @brief Replace the object with a new @p U made from @p args */
        template<class U = T, class... Args> U& emplace(Args&&... args) {
            static_assert(std::is_base_of<T, U>::value, "U must be T or derived from it");
            U* const pointer = Implementation::pointerConstruct<U>(std::forward<Args>(args)...);
            delete _pointer;
            _pointer = pointer;
            return *pointer;
        }

    private:
        T* _pointer;
};

/** @brief Make a @ref Pointer to a new @p T made from @p args */
template<class T, class... Args> Pointer<T> pointer(Args&&... args) {
    return Pointer<T>{Implementation::pointerConstruct<T>(std::forward<Args>(args)...)};
}

}}

#endif
