/* Magnum/Math/Math.h: forward declarations of the Magnum::Math types */
#ifndef Magnum_Math_Math_h
#define Magnum_Math_Math_h

#include <cstddef>

namespace Magnum { namespace Math {

template<class> class Deg;
template<class> class Rad;

template<class> class DualQuaternion;
template<std::size_t, class> class Matrix;
template<class T> using Matrix3x3 = Matrix<3, T>;
template<class> class Matrix4;
template<class> class Quaternion;
template<std::size_t, class> class Vector;
template<class> class Vector3;
template<class> class Vector4;

}}

#endif
