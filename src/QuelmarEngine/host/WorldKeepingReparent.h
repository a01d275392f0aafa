#ifndef QuelmarEngine_host_WorldKeepingReparent_h
#define QuelmarEngine_host_WorldKeepingReparent_h
/* Reparenting that keeps world placements and writes the numbers that the
   single-precision result stands for, so that a move under the same world
   placement, or away and back, gives back the numbers that were there. */

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief How many single-precision ulps the library's numbers may be off

Of the largest number that the computation of their column handled. A number
further off than that from the same computation in double precision comes
from a world placement that the scene can't hold (a shear, which it drops).
*/
constexpr double WorldKeepingUlps = 64.0;

/**
@brief Moves the selected objects under @p parent, keeping their world placement

Runs @ref reparentObjectsKeepTransform(), which computes every local matrix
in single precision, and then gives every number it wrote that lies within
@ref WorldKeepingUlps of the same number computed in double precision the
number that the double stands for (see @ref snappedTransformation()): the
number that was at its place, a whole number or a short decimal. Any other
number keeps its single-precision value, written with the fewest digits that
read back as that single-precision number. The changes stay one per object:
the transformation changes that the command made are given the numbers
before anything reads them. A null @p parent is the root.
*/
void reparentSelectionKeepingWorld(QuelmarEditor& editor, const char* parent);

}

#endif
