#ifndef QuelmarEngine_host_ObjectTree_h
#define QuelmarEngine_host_ObjectTree_h
/* The object hierarchy by object index, siblings in "objects" map order and
   parent cycles broken: what the scene graph's positions are laid out from,
   with no JSON and no hashing on the way. */

#include <cstddef>
#include <cstdint>
#include <vector>
#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Objects by index, each under its parent among its siblings in order

Index 0 is the root. Every other index either holds an object, attached
under the object its "parent" names (the root when it names none), or is
detached. An object's order is a number that sorts like the object's place in
the "objects" map; children of one parent are kept sorted by it. Where parents
form a cycle, the member first in order hangs under the root instead: it is
*broken*.
*/
class ObjectTree {
    public:
        typedef Magnum::Math::Matrix4<Magnum::Float> Matrix4;

        /** No index: the end of a list, a detached object's parent */
        static constexpr unsigned short None = 0xffff;

        /** A cycle of parents, starting at its member first in order and going up */
        typedef std::vector<unsigned short> Cycle;

        ObjectTree();

        /** Number of indices, the root's included */
        std::size_t size() const { return _order.size(); }

        /** Sets the number of indices; new ones are detached and have no data */
        void resize(std::size_t size);

        /** Makes room for @p size indices */
        void reserve(std::size_t size);

        /** Detaches every object and forgets every broken cycle */
        void clear();

        /** Detaches @p i and gives it no data, ready for another object */
        void free(unsigned short i);

        std::uint64_t order(unsigned short i) const { return _order[i]; }
        /** Expects that @p i is detached, as its place among siblings depends on it */
        void setOrder(unsigned short i, std::uint64_t order) { _order[i] = order; }

        /** The object the "parent" names, 0 for the root */
        unsigned short namedParent(unsigned short i) const { return _namedParent[i]; }
        void setNamedParent(unsigned short i, unsigned short parent) { _namedParent[i] = parent; }

        /** The parent @p i should be attached under: the named one, the root when broken */
        unsigned short wantedParent(unsigned short i) const { return _broken[i] ? 0 : _namedParent[i]; }

        /** The parent @p i is attached under, @ref None when detached */
        unsigned short parent(unsigned short i) const { return _parent[i]; }

        bool isDeleted(unsigned short i) const { return _deleted[i]; }
        /** Returns whether the flag changed */
        bool setDeleted(unsigned short i, bool deleted);

        bool isBroken(unsigned short i) const { return _broken[i]; }

        /** The broken objects, and maybe some that no longer are */
        const std::vector<unsigned short>& brokenObjects() const { return _brokenList; }

        /** Whether the object's "transformation" was unusable and the identity stands in */
        bool hasMalformedTransformation(unsigned short i) const { return _malformed[i]; }
        void setMalformedTransformation(unsigned short i, bool malformed) { _malformed[i] = malformed; }

        /** Whether @p i is attached under the root with no flagged deleted object on the way, itself included */
        bool isLive(unsigned short i) const;

        /** Number of children that are not flagged deleted */
        unsigned short liveChildCount(unsigned short i) const { return _liveChildren[i]; }

        /** Attaches @p i under @p parent after the last child before it in order, detaching it first */
        void attach(unsigned short i, unsigned short parent);

        /** Takes @p i out of its parent's children; its own stay with it */
        void detach(unsigned short i);

        /** Children of @p i */
        std::vector<unsigned short> children(unsigned short i) const;

        /** The nearest sibling before @p i that is not flagged deleted, or @ref None */
        unsigned short previousLiveSibling(unsigned short i) const;

        /**
         * @brief The live object after @p i in depth-first pre-order
         *
         * Live objects are those with no flagged deleted object from them up
         * to the root. Expects @p i to be live; @ref None after the last.
         */
        unsigned short nextInPreOrder(unsigned short i) const;

        /**
         * @brief Brings the broken members up to date after named parents changed
         *
         * Checks first that every broken object is still the member first in
         * order of a cycle, then walks up from each of @p from, in the given
         * order, breaking the cycles found there. The objects whose wanted
         * parent changed are appended to @p moved, every cycle found to
         * @p found. Nothing is attached.
         */
        void breakCycles(const std::vector<unsigned short>& from, std::vector<unsigned short>& moved, std::vector<Cycle>& found);

    private:
        /* A fresh stamp for a walk, distinct from every stamp in _mark */
        std::uint32_t nextStamp();
        /* Parents from @p start up to itself, or empty when they don't come back */
        Cycle cycleThrough(unsigned short start);
        Cycle orderedCycle(const Cycle& members) const;

        std::vector<std::uint64_t> _order;
        std::vector<unsigned short> _namedParent, _parent;
        std::vector<unsigned short> _firstChild, _lastChild, _previous, _next;
        std::vector<unsigned short> _liveChildren;
        std::vector<char> _deleted, _broken, _malformed;
        std::vector<unsigned short> _brokenList;
        std::vector<std::uint32_t> _mark;
        std::uint32_t _stamp{};
};

}

#endif
