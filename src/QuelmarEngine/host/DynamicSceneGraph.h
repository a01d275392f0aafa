#ifndef QuelmarEngine_host_DynamicSceneGraph_h
#define QuelmarEngine_host_DynamicSceneGraph_h
/* The live object hierarchy in depth-first order, with the maps between
   object indices and positions, the object keys and the world placement of
   every position. */

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Pointer.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/DualQuaternion.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Vector3.h>

#include "QuelmarEngine/host/KeyTable.h"
#include "QuelmarEngine/host/RefreshHook.h"

namespace QuelmarEngine { namespace Data {

/**
@brief Scene hierarchy with object indices of type @p T

Positions are depth-first pre-order: the root is at position 0 and an object
at position p with d descendants has them, and only them, at positions p + 1
to p + d. Every read first calls the refresh hook, through which the host
rebuilds a graph that no longer matches the document.

Local transformations are kept by object index; the copy in position order
follows when it is read (or the world placement computed), so that objects
moving to other positions cost no copies of their matrices in between.
*/
template<class T> class DynamicSceneGraph {
    public:
        struct Header {
            /** Number of positions, the root included */
            T objectCount;
        };

        struct Hierarchy {
            /** Position of the parent; 0 for the root itself */
            T parent;
            /** Distance from the root */
            T depth;
            /** Number of positions in the subtree below, children and their descendants */
            T descendants;
            /** Number of direct children */
            T childCount;
        };

        /** A graph with no header; it holds nothing until @ref setup() */
        DynamicSceneGraph();
        ~DynamicSceneGraph();

        DynamicSceneGraph(const DynamicSceneGraph&) = delete;
        DynamicSceneGraph& operator=(const DynamicSceneGraph&) = delete;

        /** The header; a graph without one is a fatal error */
        const Header& header() const;

        /** One record per position */
        Containers::ArrayView<const Hierarchy> hierarchy() const;

        /** Object index at each position */
        Containers::ArrayView<const T> positionToIndex() const;

        /** Position of each object index; 0 for an index that is in no position */
        Containers::ArrayView<const T> indexToPosition() const;

        /** Object key of each object index; empty for the root and unused indices */
        const StringArrayView& objectKeys() const;

        /** Local transformation of each position */
        Containers::ArrayView<const Magnum::Math::Matrix4<Magnum::Float>> localTransformations() const;

        /** World rotation and translation of each position, after @ref computeAbsoluteTransformations() */
        Containers::ArrayView<const Magnum::Math::DualQuaternion<Magnum::Float>> absoluteTransformations() const;

        /** World scaling of each position, after @ref computeAbsoluteTransformations() */
        Containers::ArrayView<const Magnum::Math::Vector3<Magnum::Float>> absoluteScalings() const;

        /** Brings the world placement of every position up to date from the hierarchy */
        void computeAbsoluteTransformations();

        /** What every read calls first */
        void setRefreshHook(RefreshHook hook) { _refresh = hook; }

        /**
         * @brief Replaces the whole graph
         *
         * Expects @p hierarchy, @p positionToIndex and @p localTransformations
         * to have one entry per position, and @p indexToPosition and
         * @p objectKeys one per object index.
         */
        void setup(Containers::Array<Hierarchy>&& hierarchy, Containers::Array<T>&& positionToIndex, Containers::Array<T>&& indexToPosition, const StringArrayView& objectKeys, Containers::Array<Magnum::Math::Matrix4<Magnum::Float>>&& localTransformations);

        /**
         * @name Keeping the graph in step
         *
         * For the host that brings the graph up to date in place: none of
         * these calls the refresh hook.
         */
        /*@{*/

        /**
         * @brief Sets the number of positions and of object indices
         *
         * What fits stays; new entries are zero, new keys empty. Makes the
         * header if there is none.
         */
        void resize(std::size_t positionCount, std::size_t indexCount);

        /** Number of positions, 0 without a header */
        std::size_t storedPositionCount() const { return _header ? _hierarchy.size() : 0; }

        Containers::ArrayView<Hierarchy> storedHierarchy() { return _hierarchy; }
        Containers::ArrayView<T> storedPositionToIndex() { return _positionToIndex; }
        Containers::ArrayView<T> storedIndexToPosition() { return _indexToPosition; }

        /** Local transformation of object index @p index */
        const Magnum::Math::Matrix4<Magnum::Float>& storedLocalTransformation(std::size_t index) const { return _localByIndex[index]; }

        /** Replaces the local transformation of object index @p index, which has to exist */
        void setLocalTransformation(std::size_t index, const Magnum::Math::Matrix4<Magnum::Float>& transformation);

        /** Positions from @p begin up to @p end got other objects, whose local transformations they take at the next read */
        void markLocalTransformationsMoved(std::size_t begin, std::size_t end);

        /** Key of object index @p index */
        const char* storedObjectKey(std::size_t index) const { return _objectKeys.get(index); }

        /** Replaces the key of object index @p index, which has to exist */
        void setObjectKey(std::size_t index, Containers::StringView key) { _objectKeys.set(index, key); }

        /*@}*/

    private:
        /* The positions marked since the last read take their objects'
           local transformations */
        void placeLocalTransformations() const;

        RefreshHook _refresh;
        Containers::Pointer<Header> _header;
        Containers::Array<Hierarchy> _hierarchy;
        Containers::Array<T> _positionToIndex;
        Containers::Array<T> _indexToPosition;
        KeyTable _objectKeys;
        Containers::Array<Magnum::Math::Matrix4<Magnum::Float>> _localByIndex;
        mutable Containers::Array<Magnum::Math::Matrix4<Magnum::Float>> _localTransformations;
        mutable std::size_t _movedBegin{}, _movedEnd{};
        Containers::Array<Magnum::Math::DualQuaternion<Magnum::Float>> _absoluteTransformations;
        Containers::Array<Magnum::Math::Vector3<Magnum::Float>> _absoluteScalings;
};

extern template class DynamicSceneGraph<unsigned short>;

}}

#endif
