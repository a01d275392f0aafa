/* The Magnum::Math stand-ins against hand-computed values. The scene's own
   tests compare results of these same operations with each other, which a
   consistently wrong product or rotation would pass */
#include <cmath>

#include <gtest/gtest.h>

#include "Magnum/Magnum.h"
#include "Magnum/Math/Matrix4.h"
#include "Magnum/Math/Quaternion.h"

namespace {

using namespace Magnum;

const Matrix4 Identity4;
/* Not symmetric, with a projective last row */
const Matrix4 General{{2.0f, 1.0f, 0.0f, 3.0f}, {1.0f, 3.0f, 2.0f, 0.0f}, {0.0f, 1.0f, 4.0f, 1.0f}, {5.0f, 0.0f, 1.0f, 2.0f}};

TEST(MatrixTest, ProductAndInverse) {
    const Matrix4 a{{1.0f, 2.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 3.0f, 0.0f}, {4.0f, 0.0f, 1.0f, 0.0f}, {1.0f, 2.0f, 3.0f, 1.0f}};
    const Matrix4 b{{2.0f, 0.0f, 1.0f, 0.0f}, {1.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 3.0f, 1.0f, 1.0f}, {0.0f, 0.0f, 0.0f, 1.0f}};
    EXPECT_EQ(a*b, (Matrix4{{6.0f, 4.0f, 1.0f, 0.0f}, {1.0f, 3.0f, 3.0f, 0.0f}, {5.0f, 5.0f, 13.0f, 1.0f}, {1.0f, 2.0f, 3.0f, 1.0f}}));
    EXPECT_EQ(a*Vector4(1.0f, 2.0f, 3.0f, 4.0f), (Vector4{17.0f, 12.0f, 21.0f, 4.0f}));

    EXPECT_EQ(General.inverted()*General, Identity4);
    /* Rotation + translation + non-uniform scaling */
    const Matrix4 trs = Matrix4::translation({3.0f, -1.0f, 2.0f})*
        Matrix4::from(Quaternion::rotation(Deg(30.0f), Vector3{0.0f, 0.6f, 0.8f}).toMatrix(), {})*
        Matrix4::scaling({2.0f, 0.5f, 3.0f});
    EXPECT_EQ(trs.inverted()*trs, Identity4);
    EXPECT_EQ(trs.inverted()*Vector4(3.0f, -1.0f, 2.0f, 1.0f), (Vector4{0.0f, 0.0f, 0.0f, 1.0f}));
}

TEST(QuaternionTest, RotationToMatrix) {
    /* Counterclockwise 90 degrees: x -> y about z, y -> z about x, z -> x about y */
    const Vector3 x{1.0f, 0.0f, 0.0f}, y{0.0f, 1.0f, 0.0f}, z{0.0f, 0.0f, 1.0f};
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), x).toMatrix(), (Matrix3x3{x, z, -y}));
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), y).toMatrix(), (Matrix3x3{-z, y, x}));
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), z).toMatrix(), (Matrix3x3{y, -x, z}));
}

TEST(QuaternionTest, FromMatrixRoundTrip) {
    const Float s2 = std::sqrt(0.5f);
    const Float s3 = std::sqrt(1.0f/3.0f);
    const struct { const char* name; Float degrees; Vector3 axis; } data[]{
        {"identity", 0.0f, {1.0f, 0.0f, 0.0f}},
        {"-90 about z", -90.0f, {0.0f, 0.0f, 1.0f}},
        {"120 about diagonal", 120.0f, {s3, s3, s3}},
        {"150 about tilted axis", 150.0f, {0.0f, 0.6f, -0.8f}},
        /* The trace is -1 at 180 degrees, so the axis has to come from the
           largest diagonal element */
        {"180 about x", 180.0f, {1.0f, 0.0f, 0.0f}},
        {"180 about y", 180.0f, {0.0f, 1.0f, 0.0f}},
        {"180 about z", 180.0f, {0.0f, 0.0f, 1.0f}},
        {"180 about xy diagonal", 180.0f, {s2, -s2, 0.0f}},
        {"180 about tilted axis", 180.0f, {0.48f, 0.6f, 0.64f}},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        const Quaternion expected = Quaternion::rotation(Deg(row.degrees), row.axis);
        const Quaternion q = Quaternion::fromMatrix(expected.toMatrix());
        /* q and -q are the same rotation */
        EXPECT_TRUE(q == expected || q == -expected);
        EXPECT_TRUE(q.toMatrix() == expected.toMatrix());
    }
}

TEST(QuaternionDeathTest, FromMatrixWantsRotation) {
    /* A determinant 3e-5 away from 1 is too far; the matrix is printed row by row */
    EXPECT_DEATH(Quaternion::fromMatrix(Matrix3x3{Vector3{1.0f, 0.0f, 0.0f}, Vector3{0.0f, 1.0f, 0.0f}, Vector3{0.0f, 0.5f, 1.00003f}}),
        ::testing::Eq("Math::Quaternion::fromMatrix(): the matrix is not a rotation:\n"
                      "Matrix(1, 0, 0,\n"
                      "       0, 1, 0.5,\n"
                      "       0, 0, 1.00003)\n"));
}

}
