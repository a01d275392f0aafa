/* Magnum/Math/DualQuaternion.h: dual quaternion for rigid 3D transformations */
#ifndef Magnum_Math_DualQuaternion_h
#define Magnum_Math_DualQuaternion_h

#include "Magnum/Math/Matrix4.h"
#include "Magnum/Math/Quaternion.h"

namespace Magnum { namespace Math {

/**
@brief Dual quaternion @f$ \hat q = q_0 + \epsilon q_\epsilon @f$

The real part holds the rotation, the dual part the translation combined with
the rotation. Identity by default. Comparison is fuzzy for floating-point
types.
*/
template<class T> class DualQuaternion {
    public:
        typedef T Type;

        /** @brief Rotation by @p angle about @p normalizedAxis */
        static DualQuaternion<T> rotation(Rad<T> angle, const Vector3<T>& normalizedAxis) {
            return {Quaternion<T>::rotation(angle, normalizedAxis), {{}, T(0)}};
        }

        /** @brief Translation by @p vector */
        static DualQuaternion<T> translation(const Vector3<T>& vector) {
            return {{}, Quaternion<T>{vector/T(2), T(0)}};
        }

        /**
         * @brief Dual quaternion from a rigid transformation matrix
         *
         * Expects that the upper left 3x3 part is a rotation (no scaling,
         * shear or projection).
         */
        static DualQuaternion<T> fromMatrix(const Matrix4<T>& matrix) {
            const Quaternion<T> real = Quaternion<T>::fromMatrix(matrix.rotationScaling());
            return {real, Quaternion<T>{matrix.translation()/T(2)}*real};
        }

        /** @brief Identity transformation */
        constexpr DualQuaternion() noexcept: _real{}, _dual{{}, T(0)} {}

        /** @brief Construct from the real and the dual part */
        constexpr DualQuaternion(const Quaternion<T>& real, const Quaternion<T>& dual = Quaternion<T>({}, T(0))) noexcept: _real{real}, _dual{dual} {}

        /** @brief Fuzzy equality */
        bool operator==(const DualQuaternion<T>& other) const {
            return _real == other._real && _dual == other._dual;
        }
        bool operator!=(const DualQuaternion<T>& other) const { return !operator==(other); } /**< @brief Non-equality */

        Quaternion<T>& real() { return _real; }                      /**< @brief Real part */
        constexpr const Quaternion<T> real() const { return _real; } /**< @overload */
        Quaternion<T>& dual() { return _dual; }                      /**< @brief Dual part */
        constexpr const Quaternion<T> dual() const { return _dual; } /**< @overload */

        /** @brief Rotation part, the real part */
        constexpr Quaternion<T> rotation() const { return _real; }

        /**
         * @brief Translation part, @f$ 2 (q_\epsilon q_0^*)_V @f$
         *
         * Expects that the real part is normalized.
         */
        Vector3<T> translation() const {
            return (_dual*_real.conjugated()).vector()*T(2);
        }

        /**
         * @brief Rigid transformation matrix
         *
         * Expects that the real part is normalized.
         */
        Matrix4<T> toMatrix() const {
            return Matrix4<T>::from(_real.toMatrix(), translation());
        }

        /**
         * @brief Product
         *
         * As transformations, @cpp a*b @ce applies @p b first, then @p a.
         */
        DualQuaternion<T> operator*(const DualQuaternion<T>& other) const {
            return {_real*other._real, _real*other._dual + _dual*other._real};
        }

    private:
        Quaternion<T> _real, _dual;
};

}}

#endif
