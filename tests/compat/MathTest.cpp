/* Tests of the Magnum::Math stand-ins against hand-computed values */
#include <cmath>
#include <ostream>

#include <gtest/gtest.h>

#include "Magnum/Magnum.h"
#include "Magnum/Math/DualQuaternion.h"
#include "Magnum/Math/Matrix4.h"
#include "Magnum/Math/Quaternion.h"

/* Readable failure output; found by GoogleTest through ADL */
namespace Magnum { namespace Math {

template<std::size_t size> void printVector(const Vector<size, Float>& v, std::ostream* os) {
    *os << '(';
    for(std::size_t i = 0; i != size; ++i) *os << (i ? ", " : "") << v[i];
    *os << ')';
}
void PrintTo(const Vector3<Float>& v, std::ostream* os) { printVector(v, os); }
void PrintTo(const Vector4<Float>& v, std::ostream* os) { printVector(v, os); }
void PrintTo(const Matrix<3, Float>& m, std::ostream* os) { for(std::size_t i = 0; i != 3; ++i) printVector(m[i], os); }
void PrintTo(const Matrix4<Float>& m, std::ostream* os) { for(std::size_t i = 0; i != 4; ++i) printVector(m[i], os); }
void PrintTo(const Quaternion<Float>& q, std::ostream* os) { printVector(q.vector(), os); *os << ' ' << q.scalar(); }

}}

namespace {

using namespace Magnum;

const Matrix4 Identity4;
/* Not symmetric, with a projective last row */
const Matrix4 General{{2.0f, 1.0f, 0.0f, 3.0f},
                      {1.0f, 3.0f, 2.0f, 0.0f},
                      {0.0f, 1.0f, 4.0f, 1.0f},
                      {5.0f, 0.0f, 1.0f, 2.0f}};

TEST(MatrixTest, Product) {
    const Matrix4 a{{1.0f, 2.0f, 0.0f, 0.0f},
                    {0.0f, 1.0f, 3.0f, 0.0f},
                    {4.0f, 0.0f, 1.0f, 0.0f},
                    {1.0f, 2.0f, 3.0f, 1.0f}};
    const Matrix4 b{{2.0f, 0.0f, 1.0f, 0.0f},
                    {1.0f, 1.0f, 0.0f, 0.0f},
                    {0.0f, 3.0f, 1.0f, 1.0f},
                    {0.0f, 0.0f, 0.0f, 1.0f}};
    EXPECT_EQ(a*b, (Matrix4{{6.0f, 4.0f, 1.0f, 0.0f},
                            {1.0f, 3.0f, 3.0f, 0.0f},
                            {5.0f, 5.0f, 13.0f, 1.0f},
                            {1.0f, 2.0f, 3.0f, 1.0f}}));
    EXPECT_EQ(a*Vector4(1.0f, 2.0f, 3.0f, 4.0f), (Vector4{17.0f, 12.0f, 21.0f, 4.0f}));
}

TEST(MatrixTest, Determinant) {
    EXPECT_EQ(General.determinant(), -136.0f);
    EXPECT_EQ((Matrix3x3{Vector3{2.0f, 0.0f, 1.0f},
                         Vector3{1.0f, 3.0f, 0.0f},
                         Vector3{0.0f, 1.0f, 4.0f}}).determinant(), 25.0f);
    /* Singular: the fourth column is the sum of the first two */
    EXPECT_EQ((Matrix4{{1.0f, 2.0f, 3.0f, 4.0f},
                       {0.0f, 1.0f, 5.0f, 2.0f},
                       {7.0f, 0.0f, 1.0f, 3.0f},
                       {1.0f, 3.0f, 8.0f, 6.0f}}).determinant(), 0.0f);
}

TEST(MatrixTest, Inverted) {
    EXPECT_EQ(General.inverted()*General, Identity4);

    /* Rotation + translation + non-uniform scaling */
    const Matrix4 trs = Matrix4::translation({3.0f, -1.0f, 2.0f})*
        Matrix4::from(Quaternion::rotation(Deg(30.0f), Vector3{0.0f, 0.6f, 0.8f}).toMatrix(), {})*
        Matrix4::scaling({2.0f, 0.5f, 3.0f});
    EXPECT_EQ(trs.inverted()*trs, Identity4);
    EXPECT_EQ(trs.inverted()*Vector4(3.0f, -1.0f, 2.0f, 1.0f), (Vector4{0.0f, 0.0f, 0.0f, 1.0f}));
}

TEST(MatrixTest, FromAndScaling) {
    const Matrix4 m = Matrix4::from({Vector3{1.0f, 2.0f, 3.0f}, Vector3{4.0f, 5.0f, 6.0f}, Vector3{7.0f, 8.0f, 9.0f}},
        {10.0f, 11.0f, 12.0f});
    EXPECT_EQ(m, (Matrix4{{1.0f, 2.0f, 3.0f, 0.0f},
                          {4.0f, 5.0f, 6.0f, 0.0f},
                          {7.0f, 8.0f, 9.0f, 0.0f},
                          {10.0f, 11.0f, 12.0f, 1.0f}}));
    EXPECT_EQ(m.translation(), (Vector3{10.0f, 11.0f, 12.0f}));
    EXPECT_EQ(Matrix4::scaling({2.0f, 3.0f, 4.0f}), (Matrix4{{2.0f, 0.0f, 0.0f, 0.0f},
                                                            {0.0f, 3.0f, 0.0f, 0.0f},
                                                            {0.0f, 0.0f, 4.0f, 0.0f},
                                                            {0.0f, 0.0f, 0.0f, 1.0f}}));
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
    const struct {
        const char* name;
        Float degrees;
        Vector3 axis;
    } data[]{
        {"identity", 0.0f, {1.0f, 0.0f, 0.0f}},
        {"90 about x", 90.0f, {1.0f, 0.0f, 0.0f}},
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
        EXPECT_TRUE(q == expected || q == -expected) << ::testing::PrintToString(q);
        EXPECT_EQ(q.toMatrix(), expected.toMatrix());
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

TEST(DualQuaternionTest, TranslationAndMatrix) {
    const Vector3 translation{1.0f, 2.0f, 3.0f};
    EXPECT_EQ(DualQuaternion::translation(translation).dual(), Quaternion({0.5f, 1.0f, 1.5f}, 0.0f));
    EXPECT_EQ(DualQuaternion::translation(translation).toMatrix(), Matrix4::translation(translation));

    /* Rotate 90 degrees about z, then translate */
    const Quaternion rotation = Quaternion::rotation(Deg(90.0f), {0.0f, 0.0f, 1.0f});
    const DualQuaternion dq = DualQuaternion::translation(translation)*DualQuaternion{rotation};
    EXPECT_EQ(dq.rotation(), rotation);
    EXPECT_EQ(DualQuaternion(dq.real(), dq.dual()).translation(), translation);
    EXPECT_EQ(dq.toMatrix(), (Matrix4{{0.0f, 1.0f, 0.0f, 0.0f},
                                      {-1.0f, 0.0f, 0.0f, 0.0f},
                                      {0.0f, 0.0f, 1.0f, 0.0f},
                                      {1.0f, 2.0f, 3.0f, 1.0f}}));

    /* The other order rotates the translation too */
    const DualQuaternion rotatedFirst = DualQuaternion{rotation}*DualQuaternion::translation(translation);
    EXPECT_EQ(rotatedFirst.translation(), (Vector3{-2.0f, 1.0f, 3.0f}));
    EXPECT_EQ(rotatedFirst.toMatrix(), Matrix4::from(rotation.toMatrix(), {-2.0f, 1.0f, 3.0f}));
}

}
