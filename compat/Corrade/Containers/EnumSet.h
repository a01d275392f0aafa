// Set of flags from a strongly typed enum.
#ifndef Corrade_Containers_EnumSet_h
#define Corrade_Containers_EnumSet_h

#include <type_traits>

#include "Corrade/Containers/Containers.h"

namespace Corrade { namespace Containers {

/**
 * @brief Set of enum values, each a distinct bit
 *
 * Use @ref CORRADE_ENUMSET_OPERATORS() to make `Flag | Flag` give the set.
 */
template<class T> class EnumSet {
    static_assert(std::is_enum<T>::value, "EnumSet type must be an enum");

    public:
        typedef T Type;
        typedef typename std::underlying_type<T>::type UnderlyingType;

        /** @brief Empty set */
        constexpr EnumSet() noexcept: _value{} {}

        /** @brief Set of one value */
        constexpr /*implicit*/ EnumSet(T value) noexcept: _value{UnderlyingType(value)} {}

        constexpr bool operator==(EnumSet other) const { return _value == other._value; }
        constexpr bool operator!=(EnumSet other) const { return _value != other._value; }

        /** @brief Union */
        constexpr EnumSet operator|(EnumSet other) const { return EnumSet{UnderlyingType(_value | other._value), 0}; }
        EnumSet& operator|=(EnumSet other) { _value |= other._value; return *this; }

        /** @brief Intersection */
        constexpr EnumSet operator&(EnumSet other) const { return EnumSet{UnderlyingType(_value & other._value), 0}; }
        EnumSet& operator&=(EnumSet other) { _value &= other._value; return *this; }

        /** @brief Whether any value is set */
        constexpr explicit operator bool() const { return _value != 0; }

        /** @brief Raw bits */
        constexpr explicit operator UnderlyingType() const { return _value; }

    private:
        constexpr explicit EnumSet(UnderlyingType value, int) noexcept: _value{value} {}

        UnderlyingType _value;
};

}}

/** @brief Define `|` and `&` on the values of an enum set at namespace scope */
#define CORRADE_ENUMSET_OPERATORS(class)                                    \
    constexpr class operator|(class::Type a, class::Type b) {               \
        return class{a} | b;                                                \
    }                                                                       \
    constexpr class operator|(class::Type a, class b) { return b | a; }     \
    constexpr class operator&(class::Type a, class::Type b) {               \
        return class{a} & b;                                                \
    }                                                                       \
    constexpr class operator&(class::Type a, class b) { return b & a; }

/** @brief Like @ref CORRADE_ENUMSET_OPERATORS(), for a set nested in a class */
#define CORRADE_ENUMSET_FRIEND_OPERATORS(class)                             \
    friend constexpr class operator|(class::Type a, class::Type b) {        \
        return class{a} | b;                                                \
    }                                                                       \
    friend constexpr class operator|(class::Type a, class b) { return b | a; } \
    friend constexpr class operator&(class::Type a, class::Type b) {        \
        return class{a} & b;                                                \
    }                                                                       \
    friend constexpr class operator&(class::Type a, class b) { return b & a; }

#endif
