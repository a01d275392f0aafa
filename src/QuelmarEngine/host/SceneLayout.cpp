#include "QuelmarEngine/host/SceneLayout.h"

#include <algorithm>

namespace QuelmarEngine {

namespace {

void setBit(std::vector<std::uint32_t>& bits, const std::size_t i, const bool value) {
    if(value) bits[i/32] |= 1u << (i % 32);
    else bits[i/32] &= ~(1u << (i % 32));
}

bool bit(const std::vector<std::uint32_t>& bits, const std::size_t i) {
    return (bits[i/32] >> (i % 32)) & 1u;
}

/* Moves @p array's entries from @p kept to the old end so that they start
   at @p end, as the array grows or shrinks around them */
template<class T> void moveEntries(Containers::ArrayView<T> array, const std::size_t kept, const std::size_t oldCount, const std::size_t end) {
    if(end > kept) std::move_backward(array.data() + kept, array.data() + oldCount, array.data() + end + (oldCount - kept));
    else std::move(array.data() + kept, array.data() + oldCount, array.data() + end);
}

}

auto SceneLayout::layOut(const ObjectTree& tree, Graph& graph, std::size_t from, std::vector<std::uint32_t>& live, const TreeChanges* const changes) -> Range {
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

    const std::size_t kept = walk(tree, graph, from, live, changes);
    splice(graph, kept, live);
    return {_from, _from + _positionToIndex.size()};
}

auto SceneLayout::hierarchyAt(Graph& graph, const std::size_t p) -> Hierarchy& {
    return p < _from ? graph.storedHierarchy()[p] : _hierarchy[p - _from];
}

std::size_t SceneLayout::walk(const ObjectTree& tree, Graph& graph, const std::size_t from, const std::vector<std::uint32_t>& live, const TreeChanges* const changes) {
    _from = from;
    _hierarchy.clear();
    _positionToIndex.clear();
    _open.clear();
    const Containers::ArrayView<Hierarchy> hierarchy = graph.storedHierarchy();
    const Containers::ArrayView<unsigned short> indexToPosition = graph.storedIndexToPosition();

    /* Objects whose subtrees may reach past @p from: the one before it and
       everything above it. Their subtrees end where a position outside them
       is laid out. */
    for(std::size_t p = from - 1; ; p = hierarchy[p].parent) {
        _open.push_back({p, p, p + hierarchy[p].descendants});
        if(!p) break;
    }
    std::reverse(_open.begin(), _open.end());
    for(const Open& open: _open) hierarchy[open.position].childCount = tree.liveChildCount(graph.storedPositionToIndex()[open.position]);

    std::size_t changedLeft = changes ? changes->liveCount : 0;
    std::size_t p = from;
    for(unsigned short i = tree.nextInPreOrder(graph.storedPositionToIndex()[from - 1]); i != ObjectTree::None; i = tree.nextInPreOrder(i), ++p) {
        const unsigned short parent = indexToPosition[tree.parent(i)];
        while(_open.back().position != parent) {
            hierarchyAt(graph, _open.back().position).descendants = (unsigned short)(p - _open.back().position - 1);
            _open.pop_back();
        }

        /* Past every change in the old layout and the new one: from here on
           the order is the old one. An unchanged object has the parent it
           had, so when it had a position inside the old subtree of a
           changed one, it is still below that one. */
        const bool changed = changes && changes->changed[i];
        const bool laidOut = bit(live, i);
        const std::size_t old = laidOut ? indexToPosition[i] : 0;
        if(changes && !changed && !changedLeft && laidOut && old > changes->lastOldPosition)
            return old;
        if(changed && changedLeft) --changedLeft;

        _hierarchy.push_back({parent, (unsigned short)(hierarchyAt(graph, parent).depth + 1), 0, tree.liveChildCount(i)});
        _positionToIndex.push_back(i);
        indexToPosition[i] = (unsigned short)p;
        _open.push_back({p, old, laidOut ? old + hierarchy[old].descendants : 0});
    }
    return graph.storedPositionCount();
}

void SceneLayout::splice(Graph& graph, const std::size_t kept, std::vector<std::uint32_t>& live) {
    const std::size_t count = graph.storedPositionCount();
    const std::size_t end = _from + _positionToIndex.size();
    const Containers::ArrayView<unsigned short> indexToPosition = graph.storedIndexToPosition();

    /* What was laid out before the kept positions is nowhere until laid
       out again */
    for(std::size_t p = _from; p != kept; ++p) {
        const unsigned short i = graph.storedPositionToIndex()[p];
        indexToPosition[i] = 0;
        setBit(live, i, false);
    }

    /* The subtrees of the objects above the kept positions end among them */
    for(Open& open: _open) open.oldEnd = kept == count ? end - 1 : open.oldEnd + end - kept;

    moveTail(graph, kept, end);
    const Containers::ArrayView<Hierarchy> hierarchy = graph.storedHierarchy();
    const Containers::ArrayView<unsigned short> positionToIndex = graph.storedPositionToIndex();
    for(std::size_t k = 0; k != _positionToIndex.size(); ++k) {
        const unsigned short i = _positionToIndex[k];
        hierarchy[_from + k] = _hierarchy[k];
        positionToIndex[_from + k] = i;
        indexToPosition[i] = (unsigned short)(_from + k);
        setBit(live, i, true);
    }
    for(const Open& open: _open) hierarchy[open.position].descendants = (unsigned short)(open.oldEnd - open.position);
    graph.markLocalTransformationsMoved(_from, end == kept ? end : graph.storedPositionCount());
}

/* The kept positions keep their depths, subtrees and child counts; their
   indices and the parents among them and above them move */
void SceneLayout::moveTail(Graph& graph, const std::size_t kept, const std::size_t end) {
    const std::size_t count = graph.storedPositionCount();
    const std::size_t newCount = count - kept + end;
    const std::size_t indexCount = graph.storedIndexToPosition().size();
    if(newCount > count) graph.resize(newCount, indexCount);
    moveEntries(graph.storedHierarchy(), kept, count, end);
    moveEntries(graph.storedPositionToIndex(), kept, count, end);
    if(newCount < count) graph.resize(newCount, indexCount);

    /* Objects above the kept positions that were laid out again, in
       ascending old position; parents among them are rare, and the loop
       over the kept positions is simpler without them */
    const auto above = std::find_if(_open.begin(), _open.end(), [this](const Open& open) { return open.position >= _from; });
    bool aboveMoved = false;
    for(auto open = above; open != _open.end() && !aboveMoved; ++open) aboveMoved = open->old != open->position;
    if(end == kept && !aboveMoved) return;

    const Containers::ArrayView<Hierarchy> hierarchy = graph.storedHierarchy();
    const Containers::ArrayView<const unsigned short> positionToIndex = graph.storedPositionToIndex();
    const Containers::ArrayView<unsigned short> indexToPosition = graph.storedIndexToPosition();
    if(aboveMoved) for(std::size_t p = end; p != newCount; ++p) {
        indexToPosition[positionToIndex[p]] = (unsigned short)p;
        const std::size_t parent = hierarchy[p].parent;
        if(parent >= kept) hierarchy[p].parent = (unsigned short)(parent - kept + end);
        else if(parent >= _from) hierarchy[p].parent = (unsigned short)std::lower_bound(above, _open.end(), parent, [](const Open& open, std::size_t old) {
            return open.old < old;
        })->position;
    } else {
        /* Wraps around for a negative shift, as positions fit the type */
        const unsigned short first = (unsigned short)kept, shift = (unsigned short)(end - kept);
        for(std::size_t p = end; p != newCount; ++p) {
            indexToPosition[positionToIndex[p]] = (unsigned short)p;
            const unsigned short parent = hierarchy[p].parent;
            hierarchy[p].parent = (unsigned short)(parent >= first ? parent + shift : parent);
        }
    }
}

}
