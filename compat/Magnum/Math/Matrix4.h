/* Magnum/Math/Matrix4.h: 4x4 matrix for 3D transformations */
#ifndef Magnum_Math_Matrix4_h
#define Magnum_Math_Matrix4_h

#include "Magnum/Math/Matrix.h"

namespace Magnum { namespace Math {

/** @brief 4x4 column-major transformation matrix, identity by default */
template<class T> class Matrix4: public Matrix<4, T> {
    public:
        /** @brief Translation by @p vector */
        static Matrix4<T> translation(const Vector3<T>& vector) {
            Matrix4<T> out;
            out[3] = Vector4<T>{vector, T(1)};
            return out;
        }

        /** @brief Scaling by @p vector along the axes */
        static Matrix4<T> scaling(const Vector3<T>& vector) {
            return {{vector.x(), T(0), T(0), T(0)},
                    {T(0), vector.y(), T(0), T(0)},
                    {T(0), T(0), vector.z(), T(0)},
                    {T(0), T(0), T(0), T(1)}};
        }

        /** @brief Matrix with @p rotationScaling in the upper left 3x3 part and @p translation in the last column */
        static Matrix4<T> from(const Matrix3x3<T>& rotationScaling, const Vector3<T>& translation) {
            return {{rotationScaling[0], T(0)},
                    {rotationScaling[1], T(0)},
                    {rotationScaling[2], T(0)},
                    {translation, T(1)}};
        }

        /** @brief Identity matrix */
        Matrix4() noexcept = default;

        /** @brief Construct from four columns */
        Matrix4(const Vector4<T>& first, const Vector4<T>& second, const Vector4<T>& third, const Vector4<T>& fourth) noexcept: Matrix<4, T>(first, second, third, fourth) {}

        /** @brief Conversion from the base matrix */
        Matrix4(const Matrix<4, T>& other) noexcept: Matrix<4, T>(other) {}

        /** @brief Column at @p col */
        Vector4<T>& operator[](std::size_t col) { return this->_data[col]; }
        const Vector4<T>& operator[](std::size_t col) const { return this->_data[col]; } /**< @overload */

        /** @brief Upper left 3x3 part */
        Matrix3x3<T> rotationScaling() const {
            return {(*this)[0].xyz(), (*this)[1].xyz(), (*this)[2].xyz()};
        }

        /** @brief Translation part, the XYZ of the last column */
        Vector3<T> translation() const { return (*this)[3].xyz(); }

        /** @brief Matrix product */
        Matrix4<T> operator*(const Matrix<4, T>& other) const { return Matrix<4, T>::operator*(other); }
        /** @brief Matrix times column vector */
        Vector4<T> operator*(const Vector<4, T>& vector) const { return Matrix<4, T>::operator*(vector); }

        /** @brief Transposed matrix */
        Matrix4<T> transposed() const { return Matrix<4, T>::transposed(); }
        /** @brief Inverse, see @ref Matrix::inverted() */
        Matrix4<T> inverted() const { return Matrix<4, T>::inverted(); }
};

}}

#endif
