// Non-owning view on a string.
#ifndef Corrade_Containers_StringView_h
#define Corrade_Containers_StringView_h

#include <cstddef>
#include <type_traits>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"

namespace Corrade { namespace Containers {

/**
 * @brief String view flag
 *
 * Kept in the two top bits of the view's size member.
 */
enum class StringViewFlag: std::size_t {
    /** The data outlive the view (a literal, for example) */
    Global = std::size_t{1} << (sizeof(std::size_t)*8 - 1),
    /** A NUL byte follows the data */
    NullTerminated = std::size_t{1} << (sizeof(std::size_t)*8 - 2)
};

CORRADE_ENUMSET_OPERATORS(StringViewFlags)

namespace Implementation {
    enum: std::size_t {
        StringViewSizeMask = std::size_t(StringViewFlag::NullTerminated)|std::size_t(StringViewFlag::Global)
    };

    std::size_t stringLength(const char* data);
}

/**
 * @brief String view
 *
 * Expects the size to be less than 2^62 on 64-bit systems, as the top bits
 * store the flags. @ref StringView and @ref MutableStringView are the
 * typical instances.
 */
template<class T> class BasicStringView {
    public:
        typedef T Type;

        /** @brief Empty view; marked @ref StringViewFlag::Global */
        constexpr /*implicit*/ BasicStringView(std::nullptr_t = nullptr) noexcept: _data{}, _sizePlusFlags{std::size_t(StringViewFlag::Global)} {}

        /** @brief View on @p size bytes at @p data */
        constexpr /*implicit*/ BasicStringView(T* data, std::size_t size, StringViewFlags flags = {}) noexcept: _data{data}, _sizePlusFlags{size|std::size_t(flags)} {}

        /**
         * @brief View on a NUL-terminated string
         *
         * The size is found with @cpp std::strlen() @ce and the view is
         * marked @ref StringViewFlag::NullTerminated. A null @p data gives an
         * empty @ref StringViewFlag::Global view.
         */
        /*implicit*/ BasicStringView(T* data, StringViewFlags extraFlags = {}) noexcept: _data{data}, _sizePlusFlags{(data ? Implementation::stringLength(data)|std::size_t(StringViewFlag::NullTerminated) : std::size_t(StringViewFlag::Global))|std::size_t(extraFlags)} {}

        /** @brief Const view from a mutable one */
        template<class U, class = typename std::enable_if<std::is_same<const U, T>::value>::type> constexpr /*implicit*/ BasicStringView(BasicStringView<U> other) noexcept: _data{other.data()}, _sizePlusFlags{other.size()|std::size_t(other.flags())} {}

        constexpr T* data() const { return _data; }

        /** @brief Size in bytes, without the flags */
        constexpr std::size_t size() const { return _sizePlusFlags & ~std::size_t(Implementation::StringViewSizeMask); }

        constexpr bool isEmpty() const { return !size(); }

        constexpr StringViewFlags flags() const { return StringViewFlag(_sizePlusFlags & std::size_t(Implementation::StringViewSizeMask)); }

    private:
        T* _data;
        std::size_t _sizePlusFlags;
};

/** @brief Whether the views have the same length and bytes; flags are ignored */
bool operator==(StringView a, StringView b);
bool operator!=(StringView a, StringView b);

}}

#endif
