/* World placement of the scene graph: local matrices multiplied down the
   tree and stored as a unit dual quaternion plus scaling per position. */

#include <cmath>
#include <sstream>
#include <string>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/DualQuaternion.h>
#include <Magnum/Math/Matrix4.h>

#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using Magnum::Matrix3x3;
using Magnum::Matrix4;
using Magnum::Vector3;

namespace Magnum { namespace Math {

/* Readable failure output; found by GoogleTest through ADL */
void PrintTo(const Matrix4<Float>& m, std::ostream* os) {
    for(std::size_t c = 0; c != 4; ++c)
        *os << (c ? " | " : "") << m[c][0] << ' ' << m[c][1] << ' ' << m[c][2] << ' ' << m[c][3];
}
void PrintTo(const Vector3<Float>& v, std::ostream* os) {
    *os << v[0] << ' ' << v[1] << ' ' << v[2];
}

}}

namespace {

/* "[...]" with the 16 entries column by column, exact for floats */
std::string json(const Matrix4& m) {
    std::ostringstream out;
    out.precision(9);
    for(std::size_t i = 0; i != 16; ++i) out << (i ? "," : "[") << m.data()[i];
    return out.str() + "]";
}

Matrix4 rotationZ(const float degrees) {
    return Matrix4::from(Magnum::Quaternion::rotation(Magnum::Rad{Magnum::Deg{degrees}}, {0.0f, 0.0f, 1.0f}).toMatrix(), {});
}

struct DynamicSceneGraphTest: testing::Test {
    void load(const std::string& json) {
        std::ostringstream warnings;
        {
            Utility::Warning redirect{&warnings};
            ASSERT_TRUE(editor.loadFromString(json.data()));
            graph().computeAbsoluteTransformations();
        }
        loadWarnings = warnings.str();
    }

    Data::DynamicSceneGraph<unsigned short>& graph() { return *editor.scene->sceneGraph; }

    unsigned short position(const char* key) {
        return graph().indexToPosition()[editor.objectLookup->keyToIndex()[Containers::String{key}]];
    }

    /* Rotation columns times scaling, then the translation */
    Matrix4 world(const unsigned short position) {
        const Magnum::DualQuaternion transformation = graph().absoluteTransformations()[position];
        const Vector3 scaling = graph().absoluteScalings()[position];
        const Matrix3x3 rotation = transformation.real().toMatrix();
        return Matrix4::from(Matrix3x3{rotation[0]*scaling.x(), rotation[1]*scaling.y(), rotation[2]*scaling.z()}, transformation.translation());
    }
    Matrix4 world(const char* key) { return world(position(key)); }

    float realLength(const char* key) {
        return graph().absoluteTransformations()[position(key)].real().length();
    }

