/* Magnum/Math/Quaternion.h: quaternion for 3D rotations */
#ifndef Magnum_Math_Quaternion_h
#define Magnum_Math_Quaternion_h

#include <cmath>
#include <cstdlib>
#include "Corrade/Utility/Debug.h"

#include "Magnum/Math/Angle.h"
#include "Magnum/Math/Matrix.h"

namespace Magnum { namespace Math {

template<class T> T dot(const Quaternion<T>& a, const Quaternion<T>& b);

/**
@brief Quaternion @f$ [\boldsymbol v, s] @f$ with vector and scalar part

Identity by default. Comparison is fuzzy for floating-point types.
*/
template<class T> class Quaternion {
    public:
        typedef T Type;

        /**
         * @brief Rotation by @p angle about @p normalizedAxis
         *
         * Expects that the axis is normalized.
         */
        static Quaternion<T> rotation(Rad<T> angle, const Vector3<T>& normalizedAxis) {
            const T half = T(angle)/T(2);
            return {normalizedAxis*T(std::sin(half)), T(std::cos(half))};
        }

        /**
         * @brief Unit quaternion from a rotation matrix
         *
         * Expects a determinant within three epsilons of 1, as the real
         * library does in its debug builds; anything else prints the matrix
         * and aborts, in every build type. Works for
         * every rotation angle including 180 degrees. @p q and @p -q give
         * the same rotation; callers must not rely on the sign.
         */
        static Quaternion<T> fromMatrix(const Matrix3x3<T>& matrix);

        /** @brief Identity rotation, @f$ [\boldsymbol 0, 1] @f$ */
        constexpr Quaternion() noexcept: _vector{}, _scalar{T(1)} {}
        /** @brief Construct from a vector and a scalar part */
        constexpr Quaternion(const Vector3<T>& vector, T scalar) noexcept: _vector{vector}, _scalar{scalar} {}
        /** @brief Pure quaternion @f$ [\boldsymbol v, 0] @f$ */
        constexpr explicit Quaternion(const Vector3<T>& vector) noexcept: _vector{vector}, _scalar{T(0)} {}

        /** @brief Fuzzy equality */
        bool operator==(const Quaternion<T>& other) const {
            return _vector == other._vector && TypeTraits<T>::equals(_scalar, other._scalar);
        }
        bool operator!=(const Quaternion<T>& other) const { return !operator==(other); } /**< @brief Non-equality */

        Vector3<T>& vector() { return _vector; }                   /**< @brief Vector part */
        constexpr const Vector3<T> vector() const { return _vector; } /**< @overload */
        T& scalar() { return _scalar; }                            /**< @brief Scalar part */
        constexpr T scalar() const { return _scalar; }             /**< @overload */

        /** @brief Dot product with itself, the squared length */
        T dot() const { return Math::dot(*this, *this); }
        /** @brief Length */
        T length() const { return T(std::sqrt(dot())); }
        /** @brief Quaternion of unit length */
        Quaternion<T> normalized() const { return *this/length(); }
        /** @brief Conjugate, @f$ [-\boldsymbol v, s] @f$; the inverse of a unit quaternion */
        Quaternion<T> conjugated() const { return {-_vector, _scalar}; }

        /** @brief Negated quaternion */
        Quaternion<T> operator-() const { return {-_vector, -_scalar}; }
        /** @brief Sum */
        Quaternion<T> operator+(const Quaternion<T>& other) const { return {_vector + other._vector, _scalar + other._scalar}; }
        /** @brief Difference */
        Quaternion<T> operator-(const Quaternion<T>& other) const { return {_vector - other._vector, _scalar - other._scalar}; }
        /** @brief Quaternion times scalar */
        Quaternion<T> operator*(T scalar) const { return {_vector*scalar, _scalar*scalar}; }
        /** @brief Quaternion divided by scalar */
        Quaternion<T> operator/(T scalar) const { return {_vector/scalar, _scalar/scalar}; }

        /**
         * @brief Quaternion product
         *
         * As rotations, @cpp a*b @ce applies @p b first, then @p a.
         */
        Quaternion<T> operator*(const Quaternion<T>& other) const {
            return {other._vector*_scalar + _vector*other._scalar + cross(_vector, other._vector),
                    _scalar*other._scalar - Math::dot(_vector, other._vector)};
        }

        /**
         * @brief Rotation matrix
         *
         * Expects that the quaternion is normalized.
         */
        Matrix3x3<T> toMatrix() const {
            const T x = _vector.x(), y = _vector.y(), z = _vector.z(), s = _scalar;
            return {Vector3<T>{T(1) - 2*y*y - 2*z*z, 2*x*y + 2*z*s, 2*x*z - 2*y*s},
                    Vector3<T>{2*x*y - 2*z*s, T(1) - 2*x*x - 2*z*z, 2*y*z + 2*x*s},
                    Vector3<T>{2*x*z + 2*y*s, 2*y*z - 2*x*s, T(1) - 2*x*x - 2*y*y}};
        }

    private:
        Vector3<T> _vector;
        T _scalar;
};

/** @brief Dot product of two quaternions */
template<class T> inline T dot(const Quaternion<T>& a, const Quaternion<T>& b) {
    return Math::dot(a.vector(), b.vector()) + a.scalar()*b.scalar();
}

/* With a positive trace the scalar part is large and computed first;
   otherwise the largest diagonal element picks the largest vector component,
   which keeps the divisions well away from zero for 180 degree rotations */
template<class T> Quaternion<T> Quaternion<T>::fromMatrix(const Matrix3x3<T>& m) {
    /* A determinant of 1 leaves no shear or mirroring; columns of length
       1 +- epsilon give a determinant of 1 +- 3 epsilon */
    if(!(std::abs(m.determinant() - T(1)) < T(3)*TypeTraits<T>::epsilon())) {
        {
            Corrade::Utility::Error error{Corrade::Utility::Debug::Flag::NoSpace};
            error << "Math::Quaternion::fromMatrix(): the matrix is not a rotation:\nMatrix(";
            for(std::size_t row = 0; row != 3; ++row) {
                if(row) error << ",\n       ";
                for(std::size_t col = 0; col != 3; ++col) error << (col ? ", " : "") << m[col][row];
            }
            error << ")";
        }
        std::abort();
    }

    const Vector<3, T> diagonal = m.diagonal();
    const T trace = diagonal[0] + diagonal[1] + diagonal[2];

    if(trace > T(0)) {
        const T s = T(std::sqrt(trace + T(1)));
        const T t = T(0.5)/s;
        return {Vector3<T>{m[1][2] - m[2][1],
                           m[2][0] - m[0][2],
                           m[0][1] - m[1][0]}*t, s*T(0.5)};
    }

    std::size_t i = 0;
    if(diagonal[1] > diagonal[0]) i = 1;
    if(diagonal[2] > diagonal[i]) i = 2;
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (j + 1) % 3;

    const T s = T(std::sqrt(diagonal[i] - diagonal[j] - diagonal[k] + T(1)));
    const T t = s == T(0) ? T(0) : T(0.5)/s;

    Vector3<T> vector;
    vector[i] = s*T(0.5);
    vector[j] = (m[i][j] + m[j][i])*t;
    vector[k] = (m[i][k] + m[k][i])*t;
    return {vector, (m[j][k] - m[k][j])*t};
}

}}

#endif
