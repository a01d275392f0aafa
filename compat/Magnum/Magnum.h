/* Magnum/Magnum.h: scalar typedefs and the Float/Double names of the math types */
#ifndef Magnum_Magnum_h
#define Magnum_Magnum_h

#include "Magnum/Math/Math.h"

namespace Magnum {

typedef float Float;
typedef double Double;

typedef Math::Vector3<Float> Vector3;
typedef Math::Vector4<Float> Vector4;
typedef Math::Matrix3x3<Float> Matrix3x3;
typedef Math::Matrix4<Float> Matrix4;
typedef Math::Quaternion<Float> Quaternion;
typedef Math::DualQuaternion<Float> DualQuaternion;
typedef Math::Deg<Float> Deg;
typedef Math::Rad<Float> Rad;

typedef Math::Vector3<Double> Vector3d;
typedef Math::Vector4<Double> Vector4d;
typedef Math::Matrix3x3<Double> Matrix3x3d;
typedef Math::Matrix4<Double> Matrix4d;
typedef Math::Quaternion<Double> Quaterniond;
typedef Math::DualQuaternion<Double> DualQuaterniond;
typedef Math::Deg<Double> Degd;
typedef Math::Rad<Double> Radd;

}

#endif
