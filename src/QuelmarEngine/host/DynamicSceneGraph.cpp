#include "QuelmarEngine/host/DynamicSceneGraph.h"

#include <cstdlib>
#include <Corrade/Utility/Debug.h>

namespace QuelmarEngine { namespace Data {

template<class T> DynamicSceneGraph<T>::DynamicSceneGraph() = default;

template<class T> DynamicSceneGraph<T>::~DynamicSceneGraph() = default;

template<class T> auto DynamicSceneGraph<T>::header() const -> const Header& {
    _refresh();
    if(!_header) {
        Utility::Error{} << "DynamicSceneGraph::header(): Header not initilized.";
        std::abort();
    }
    return *_header;
}

template<class T> auto DynamicSceneGraph<T>::hierarchy() const -> Containers::ArrayView<const Hierarchy> {
    _refresh();
    return _hierarchy;
}

template<class T> Containers::ArrayView<const T> DynamicSceneGraph<T>::positionToIndex() const {
    _refresh();
    return _positionToIndex;
}

template<class T> Containers::ArrayView<const T> DynamicSceneGraph<T>::indexToPosition() const {
    _refresh();
    return _indexToPosition;
}

template<class T> const StringArrayView& DynamicSceneGraph<T>::objectKeys() const {
    _refresh();
    return _objectKeys;
}

template<class T> Containers::ArrayView<const Magnum::Math::Matrix4<Magnum::Float>> DynamicSceneGraph<T>::localTransformations() const {
    _refresh();
    return _localTransformations;
}

template<class T> Containers::ArrayView<const Magnum::Math::DualQuaternion<Magnum::Float>> DynamicSceneGraph<T>::absoluteTransformations() const {
    _refresh();
    return _absoluteTransformations;
}

template<class T> Containers::ArrayView<const Magnum::Math::Vector3<Magnum::Float>> DynamicSceneGraph<T>::absoluteScalings() const {
    _refresh();
    return _absoluteScalings;
}

template<class T> void DynamicSceneGraph<T>::setup(Containers::Array<Hierarchy>&& hierarchy, Containers::Array<T>&& positionToIndex, Containers::Array<T>&& indexToPosition, StringArray&& objectKeys, Containers::Array<Magnum::Math::Matrix4<Magnum::Float>>&& localTransformations) {
    if(!_header) _header = Containers::pointer<Header>();
    _header->objectCount = T(hierarchy.size());
    _hierarchy = std::move(hierarchy);
    _positionToIndex = std::move(positionToIndex);
    _indexToPosition = std::move(indexToPosition);
    _objectKeys = std::move(objectKeys);
    _localTransformations = std::move(localTransformations);
    _absoluteTransformations = Containers::Array<Magnum::Math::DualQuaternion<Magnum::Float>>{_hierarchy.size()};
    _absoluteScalings = Containers::Array<Magnum::Math::Vector3<Magnum::Float>>{_hierarchy.size()};
    for(auto& scaling: _absoluteScalings) scaling = Magnum::Math::Vector3<Magnum::Float>{1.0f, 1.0f, 1.0f};
}

/* Stub until world placement is computed: every position stays at the
   identity */
template<class T> void DynamicSceneGraph<T>::computeAbsoluteTransformations() {
    _refresh();
}

template class DynamicSceneGraph<unsigned short>;

}}
