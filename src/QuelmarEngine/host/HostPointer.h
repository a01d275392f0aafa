#ifndef QuelmarEngine_host_HostPointer_h
#define QuelmarEngine_host_HostPointer_h
/* The owning pointer for the parts of the editor a host may replace or
   unset: dereferencing it when null is fatal in every build type. */

#include <cstddef>
#include <type_traits>
#include <utility>
#include <Corrade/Containers/Pointer.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

namespace Implementation {
    /* Prints "Containers::Pointer: the pointer is null" and aborts */
    [[noreturn]] void hostPointerIsNull();
}

/**
@brief Owning pointer that checks for null where it is dereferenced

A @ref Containers::Pointer whose @ref operator->() and @ref operator*() print
"Containers::Pointer: the pointer is null" and abort on a null pointer, also
in release builds, where the plain pointer doesn't check.
*/
template<class T> class HostPointer: public Containers::Pointer<T> {
    public:
        /** Null pointer */
        /*implicit*/ HostPointer(std::nullptr_t = nullptr) noexcept {}

        /** Takes over @p pointer */
        explicit HostPointer(T* pointer) noexcept: Containers::Pointer<T>{pointer} {}

        /** Takes over what @p pointer owns */
        /*implicit*/ HostPointer(Containers::Pointer<T>&& pointer) noexcept: Containers::Pointer<T>{std::move(pointer)} {}

        /** Takes over what @p pointer to a derived type owns */
        template<class U, class = typename std::enable_if<std::is_base_of<T, U>::value>::type> /*implicit*/ HostPointer(Containers::Pointer<U>&& pointer) noexcept: Containers::Pointer<T>{pointer.release()} {}

        T* operator->() { return &operator*(); }
        const T* operator->() const { return &operator*(); }

        T& operator*() {
            if(!this->get()) Implementation::hostPointerIsNull();
            return *this->get();
        }
        const T& operator*() const {
            if(!this->get()) Implementation::hostPointerIsNull();
            return *this->get();
        }
};

}

#endif
