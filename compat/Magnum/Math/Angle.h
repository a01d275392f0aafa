/* Magnum/Math/Angle.h: strongly typed angles in degrees and radians */
#ifndef Magnum_Math_Angle_h
#define Magnum_Math_Angle_h

#include "Magnum/Math/Math.h"

namespace Magnum { namespace Math {

/** @brief Angle in degrees; converts implicitly to and from @ref Rad */
template<class T> class Deg {
    public:
        /** @brief Zero angle */
        constexpr Deg() noexcept: _value{} {}
        /** @brief Angle of @p value degrees */
        constexpr explicit Deg(T value) noexcept: _value{value} {}
        /** @brief Conversion from radians */
        constexpr /*implicit*/ Deg(Rad<T> value) noexcept;

        /** @brief The value in degrees */
        constexpr explicit operator T() const { return _value; }

    private:
        T _value;
};

/** @brief Angle in radians; converts implicitly to and from @ref Deg */
template<class T> class Rad {
    public:
        /** @brief Zero angle */
        constexpr Rad() noexcept: _value{} {}
        /** @brief Angle of @p value radians */
        constexpr explicit Rad(T value) noexcept: _value{value} {}
        /** @brief Conversion from degrees */
        constexpr /*implicit*/ Rad(Deg<T> value) noexcept:
            _value{T(value)*T(3.141592653589793238462643383279502884L)/T(180)} {}

        /** @brief The value in radians */
        constexpr explicit operator T() const { return _value; }

    private:
        T _value;
};

template<class T> constexpr Deg<T>::Deg(Rad<T> value) noexcept:
    _value{T(value)*T(180)/T(3.141592653589793238462643383279502884L)} {}

}}

#endif
