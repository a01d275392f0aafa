#ifndef QuelmarEngine_host_SceneLayout_h
#define QuelmarEngine_host_SceneLayout_h
/* Laying the live objects of an ObjectTree out as the scene graph's
   depth-first positions: all of them, or only those from a position on. */

#include <cstddef>
#include <cstdint>
#include <vector>

#include "QuelmarEngine/host/DynamicSceneGraph.h"
#include "QuelmarEngine/host/ObjectTree.h"

namespace QuelmarEngine {

/**
@brief Lays out the positions from @p from on again

Positions before @p from keep their objects, so every change of the tree has
to show at @p from or after it. Writes the hierarchy records, the maps between
positions and indices and the local transformations of the positions laid
out, and the descendant and child counts of the objects above them; the graph
has as many indices as @p tree afterwards. @p live holds a bit per index, set
for the objects that have a position, and is kept up to date. Costs the
positions from @p from to the end, old and new, and the depth of @p from.
Returns @p from, clamped to the positions there are.
*/
std::size_t layOutPositions(const ObjectTree& tree, Data::DynamicSceneGraph<unsigned short>& graph, std::size_t from, std::vector<std::uint32_t>& live);

}

#endif
