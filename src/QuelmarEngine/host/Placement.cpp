#include "QuelmarEngine/host/Placement.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include <vector>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

using Magnum::Matrix3x3d;
using Magnum::Matrix4d;
using Magnum::Quaterniond;
using Magnum::Vector3d;

constexpr double Pi = 3.14159265358979323846;

/* The unit axis least aligned with the unit vector @p direction, with the
   part along it taken out */
Vector3d perpendicularTo(const Vector3d& direction) {
    std::size_t axis = 0;
    for(std::size_t i = 1; i != 3; ++i)
        if(std::abs(direction[i]) < std::abs(direction[axis])) axis = i;
    Vector3d out;
    out[axis] = 1.0;
    return (out - direction*Magnum::Math::dot(out, direction)).normalized();
}

/* The rotation nearest at hand to @p columns, of determinant 1: columns that
   have a length orthonormalised in order, the last the cross product of the
   other two */
Matrix3x3d rotationOf(const Matrix3x3d& columns, const Vector3d& lengths) {
    const double tiny = std::max({lengths[0], lengths[1], lengths[2]})*1.0e-12;
    std::size_t order[3];
    std::size_t withLength = 0;
    for(std::size_t i = 0; i != 3; ++i) if(lengths[i] > tiny) order[withLength++] = i;
    for(std::size_t i = 0, next = withLength; i != 3; ++i) if(!(lengths[i] > tiny)) order[next++] = i;

    Matrix3x3d out;
    if(withLength > 0) out[order[0]] = columns[order[0]]/lengths[order[0]];
    if(withLength > 1) {
        const Vector3d along{out[order[0]]};
        const Vector3d rest = Vector3d{columns[order[1]]} - along*Magnum::Math::dot(Vector3d{columns[order[1]]}, along);
        /* Twice, as what is left of a column close to the first still leans
           on it by the rounding of the first pass */
        if(rest.length() > lengths[order[1]]*1.0e-12) {
            const Vector3d unit = rest.normalized();
            out[order[1]] = (unit - along*Magnum::Math::dot(unit, along)).normalized();
        } else out[order[1]] = perpendicularTo(along);
    } else if(withLength == 1) out[order[1]] = perpendicularTo(Vector3d{out[order[0]]});
    const std::size_t third = order[2];
    out[third] = Magnum::Math::cross(Vector3d{out[(third + 1) % 3]}, Vector3d{out[(third + 2) % 3]});
    return out;
}

double radians(const double degrees) { return degrees*Pi/180.0; }
double degrees(const double radians) { return radians*180.0/Pi; }

}

Placement placementOf(const Matrix4d& matrix) {
    Placement out;
    out.translation = matrix.translation();
    Matrix3x3d columns = matrix.rotationScaling();
    const bool mirrors = columns.determinant() < 0.0;
    if(mirrors) columns[0] = -columns[0];
    const Vector3d lengths{Vector3d{columns[0]}.length(), Vector3d{columns[1]}.length(), Vector3d{columns[2]}.length()};
    out.scaling = Vector3d{mirrors ? -lengths[0] : lengths[0], lengths[1], lengths[2]};
    out.rotation = Quaterniond::fromMatrix(rotationOf(columns, lengths)).normalized();
    /* One of the two quaternions of a rotation, the same every time */
    if(out.rotation.scalar() < 0.0) out.rotation = -out.rotation;

    const Matrix4d again = matrixOf(out);
    const double largest = std::max({lengths[0], lengths[1], lengths[2]});
    for(std::size_t col = 0; col != 3; ++col) for(std::size_t row = 0; row != 3; ++row)
        out.shears = out.shears || std::abs(again[col][row] - matrix[col][row]) > largest*1.0e-9;
    return out;
}

Matrix4d matrixOf(const Placement& placement) {
    Matrix3x3d rotationScaling = placement.rotation.toMatrix();
    for(std::size_t i = 0; i != 3; ++i) rotationScaling[i] = rotationScaling[i]*placement.scaling[i];
    return Matrix4d::from(rotationScaling, placement.translation);
}

Vector3d eulerDegrees(const Quaterniond& rotation) {
    const Matrix3x3d m = rotation.toMatrix();
    /* Rz·Ry·Rx has -sin(y) in row 2 of column 0, cos(y) times the sines and
       cosines of x and z around it */
    const double sinY = -std::max(-1.0, std::min(1.0, m[0][2]));
    const double cosY = std::sqrt(m[0][0]*m[0][0] + m[0][1]*m[0][1]);
    if(cosY < 1.0e-9) return {0.0, degrees(std::asin(sinY)), degrees(std::atan2(-m[1][0], m[1][1]))};
    return {degrees(std::atan2(m[1][2], m[2][2])), degrees(std::atan2(sinY, cosY)), degrees(std::atan2(m[0][1], m[0][0]))};
}

Quaterniond rotationOfEulerDegrees(const Vector3d& angles) {
    const auto about = [](const double angle, const Vector3d& axis) {
        return Quaterniond::rotation(Magnum::Math::Rad<double>{radians(angle)}, axis);
    };
    return about(angles.z(), {0.0, 0.0, 1.0})*about(angles.y(), {0.0, 1.0, 0.0})*about(angles.x(), {1.0, 0.0, 0.0});
}

Matrix4d localMatrixOf(const rapidjson::Value& record) {
    const rapidjson::Value* const transformation = record.IsObject() ? findMember(record, "transformation") : nullptr;
    if(!transformation || !transformation->IsArray() || transformation->Size() != 16) return Matrix4d{};
    Matrix4d out;
    for(rapidjson::SizeType i = 0; i != 16; ++i) {
        /* The scene can't take a number past single precision either */
        if(!(*transformation)[i].IsNumber() || !(std::abs((*transformation)[i].GetDouble()) <= FLT_MAX)) return Matrix4d{};
        out[i/4][i % 4] = (*transformation)[i].GetDouble();
    }
    return out;
}

Matrix4d worldMatrixOf(QuelmarEditor& editor, const Containers::StringView key, double* const largestTranslation) {
    if(largestTranslation) *largestTranslation = 0.0;
    const ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const auto found = key.isEmpty() ? keyToIndex.end() : keyToIndex.find(Containers::String{key});
    if(found == keyToIndex.end()) return Matrix4d{};
    const auto& graph = *editor.scene->sceneGraph;
    const rapidjson::Value* const objects = findMember(*editor.data.project.document, "objects");
    std::vector<const rapidjson::Value*> chain;
    for(unsigned short position = graph.indexToPosition()[found->second]; position; position = graph.hierarchy()[position].parent)
        chain.push_back(findMember(*objects, graph.objectKeys().get(graph.positionToIndex()[position])));

    Matrix4d world;
    for(auto record = chain.rbegin(); record != chain.rend(); ++record) {
        world = world*localMatrixOf(**record);
        if(largestTranslation) *largestTranslation = std::max(*largestTranslation, world.translation().length());
    }
    return world;
}

}
