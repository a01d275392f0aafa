/* Magnum/Math/TypeTraits.h: per-type epsilon and the fuzzy comparison the math types use */
#ifndef Magnum_Math_TypeTraits_h
#define Magnum_Math_TypeTraits_h

#include <cmath>

namespace Magnum { namespace Math {

namespace Implementation {

/* Equal if bitwise equal, if the absolute difference is below epsilon when
   either value is zero or the difference is tiny, else if the difference
   relative to the magnitudes is below epsilon */
template<class T> bool equalsFloatingPoint(T a, T b, T epsilon) {
    if(a == b) return true;
    const T difference = std::abs(a - b);
    if(a == T{} || b == T{} || difference < epsilon)
        return difference < epsilon;
    return difference/(std::abs(a) + std::abs(b)) < epsilon;
}

}

/** @brief Traits of a scalar type; integers compare exactly */
template<class T> struct TypeTraits {
    /** @brief Whether two values are equal */
    static bool equals(T a, T b) { return a == b; }
};

/** @brief Traits of @cpp float @ce: fuzzy comparison with epsilon 1.0e-5 */
template<> struct TypeTraits<float> {
    /** @brief Epsilon for fuzzy comparison */
    static constexpr float epsilon() { return 1.0e-5f; }
    /** @brief Whether two values are equal within @ref epsilon() */
    static bool equals(float a, float b) {
        return Implementation::equalsFloatingPoint(a, b, epsilon());
    }
};

/** @brief Traits of @cpp double @ce: fuzzy comparison with epsilon 1.0e-14 */
template<> struct TypeTraits<double> {
    /** @brief Epsilon for fuzzy comparison */
    static constexpr double epsilon() { return 1.0e-14; }
    /** @brief Whether two values are equal within @ref epsilon() */
    static bool equals(double a, double b) {
        return Implementation::equalsFloatingPoint(a, b, epsilon());
    }
};

}}

#endif
