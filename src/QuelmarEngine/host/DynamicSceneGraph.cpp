#include "QuelmarEngine/host/DynamicSceneGraph.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Utility/Debug.h>

namespace QuelmarEngine { namespace Data {

namespace {

typedef Magnum::Math::Matrix4<Magnum::Float> Matrix4;
typedef Magnum::Math::Matrix3x3<Magnum::Float> Matrix3x3;
typedef Magnum::Math::Vector3<Magnum::Float> Vector3;
typedef Magnum::Math::Quaternion<Magnum::Float> Quaternion;

/* Grows geometrically; arrayResize alone would reallocate to the exact size
   every time a position is added */
template<class U> void resizeGrowing(Containers::Array<U>& array, const std::size_t size) {
    const std::size_t capacity = Containers::arrayCapacity(array);
    if(size > capacity) Containers::arrayReserve(array, size > 2*capacity ? size : 2*capacity);
    Containers::arrayResize(array, size);
}

/* A unit vector perpendicular to the unit vector @p direction: the axis
   least aligned with it, with the part along it taken out */
Vector3 perpendicularTo(const Vector3& direction) {
    std::size_t axis = 0;
    for(std::size_t i = 1; i != 3; ++i)
        if(std::abs(direction[i]) < std::abs(direction[axis])) axis = i;
    Vector3 out;
    out[axis] = 1.0f;
    return (out - direction*Magnum::Math::dot(out, direction)).normalized();
}

/* The rotation nearest at hand to @p columns, whose determinant is not
   negative. Columns that have a length are orthonormalised in order and the
   last column is always the cross product of the other two, so shear is
   dropped and a column of zero (or next to zero) length still gets a unit
   axis that keeps the basis right-handed. */
Matrix3x3 rotationOf(const Matrix3x3& columns, const Vector3& lengths) {
    /* Put the columns that have a length first; shorter than a millionth
       of the longest counts as none, they carry no usable direction */
    const Magnum::Float tiny = std::max(lengths[0], std::max(lengths[1], lengths[2]))*1.0e-6f;
    std::size_t order[3];
    std::size_t withLength = 0;
    for(std::size_t i = 0; i != 3; ++i) if(lengths[i] > tiny) order[withLength++] = i;
    for(std::size_t i = 0, next = withLength; i != 3; ++i) if(!(lengths[i] > tiny)) order[next++] = i;
    const std::size_t first = order[0], second = order[1], third = order[2];

    Matrix3x3 out;
    if(withLength > 0) out[first] = columns[first]/lengths[first];

    if(withLength > 1) {
        const Vector3 along{out[first]};
        const Vector3 rest = Vector3{columns[second]} - along*Magnum::Math::dot(Vector3{columns[second]}, along);
        const Magnum::Float restLength = rest.length();
        /* Parallel to the first column: nothing of its own is left.
           Otherwise once more, as what is left of a column close to the
           first still leans on it by the rounding of the first pass, and
           quaternion conversion wants a determinant within 3e-5 of 1 */
        if(restLength > lengths[second]*1.0e-6f) {
            const Vector3 unit = rest/restLength;
            out[second] = (unit - along*Magnum::Math::dot(unit, along)).normalized();
        } else out[second] = perpendicularTo(along);
    } else if(withLength == 1) out[second] = perpendicularTo(Vector3{out[first]});
    /* With no column of any length the identity's columns stay */

    /* r0 = r1 x r2, r1 = r2 x r0, r2 = r0 x r1 */
    out[third] = Magnum::Math::cross(Vector3{out[(third + 1) % 3]}, Vector3{out[(third + 2) % 3]});
    return out;
}

/* Rotation and translation as a unit dual quaternion, plus the column
   lengths as scaling; a mirroring matrix gets a negative X scaling */
void decompose(const Matrix4& matrix, Magnum::Math::DualQuaternion<Magnum::Float>& transformation, Vector3& scaling) {
    Matrix3x3 columns = matrix.rotationScaling();
    if(columns.determinant() < 0.0f) {
        columns[0] = -columns[0];
        scaling = Vector3{-columns[0].length(), columns[1].length(), columns[2].length()};
    } else scaling = Vector3{columns[0].length(), columns[1].length(), columns[2].length()};

    const Vector3 lengths{std::abs(scaling[0]), scaling[1], scaling[2]};
    const Quaternion real = Quaternion::fromMatrix(rotationOf(columns, lengths)).normalized();
    transformation = {real, Quaternion{matrix.translation()/2.0f}*real};
}

}

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
    placeLocalTransformations();
    return _localTransformations;
}

template<class T> void DynamicSceneGraph<T>::placeLocalTransformations() const {
    const std::size_t end = std::min(_movedEnd, _localTransformations.size());
    for(std::size_t p = _movedBegin; p < end; ++p) _localTransformations[p] = _localByIndex[_positionToIndex[p]];
    _movedBegin = _movedEnd = 0;
}

template<class T> void DynamicSceneGraph<T>::setLocalTransformation(const std::size_t index, const Matrix4& transformation) {
    _localByIndex[index] = transformation;
    /* A position not yet laid out again may be another object's; marking
       it too costs nothing wrong */
    const std::size_t position = _indexToPosition[index];
    if(position && position < _hierarchy.size()) markLocalTransformationsMoved(position, position + 1);
}

template<class T> void DynamicSceneGraph<T>::markLocalTransformationsMoved(const std::size_t begin, const std::size_t end) {
    if(begin >= end) return;
    if(_movedBegin == _movedEnd) {
        _movedBegin = begin;
        _movedEnd = end;
    } else {
        _movedBegin = std::min(_movedBegin, begin);
        _movedEnd = std::max(_movedEnd, end);
    }
}

template<class T> Containers::ArrayView<const Magnum::Math::DualQuaternion<Magnum::Float>> DynamicSceneGraph<T>::absoluteTransformations() const {
    _refresh();
    return _absoluteTransformations;
}

template<class T> Containers::ArrayView<const Magnum::Math::Vector3<Magnum::Float>> DynamicSceneGraph<T>::absoluteScalings() const {
    _refresh();
    return _absoluteScalings;
}

template<class T> void DynamicSceneGraph<T>::setup(Containers::Array<Hierarchy>&& hierarchy, Containers::Array<T>&& positionToIndex, Containers::Array<T>&& indexToPosition, const StringArrayView& objectKeys, Containers::Array<Magnum::Math::Matrix4<Magnum::Float>>&& localTransformations) {
    if(!_header) _header = Containers::pointer<Header>();
    _header->objectCount = T(hierarchy.size());
    _hierarchy = std::move(hierarchy);
    _positionToIndex = std::move(positionToIndex);
    _indexToPosition = std::move(indexToPosition);
    _objectKeys = KeyTable{objectKeys};
    _localTransformations = std::move(localTransformations);
    _movedBegin = _movedEnd = 0;
    _localByIndex = Containers::Array<Matrix4>{ValueInit, _indexToPosition.size()};
    for(std::size_t p = 0; p != _positionToIndex.size(); ++p) _localByIndex[_positionToIndex[p]] = _localTransformations[p];
    _absoluteTransformations = Containers::Array<Magnum::Math::DualQuaternion<Magnum::Float>>{ValueInit, _hierarchy.size()};
    _absoluteScalings = Containers::Array<Magnum::Math::Vector3<Magnum::Float>>{ValueInit, _hierarchy.size()};
    for(auto& scaling: _absoluteScalings) scaling = Vector3{1.0f, 1.0f, 1.0f};
}

template<class T> void DynamicSceneGraph<T>::resize(const std::size_t positionCount, const std::size_t indexCount) {
    if(!_header) _header = Containers::pointer<Header>();
    _header->objectCount = T(positionCount);
    const std::size_t before = _absoluteScalings.size();
    resizeGrowing(_hierarchy, positionCount);
    resizeGrowing(_positionToIndex, positionCount);
    resizeGrowing(_localTransformations, positionCount);
    resizeGrowing(_absoluteTransformations, positionCount);
    resizeGrowing(_absoluteScalings, positionCount);
    for(std::size_t p = before; p < positionCount; ++p) _absoluteScalings[p] = Vector3{1.0f, 1.0f, 1.0f};
    resizeGrowing(_indexToPosition, indexCount);
    resizeGrowing(_localByIndex, indexCount);
    _objectKeys.resize(indexCount);
}

template<class T> void DynamicSceneGraph<T>::computeAbsoluteTransformations() {
    _refresh();
    placeLocalTransformations();
    const std::size_t count = _hierarchy.size();
    if(!count) return;

    /* Full world matrices, so that the shear a non-uniform scaling makes
       under a rotated child still reaches the grandchildren; only what is
       stored per position drops it */
    Containers::Array<Matrix4> world{ValueInit, count};
    _absoluteTransformations[0] = {};
    _absoluteScalings[0] = Vector3{1.0f, 1.0f, 1.0f};
    /* Positions are pre-order, so a parent's world is ready before its
       children's */
    for(std::size_t p = 1; p != count; ++p) {
        world[p] = world[_hierarchy[p].parent]*_localTransformations[p];
        decompose(world[p], _absoluteTransformations[p], _absoluteScalings[p]);
    }
}

template class DynamicSceneGraph<unsigned short>;

}}
