#include "QuelmarEngine/host/SceneLayout.h"

#include <algorithm>

namespace QuelmarEngine {

namespace {

void setBit(std::vector<std::uint32_t>& bits, const std::size_t i, const bool value) {
    if(value) bits[i/32] |= 1u << (i % 32);
    else bits[i/32] &= ~(1u << (i % 32));
}

}

std::size_t layOutPositions(const ObjectTree& tree, Data::DynamicSceneGraph<unsigned short>& graph, std::size_t from, std::vector<std::uint32_t>& live) {
    typedef Data::DynamicSceneGraph<unsigned short>::Hierarchy Hierarchy;
    const std::size_t indexCount = tree.size();
    live.resize((indexCount + 31)/32, 0);
    setBit(live, 0, true);

    std::size_t count = graph.storedPositionCount();
    if(!count) {
        graph.resize(1, indexCount);
        graph.storedHierarchy()[0] = {};
        count = 1;
    } else graph.resize(count, indexCount);
    from = std::max<std::size_t>(1, std::min(from, count));

    /* The old tail is nowhere until laid out again */
    Containers::ArrayView<unsigned short> positionToIndex = graph.storedPositionToIndex();
    Containers::ArrayView<unsigned short> indexToPosition = graph.storedIndexToPosition();
    for(std::size_t p = from; p != count; ++p) {
        indexToPosition[positionToIndex[p]] = 0;
        setBit(live, positionToIndex[p], false);
    }

    /* Objects whose subtrees may reach into the tail: the one before it and
       everything above it. Their subtrees end where a position outside them
       is laid out. */
    Containers::ArrayView<Hierarchy> hierarchy = graph.storedHierarchy();
    std::vector<unsigned short> open;
    for(std::size_t p = from - 1; ; p = hierarchy[p].parent) {
        open.push_back((unsigned short)p);
        if(!p) break;
    }
    std::reverse(open.begin(), open.end());
    for(const unsigned short p: open) hierarchy[p].childCount = tree.liveChildCount(positionToIndex[p]);

    Containers::ArrayView<ObjectTree::Matrix4> local = graph.storedLocalTransformations();
    std::size_t p = from;
    for(unsigned short i = tree.nextInPreOrder(positionToIndex[from - 1]); i != ObjectTree::None; i = tree.nextInPreOrder(i), ++p) {
        if(p == graph.storedPositionCount()) {
            graph.resize(p + 1, indexCount);
            hierarchy = graph.storedHierarchy();
            positionToIndex = graph.storedPositionToIndex();
            local = graph.storedLocalTransformations();
        }
        const unsigned short parent = indexToPosition[tree.parent(i)];
        while(open.back() != parent) {
            hierarchy[open.back()].descendants = (unsigned short)(p - open.back() - 1);
            open.pop_back();
        }
        hierarchy[p] = {parent, (unsigned short)(hierarchy[parent].depth + 1), 0, tree.liveChildCount(i)};
        positionToIndex[p] = i;
        indexToPosition[i] = (unsigned short)p;
        local[p] = tree.localTransformation(i);
        setBit(live, i, true);
        open.push_back((unsigned short)p);
    }
    for(; !open.empty(); open.pop_back())
        hierarchy[open.back()].descendants = (unsigned short)(p - open.back() - 1);
    graph.resize(p, indexCount);
    return from;
}

}
