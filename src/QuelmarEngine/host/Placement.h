#ifndef QuelmarEngine_host_Placement_h
#define QuelmarEngine_host_Placement_h
/* An object's placement as people think of it: a translation, a rotation
   and a scaling, taken from and made into transformation matrices, in double
   precision. */

#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Quaternion.h>
#include <Magnum/Math/Vector3.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Translation, rotation and scaling

The matrix of a placement scales first, then rotates, then translates.
*/
struct Placement {
    Magnum::Vector3d translation;
    /** A unit quaternion */
    Magnum::Quaterniond rotation;
    Magnum::Vector3d scaling{1.0, 1.0, 1.0};
    /** Whether the matrix it came from also shears, which the three leave out */
    bool shears{};
};

/**
@brief The placement of @p matrix

The scaling is the lengths of the first three columns, the X one negative
when the matrix mirrors. Columns of no length get an axis that keeps the
rotation right-handed. Expects the last row to be 0, 0, 0, 1.
*/
Placement placementOf(const Magnum::Matrix4d& matrix);

/** The matrix of @p placement */
Magnum::Matrix4d matrixOf(const Placement& placement);

/**
@brief Rotation angles of @p rotation in degrees

About the X axis first, then about Y, then about Z, all three being the axes
of the space the rotation is in (the parent's, or the world's): the rotation
matrix is Rz·Ry·Rx. Y lies in [-90, 90], X and Z in (-180, 180]; where Y is
±90, X is 0.
*/
Magnum::Vector3d eulerDegrees(const Magnum::Quaterniond& rotation);

/** The rotation of the angles @p degrees, as @ref eulerDegrees() gives them */
Magnum::Quaterniond rotationOfEulerDegrees(const Magnum::Vector3d& degrees);

/**
@brief The local matrix of the object record @p record

Its "transformation", column by column; the identity when it has none or
when that isn't 16 numbers, as the scene takes it.
*/
Magnum::Matrix4d localMatrixOf(const rapidjson::Value& record);

/**
@brief The world matrix of the object @p key

The product, in double precision, of the local matrices of the object and
its ancestors in the scene; the identity for the root (an empty @p key) and
for objects that aren't in the scene. @p largestTranslation, if not null,
gets the length of the largest world translation on the way, which tells
how far off the same product in single precision can be.
*/
Magnum::Matrix4d worldMatrixOf(QuelmarEditor& editor, Containers::StringView key, double* largestTranslation = nullptr);

}

#endif
