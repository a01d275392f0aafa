#ifndef QuelmarEngine_host_TransformationSnapping_h
#define QuelmarEngine_host_TransformationSnapping_h
/* Numbers of a transformation computed in limited precision, written as the
   numbers they stand for: the number that was there, a whole number or a
   short decimal, so that a round trip gives back what was written and
   saved files don't fill with rounding noise. */

#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Vector4.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** How many double-precision ulps of the largest number of its column a computed number may be off */
constexpr double SnappingUlps = 1024.0;

/**
@brief The number that @p value stands for, if it is off by at most @p tolerance

The first of: @p before, when it is a number within @p tolerance, as it is
(an integer staying one); the nearest whole number, when within
@p tolerance and at most 2^53 in size, as an integer; the number within
@p tolerance that has the fewest significant decimal digits, when those
are at least three fewer than the tolerance leaves; @p value itself.
*/
rapidjson::Value snappedNumber(double value, double tolerance, const rapidjson::Value* before, JsonAllocator& allocator);

/**
@brief @p matrix as a "transformation" array, its numbers snapped

Each number of column i is snapped with @p tolerances[i], against the
number at its place in @p before when that is an array of 16 (the
transformation the object had), or else the identity's.
*/
rapidjson::Value snappedTransformation(const Magnum::Matrix4d& matrix, const Magnum::Vector4d& tolerances, const rapidjson::Value* before, JsonAllocator& allocator);

}

#endif
