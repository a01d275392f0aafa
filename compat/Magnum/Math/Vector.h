/* Magnum/Math/Vector.h: fixed-size vector, the base of Vector3 and Vector4 */
#ifndef Magnum_Math_Vector_h
#define Magnum_Math_Vector_h

#include <cmath>
#include <cstddef>
#include <type_traits>

#include "Magnum/Math/Math.h"
#include "Magnum/Math/TypeTraits.h"

namespace Magnum { namespace Math {

template<std::size_t size, class T> T dot(const Vector<size, T>& a, const Vector<size, T>& b);

/**
@brief Vector of @p size components of type @p T

Default-constructed to zero. Comparison is fuzzy for floating-point types, see
@ref TypeTraits.
*/
template<std::size_t size, class T> class Vector {
    static_assert(size != 0, "Vector cannot have zero elements");

    public:
        typedef T Type;
        enum: std::size_t { Size = size };

        /** @brief Zero vector */
        constexpr Vector() noexcept: _data{} {}

        /** @brief Construct from all @p size components */
        template<class ...U, class V = typename std::enable_if<sizeof...(U) + 1 == size, T>::type> constexpr /*implicit*/ Vector(T first, U... next) noexcept: _data{first, T(next)...} {}

        /** @brief Construct with one value for all components */
        template<class U, class V = typename std::enable_if<std::is_same<T, U>::value && size != 1, T>::type> explicit Vector(U value) noexcept: _data{} {
            for(T& i: _data) i = value;
        }

        /** @brief Raw data, @p size contiguous values */
        T* data() { return _data; }
        const T* data() const { return _data; } /**< @overload */

        /** @brief Component at @p i */
        T& operator[](std::size_t i) { return _data[i]; }
        constexpr const T& operator[](std::size_t i) const { return _data[i]; } /**< @overload */

        /** @brief Fuzzy equality of all components */
        bool operator==(const Vector<size, T>& other) const {
            for(std::size_t i = 0; i != size; ++i)
                if(!TypeTraits<T>::equals(_data[i], other._data[i])) return false;
            return true;
        }
        bool operator!=(const Vector<size, T>& other) const { return !operator==(other); } /**< @brief Non-equality */

        /** @brief Negated vector */
        Vector<size, T> operator-() const {
            Vector<size, T> out;
            for(std::size_t i = 0; i != size; ++i) out._data[i] = -_data[i];
            return out;
        }

        /** @brief Add a vector */
        Vector<size, T>& operator+=(const Vector<size, T>& other) {
            for(std::size_t i = 0; i != size; ++i) _data[i] += other._data[i];
            return *this;
        }
        Vector<size, T> operator+(const Vector<size, T>& other) const { return Vector<size, T>(*this) += other; } /**< @brief Sum */

        /** @brief Subtract a vector */
        Vector<size, T>& operator-=(const Vector<size, T>& other) {
            for(std::size_t i = 0; i != size; ++i) _data[i] -= other._data[i];
            return *this;
        }
        Vector<size, T> operator-(const Vector<size, T>& other) const { return Vector<size, T>(*this) -= other; } /**< @brief Difference */

        /** @brief Multiply by a scalar */
        Vector<size, T>& operator*=(T scalar) {
            for(T& i: _data) i *= scalar;
            return *this;
        }
        Vector<size, T> operator*(T scalar) const { return Vector<size, T>(*this) *= scalar; } /**< @brief Vector times scalar */
        friend Vector<size, T> operator*(T scalar, const Vector<size, T>& vector) { return vector*scalar; } /**< @brief Scalar times vector */

        /** @brief Divide by a scalar */
        Vector<size, T>& operator/=(T scalar) {
            for(T& i: _data) i /= scalar;
            return *this;
        }
        Vector<size, T> operator/(T scalar) const { return Vector<size, T>(*this) /= scalar; } /**< @brief Vector divided by scalar */

        /** @brief Dot product with itself, the squared length */
        T dot() const { return Math::dot(*this, *this); }

        /** @brief Length */
        T length() const { return T(std::sqrt(dot())); }

        /** @brief Vector of unit length in the same direction, multiplied by the inverted length as the real library does */
        Vector<size, T> normalized() const { return *this*(T(1)/length()); }

    private:
        T _data[size];
};

/** @brief Dot product of two vectors */
template<std::size_t size, class T> inline T dot(const Vector<size, T>& a, const Vector<size, T>& b) {
    T out{};
    for(std::size_t i = 0; i != size; ++i) out += a[i]*b[i];
    return out;
}

/* Re-declares the operators of Vector<size, T> in a subclass so that they
   return the subclass type */
#define MAGNUM_VECTOR_SUBCLASS_IMPLEMENTATION(size, Type)                   \
    Type<T> operator-() const {                                             \
        return Math::Vector<size, T>::operator-();                          \
    }                                                                       \
    Type<T>& operator+=(const Math::Vector<size, T>& other) {               \
        Math::Vector<size, T>::operator+=(other);                           \
        return *this;                                                       \
    }                                                                       \
    Type<T> operator+(const Math::Vector<size, T>& other) const {           \
        return Math::Vector<size, T>::operator+(other);                     \
    }                                                                       \
    Type<T>& operator-=(const Math::Vector<size, T>& other) {               \
        Math::Vector<size, T>::operator-=(other);                           \
        return *this;                                                       \
    }                                                                       \
    Type<T> operator-(const Math::Vector<size, T>& other) const {           \
        return Math::Vector<size, T>::operator-(other);                     \
    }                                                                       \
    Type<T>& operator*=(T scalar) {                                         \
        Math::Vector<size, T>::operator*=(scalar);                          \
        return *this;                                                       \
    }                                                                       \
    Type<T> operator*(T scalar) const {                                     \
        return Math::Vector<size, T>::operator*(scalar);                    \
    }                                                                       \
    friend Type<T> operator*(T scalar, const Type<T>& vector) {             \
        return vector*scalar;                                               \
    }                                                                       \
    Type<T>& operator/=(T scalar) {                                         \
        Math::Vector<size, T>::operator/=(scalar);                          \
        return *this;                                                       \
    }                                                                       \
    Type<T> operator/(T scalar) const {                                     \
        return Math::Vector<size, T>::operator/(scalar);                    \
    }                                                                       \
    Type<T> normalized() const {                                            \
        return Math::Vector<size, T>::normalized();                         \
    }

}}

#endif
