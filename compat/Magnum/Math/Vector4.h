/* Magnum/Math/Vector4.h: four-component vector, the column type of Matrix4 */
#ifndef Magnum_Math_Vector4_h
#define Magnum_Math_Vector4_h

#include "Magnum/Math/Vector3.h"

namespace Magnum { namespace Math {

/** @brief Four-component vector, zero by default */
template<class T> class Vector4: public Vector<4, T> {
    public:
        /** @brief Zero vector */
        constexpr Vector4() noexcept: Vector<4, T>{} {}
        /** @brief Construct with one value for all components */
        explicit Vector4(T value) noexcept: Vector<4, T>(value) {}
        /** @brief Construct from components */
        constexpr Vector4(T x, T y, T z, T w) noexcept: Vector<4, T>(x, y, z, w) {}
        /** @brief Construct from a three-component vector and the W component */
        constexpr Vector4(const Vector3<T>& xyz, T w) noexcept: Vector<4, T>(xyz[0], xyz[1], xyz[2], w) {}
        /** @brief Conversion from the base vector */
        constexpr Vector4(const Vector<4, T>& other) noexcept: Vector<4, T>(other) {}

        T& x() { return (*this)[0]; }               /**< @brief X component */
        constexpr T x() const { return (*this)[0]; } /**< @overload */
        T& y() { return (*this)[1]; }               /**< @brief Y component */
        constexpr T y() const { return (*this)[1]; } /**< @overload */
        T& z() { return (*this)[2]; }               /**< @brief Z component */
        constexpr T z() const { return (*this)[2]; } /**< @overload */
        T& w() { return (*this)[3]; }               /**< @brief W component */
        constexpr T w() const { return (*this)[3]; } /**< @overload */

        /** @brief The first three components, as a copy */
        constexpr Vector3<T> xyz() const { return {x(), y(), z()}; }

        MAGNUM_VECTOR_SUBCLASS_IMPLEMENTATION(4, Vector4)
};

}}

#endif
