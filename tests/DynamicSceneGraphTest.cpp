/* World placement: local matrices multiplied down the tree, stored as a unit dual quaternion plus scaling */

#include <cmath>
#include <sstream>
#include <vector>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using Magnum::Matrix3x3;
using Magnum::Matrix4;
using Magnum::Vector3;

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
        ASSERT_TRUE(editor.loadFromString(json.data()));
        editor.scene->sceneGraph->computeAbsoluteTransformations();
    }

    /* Position of @p key, the root's for null */
    unsigned short position(const char* key) {
        return key ? editor.scene->sceneGraph->indexToPosition()[editor.objectLookup->keyToIndex()[Containers::String{key}]] : 0;
    }
    Magnum::DualQuaternion transformation(const char* key) { return editor.scene->sceneGraph->absoluteTransformations()[position(key)]; }
    Vector3 scaling(const char* key) { return editor.scene->sceneGraph->absoluteScalings()[position(key)]; }

    /* Rotation columns times scaling, then the translation */
    Matrix4 world(const char* key) {
        const Matrix3x3 rotation = transformation(key).real().toMatrix();
        return Matrix4::from(Matrix3x3{rotation[0]*scaling(key).x(), rotation[1]*scaling(key).y(), rotation[2]*scaling(key).z()}, transformation(key).translation());
    }

    std::ostringstream warnings;
    Utility::Warning redirect{&warnings};
    QuelmarEditor editor;
};

TEST_F(DynamicSceneGraphTest, ComposesDownTheTree) {
    const Matrix4 a = Matrix4::translation({1.0f, 2.0f, 3.0f})*rotationZ(90.0f);
    const Matrix4 b = Matrix4::translation({1.0f, 0.0f, 0.0f})*rotationZ(30.0f)*Matrix4::scaling(Vector3{2.0f});
    const Matrix4 c = Matrix4::translation({0.0f, -1.0f, 0.5f});
    /* A child listed before its parent still gets the parent's world */
    load(R"({"objects":{"c":{"parent":"b","transformation":)" + json(c) + R"(},"a":{"transformation":)" + json(a) +
        R"(},"b":{"parent":"a","transformation":)" + json(b) + "}}}");
    EXPECT_EQ((std::vector<Matrix4>{world(nullptr), world("a"), world("b"), world("c")}), (std::vector<Matrix4>{Matrix4{}, a, a*b, a*b*c}));
    EXPECT_EQ(scaling("b"), Vector3{2.0f});
    /* Another computation after a change sees the new local matrix */
    editor.changeManager->pushRemoval("/objects/a/transformation");
    editor.scene->sceneGraph->computeAbsoluteTransformations();
    EXPECT_EQ(world("c"), b*c);
}

TEST_F(DynamicSceneGraphTest, ScalingIsTheColumnLengths) {
    const Matrix4 sheared{{1.0f, 0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
    /* Whether what is stored gives back the local matrix */
    struct { const char* name; Matrix4 local; Vector3 scaling; bool exact; } const rows[]{
        {"rotated and scaled", rotationZ(-40.0f)*Matrix4::scaling({2.0f, 3.0f, 0.5f}), {2.0f, 3.0f, 0.5f}, true},
        /* A negative determinant puts the sign on X, the rotation takes the rest */
        {"mirrored in Y", rotationZ(25.0f)*Matrix4::scaling({1.0f, -2.0f, 3.0f}), {-1.0f, 2.0f, 3.0f}, true},
        {"mirrored in all three", Matrix4::scaling({-1.0f, -1.0f, -1.0f}), {-1.0f, 1.0f, 1.0f}, true},
        {"flat in Z", rotationZ(60.0f)*Matrix4::scaling({1.0f, 2.0f, 0.0f}), {1.0f, 2.0f, 0.0f}, true},
        {"all zero", Matrix4::scaling(Vector3{0.0f}), Vector3{0.0f}, true},
        /* Shear can't be stored: Y keeps its length, loses its X part */
        {"sheared", sheared, {1.0f, std::sqrt(2.0f), 1.0f}, false},
    };
    const Matrix4 translation = Matrix4::translation({1.0f, -2.0f, 3.0f});
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(R"({"objects":{"a":{"transformation":)" + json(translation*row.local) + "}}}");
        EXPECT_EQ(scaling("a"), row.scaling);
        /* The stored rotation is a unit rotation, never a mirror */
        EXPECT_NEAR(transformation("a").real().length(), 1.0f, 1.0e-6f);
        EXPECT_NEAR(transformation("a").real().toMatrix().determinant(), 1.0f, 1.0e-5f);
        EXPECT_EQ(world("a").translation(), translation.translation());
        if(row.exact) {
            EXPECT_EQ(world("a"), translation*row.local);
        }
    }
}

TEST_F(DynamicSceneGraphTest, ShearReachesTheChildrenButIsNotStored) {
    /* A rotated child of a non-uniformly scaled parent is sheared; its own children see the full product */
    const Matrix4 a = Matrix4::scaling({2.0f, 1.0f, 1.0f});
    const Matrix4 b = rotationZ(45.0f);
    load(R"({"objects":{"a":{"transformation":)" + json(a) + R"(},"b":{"parent":"a","transformation":)" + json(b) +
        R"(},"c":{"parent":"b","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,1,0,1]}}})");
    EXPECT_EQ(world("c").translation(), (Vector3{-2.0f*std::sqrt(0.5f), std::sqrt(0.5f), 0.0f}));
    EXPECT_NE(world("b"), a*b);
    EXPECT_EQ(world("b")[0], (a*b)[0]);
}

TEST_F(DynamicSceneGraphTest, MalformedTransformationIsTheIdentity) {
    /* A number beyond float range counts as no number */
    load(R"({"objects":{"a":{"transformation":[1,2,3]},"b":{"parent":"a","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 4,0,0,1]},)"
        R"("c":{"transformation":"x"},"d":{"transformation":[1e39,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]}}})");
    EXPECT_EQ(warnings.str(),
        "Object a has a transformation that is not 16 numbers, using the identity\n"
        "Object c has a transformation that is not 16 numbers, using the identity\n"
        "Object d has a transformation that is not 16 numbers, using the identity\n");
    for(const char* key: {"a", "c", "d"}) EXPECT_EQ(world(key), Matrix4{}) << key;
    EXPECT_EQ(world("b"), Matrix4::translation({4.0f, 0.0f, 0.0f}));
}

}