    QuelmarEditor editor;
    std::string loadWarnings;
};

TEST_F(DynamicSceneGraphTest, ComposesDownTheTree) {
    const Matrix4 a = Matrix4::translation({1.0f, 2.0f, 3.0f})*rotationZ(90.0f);
    const Matrix4 b = Matrix4::translation({1.0f, 0.0f, 0.0f})*rotationZ(30.0f)*Matrix4::scaling(Vector3{2.0f});
    const Matrix4 c = Matrix4::translation({0.0f, -1.0f, 0.5f});
    /* A sibling listed before its parent still gets the parent's world */
    load(R"({"objects":{"c":{"parent":"b","transformation":)" + json(c) +
        R"(},"a":{"transformation":)" + json(a) +
        R"(},"b":{"parent":"a","transformation":)" + json(b) + "}}}");

    EXPECT_EQ(world("a"), a);
    EXPECT_EQ(world("b"), a*b);
    EXPECT_EQ(world("c"), a*b*c);
    EXPECT_EQ(graph().absoluteScalings()[position("b")], Vector3{2.0f});
    EXPECT_NEAR(realLength("c"), 1.0f, 1.0e-6f);
    /* Another read after a change sees the new local matrix */
    editor.changeManager->pushRemoval("/objects/a/transformation");
    graph().computeAbsoluteTransformations();
    EXPECT_EQ(world("c"), b*c);
}

TEST_F(DynamicSceneGraphTest, RootIsTheIdentity) {
    load(R"({"objects":{"a":{"transformation":[2,0,0,0, 0,2,0,0, 0,0,2,0, 5,6,7,1]}}})");
    EXPECT_EQ(world((unsigned short)0), Matrix4{});
    EXPECT_EQ(graph().absoluteScalings()[0], Vector3{1.0f});
    EXPECT_EQ(world("a"), (Matrix4::translation({5.0f, 6.0f, 7.0f})*Matrix4::scaling(Vector3{2.0f})));
}

TEST_F(DynamicSceneGraphTest, ScalingIsTheColumnLengths) {
    struct {
        const char* name;
        Matrix4 local;
        Vector3 scaling;
        /* Whether what is stored gives back the local matrix */
        bool exact;
    } const rows[]{
        {"rotated and scaled", rotationZ(-40.0f)*Matrix4::scaling({2.0f, 3.0f, 0.5f}), {2.0f, 3.0f, 0.5f}, true},
        {"mirrored in X", Matrix4::scaling({-1.0f, 1.0f, 1.0f}), {-1.0f, 1.0f, 1.0f}, true},
        /* Only X carries the sign, and the rotation takes over the rest */
        {"mirrored in Y", rotationZ(25.0f)*Matrix4::scaling({1.0f, -2.0f, 3.0f}), {-1.0f, 2.0f, 3.0f}, true},
        {"mirrored in all three", Matrix4::scaling({-1.0f, -1.0f, -1.0f}), {-1.0f, 1.0f, 1.0f}, true},
        {"flat in Z", rotationZ(60.0f)*Matrix4::scaling({1.0f, 2.0f, 0.0f}), {1.0f, 2.0f, 0.0f}, true},
        {"flat in X and Y", rotationZ(60.0f)*Matrix4::scaling({0.0f, 0.0f, 4.0f}), {0.0f, 0.0f, 4.0f}, true},
        {"all zero", Matrix4::scaling(Vector3{0.0f}), Vector3{0.0f}, true},
        {"two equal columns", Matrix4{{1.0f, 0.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}}, {1.0f, 1.0f, 1.0f}, false},
        /* Shear can't be stored: Y keeps its length, loses its X part */
        {"sheared", Matrix4{{1.0f, 0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}}, {1.0f, std::sqrt(2.0f), 1.0f}, false},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(R"({"objects":{"a":{"transformation":)" + json(Matrix4::translation({1.0f, -2.0f, 3.0f})*row.local) + "}}}");
        EXPECT_EQ(graph().absoluteScalings()[position("a")], row.scaling);
        EXPECT_NEAR(realLength("a"), 1.0f, 1.0e-6f);
        /* The stored rotation is a rotation, never a mirror */
        EXPECT_NEAR(graph().absoluteTransformations()[position("a")].real().toMatrix().determinant(), 1.0f, 1.0e-5f);
        EXPECT_EQ(world("a").translation(), (Vector3{1.0f, -2.0f, 3.0f}));
        if(row.exact) {
            EXPECT_EQ(world("a"), Matrix4::translation({1.0f, -2.0f, 3.0f})*row.local);
        }
    }
}

TEST_F(DynamicSceneGraphTest, ShearReachesTheChildrenButIsNotStored) {
    /* A rotated child of a non-uniformly scaled parent is sheared; its own
       children still see the full product */
    const Matrix4 a = Matrix4::scaling({2.0f, 1.0f, 1.0f});
    const Matrix4 b = rotationZ(45.0f);
    load(R"({"objects":{"a":{"transformation":)" + json(a) +
        R"(},"b":{"parent":"a","transformation":)" + json(b) +
        R"(},"c":{"parent":"b","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,1,0,1]}}})");
    const float half = std::sqrt(0.5f);
    EXPECT_EQ(world("c").translation(), (Vector3{-2.0f*half, half, 0.0f}));
    EXPECT_NE(world("b"), a*b);
    EXPECT_EQ(world("b")[0], (a*b)[0]);
}

TEST_F(DynamicSceneGraphTest, MalformedTransformationIsTheIdentity) {
    load(R"({"objects":{"a":{"transformation":[1,2,3]},"b":{"parent":"a","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 4,0,0,1]},"c":{"transformation":"x"},"d":{"transformation":[1e39,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}}})");
    /* A number beyond float range counts as no number */
    EXPECT_EQ(loadWarnings,
        "Object a has a transformation that is not 16 numbers, using the identity\n"
        "Object c has a transformation that is not 16 numbers, using the identity\n"
        "Object d has a transformation that is not 16 numbers, using the identity\n");
    EXPECT_EQ(world("d"), Matrix4{});
    EXPECT_EQ(world("a"), Matrix4{});
    EXPECT_EQ(world("c"), Matrix4{});
    EXPECT_EQ(world("b"), Matrix4::translation({4.0f, 0.0f, 0.0f}));
}

}
