/* Magnum/Math/Vector3.h: three-component vector and the cross product */
#ifndef Magnum_Math_Vector3_h
#define Magnum_Math_Vector3_h

#include "Magnum/Math/Vector.h"

namespace Magnum { namespace Math {

/** @brief Three-component vector, zero by default */
template<class T> class Vector3: public Vector<3, T> {
    public:
        /** @brief Zero vector */
        constexpr Vector3() noexcept: Vector<3, T>{} {}
        /** @brief Construct with one value for all components */
        explicit Vector3(T value) noexcept: Vector<3, T>(value) {}
        /** @brief Construct from components */
        constexpr Vector3(T x, T y, T z) noexcept: Vector<3, T>(x, y, z) {}
        /** @brief Conversion from the base vector */
        constexpr Vector3(const Vector<3, T>& other) noexcept: Vector<3, T>(other) {}

        T& x() { return (*this)[0]; }               /**< @brief X component */
        constexpr T x() const { return (*this)[0]; } /**< @overload */
        T& y() { return (*this)[1]; }               /**< @brief Y component */
        constexpr T y() const { return (*this)[1]; } /**< @overload */
        T& z() { return (*this)[2]; }               /**< @brief Z component */
        constexpr T z() const { return (*this)[2]; } /**< @overload */

        MAGNUM_VECTOR_SUBCLASS_IMPLEMENTATION(3, Vector3)
};

/** @brief Cross product, right-handed: cross(x, y) = z */
template<class T> inline Vector3<T> cross(const Vector3<T>& a, const Vector3<T>& b) {
    return {a.y()*b.z() - a.z()*b.y(),
            a.z()*b.x() - a.x()*b.z(),
            a.x()*b.y() - a.y()*b.x()};
}

}}

#endif
