#ifndef QuelmarEngine_host_SceneLayout_h
#define QuelmarEngine_host_SceneLayout_h
/* Laying the live objects of an ObjectTree out as the scene graph's
   depth-first positions: all of them, or only the stretch that a change
   reaches, the positions after it moved as a block. */

#include <cstddef>
#include <cstdint>
#include <vector>

#include "QuelmarEngine/host/DynamicSceneGraph.h"
#include "QuelmarEngine/host/ObjectTree.h"

namespace QuelmarEngine {

/**
@brief What changed in an @ref ObjectTree since its positions were laid out

An object is *changed* when its parent, its place among its siblings or its
deleted flag changed, or its index went to another record. Every other
object keeps its children, except for changed ones.
*/
struct TreeChanges {
    /** Per object index, nonzero for a changed object */
    const char* changed;
    /** Last position that a changed object or its subtree had, 0 for none */
    std::size_t lastOldPosition;
    /** How many changed objects are live in the tree now */
    std::size_t liveCount;
};

/**
@brief Lays out the scene graph's positions from a position on

Keeps what it needs from one layout to the next, so that a small change
makes no allocations.
*/
class SceneLayout {
    public:
        typedef Data::DynamicSceneGraph<unsigned short> Graph;

        /** Positions laid out, from @ref begin up to @ref end */
        struct Range {
            std::size_t begin, end;
        };

        /**
         * @brief Lays out the positions from @p from on again
         *
         * Positions before @p from keep their objects, so every change of
         * the tree has to show at @p from or after it. Writes the hierarchy
         * records and the maps between positions and indices of the
         * positions laid out, and the descendant and child counts of the
         * objects above them, and marks the positions that got other
         * objects, for their local transformations; the graph has as many
         * indices as @p tree afterwards. @p live holds a bit per index, set
         * for the objects that have a position, and is kept up to date.
         *
         * Without @p changes, every position from @p from on is laid out.
         * With them, the layout stops at the first object past every change
         * whose ancestors are unchanged: from there on the positions are
         * the old ones in the same order, moved as a block. Costs the
         * positions laid out, the depth of @p from, and a move of the
         * positions after them. Returns the positions laid out; those after
         * them kept their objects.
         */
        Range layOut(const ObjectTree& tree, Graph& graph, std::size_t from, std::vector<std::uint32_t>& live, const TreeChanges* changes);

    private:
        typedef Graph::Hierarchy Hierarchy;

        /* An object above the position being laid out */
        struct Open {
            std::size_t position;
            /* Its old position and where its old subtree ended, when it
               had them; the new end once known */
            std::size_t old, oldEnd;
        };

        /* Objects from @p from on in pre-order into the scratch arrays, up
           to the first one that kept its place and everything after it;
           returns its old position, or the position count when there is
           none */
        std::size_t walk(const ObjectTree& tree, Graph& graph, std::size_t from, const std::vector<std::uint32_t>& live, const TreeChanges* changes);
        /* The hierarchy record of new position @p p */
        Hierarchy& hierarchyAt(Graph& graph, std::size_t p);
        /* Puts the laid out positions in place of the old ones before
           @p kept and moves the ones from @p kept on behind them */
        void splice(Graph& graph, std::size_t kept, std::vector<std::uint32_t>& live);
        void moveTail(Graph& graph, std::size_t kept, std::size_t end);

        std::size_t _from{};
        std::vector<Hierarchy> _hierarchy;
        std::vector<unsigned short> _positionToIndex;
        std::vector<Open> _open;
};

}

#endif
