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
template<class M> void printMatrix(const M& m, std::ostream* os) {
    *os << "columns ";
    for(std::size_t i = 0; i != M::Size; ++i) printVector(m[i], os);
}

void PrintTo(const Vector3<Float>& v, std::ostream* os) { printVector(v, os); }
void PrintTo(const Vector4<Float>& v, std::ostream* os) { printVector(v, os); }
void PrintTo(const Matrix<3, Float>& m, std::ostream* os) { printMatrix(m, os); }
void PrintTo(const Matrix4<Float>& m, std::ostream* os) { printMatrix(m, os); }
void PrintTo(const Quaternion<Float>& q, std::ostream* os) {
    printVector(q.vector(), os);
    *os << ' ' << q.scalar();
}

}}

namespace {

using namespace Magnum;

const Matrix4 Identity4;

TEST(VectorTest, ComponentsAndArithmetic) {
    Vector3 a{1.0f, 2.0f, 3.0f};
    EXPECT_EQ(a.x(), 1.0f);
    EXPECT_EQ(a.y(), 2.0f);
    EXPECT_EQ(a[2], 3.0f);
    a.y() = 5.0f;
    EXPECT_EQ(a.data()[1], 5.0f);
    EXPECT_EQ(Vector3{}, Vector3(0.0f));
    EXPECT_EQ(Vector3(2.0f), (Vector3{2.0f, 2.0f, 2.0f}));

    const Vector3 b{1.0f, 2.0f, 3.0f};
    const Vector3 c{4.0f, -5.0f, 6.0f};
    EXPECT_EQ(b + c, (Vector3{5.0f, -3.0f, 9.0f}));
    EXPECT_EQ(b - c, (Vector3{-3.0f, 7.0f, -3.0f}));
    EXPECT_EQ(-b, (Vector3{-1.0f, -2.0f, -3.0f}));
    EXPECT_EQ(b*2.0f, (Vector3{2.0f, 4.0f, 6.0f}));
    EXPECT_EQ(2.0f*b, (Vector3{2.0f, 4.0f, 6.0f}));
    EXPECT_EQ(c/2.0f, (Vector3{2.0f, -2.5f, 3.0f}));
    /* The subclass operators keep the subclass type, so chaining works */
    EXPECT_EQ((b + c).z(), 9.0f);

    Vector3 d = b;
    d += c;
    d -= Vector3{1.0f, 1.0f, 1.0f};
    d *= 2.0f;
    d /= 4.0f;
    EXPECT_EQ(d, (Vector3{2.0f, -2.0f, 4.0f}));

    const Vector4 e{Vector3{1.0f, 2.0f, 3.0f}, 4.0f};
    EXPECT_EQ(e.w(), 4.0f);
    EXPECT_EQ(e.xyz(), (Vector3{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ((e + e).w(), 8.0f);
}

TEST(VectorTest, DotCrossLength) {
    const Vector3 a{1.0f, 2.0f, 3.0f};
    const Vector3 b{4.0f, 5.0f, 6.0f};
    EXPECT_EQ(Math::dot(a, b), 32.0f);
    EXPECT_EQ(a.dot(), 14.0f);

    EXPECT_EQ(Math::cross(a, b), (Vector3{-3.0f, 6.0f, -3.0f}));
    EXPECT_EQ(Math::cross(Vector3{1.0f, 0.0f, 0.0f}, Vector3{0.0f, 1.0f, 0.0f}), (Vector3{0.0f, 0.0f, 1.0f}));
    EXPECT_EQ(Math::cross(Vector3{0.0f, 1.0f, 0.0f}, Vector3{0.0f, 0.0f, 1.0f}), (Vector3{1.0f, 0.0f, 0.0f}));

    EXPECT_EQ((Vector3{1.0f, 2.0f, 2.0f}).length(), 3.0f);
    EXPECT_EQ((Vector3{0.0f, 3.0f, 4.0f}).normalized(), (Vector3{0.0f, 0.6f, 0.8f}));
}

TEST(VectorTest, FuzzyEquality) {
    /* Relative difference below 1e-5 compares equal, above it doesn't */
    EXPECT_EQ((Vector3{1.0f, 1000.0f, 0.0f}), (Vector3{1.000001f, 1000.004f, 0.0f}));
    EXPECT_NE((Vector3{1.0f, 1000.0f, 0.0f}), (Vector3{1.0f, 1000.1f, 0.0f}));
    /* Next to zero the absolute difference counts */
    EXPECT_EQ((Vector3{0.0f, 0.0f, 0.0f}), (Vector3{1.0e-6f, -1.0e-6f, 0.0f}));
    EXPECT_NE((Vector3{0.0f, 0.0f, 0.0f}), (Vector3{1.0e-4f, 0.0f, 0.0f}));
    /* Double has a much smaller epsilon */
    EXPECT_NE((Vector3d{1.0, 0.0, 0.0}), (Vector3d{1.000001, 0.0, 0.0}));
    EXPECT_EQ((Vector3d{1.0, 0.0, 0.0}), (Vector3d{1.0 + 1.0e-15, 0.0, 0.0}));
}

TEST(MatrixTest, ColumnMajorLayout) {
    EXPECT_EQ(Matrix4{}, (Matrix4{{1.0f, 0.0f, 0.0f, 0.0f},
                                  {0.0f, 1.0f, 0.0f, 0.0f},
                                  {0.0f, 0.0f, 1.0f, 0.0f},
                                  {0.0f, 0.0f, 0.0f, 1.0f}}));

    Matrix4 m{{1.0f, 2.0f, 3.0f, 4.0f},
              {5.0f, 6.0f, 7.0f, 8.0f},
              {9.0f, 10.0f, 11.0f, 12.0f},
              {13.0f, 14.0f, 15.0f, 16.0f}};
    EXPECT_EQ(m[1], (Vector4{5.0f, 6.0f, 7.0f, 8.0f}));
    EXPECT_EQ(m[3].xyz(), (Vector3{13.0f, 14.0f, 15.0f}));
    for(int i = 0; i != 16; ++i) EXPECT_EQ(m.data()[i], Float(i + 1));
    m[2].y() = 100.0f;
    EXPECT_EQ(m.data()[9], 100.0f);

    EXPECT_EQ(m.transposed()[0], (Vector4{1.0f, 5.0f, 9.0f, 13.0f}));
}

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
    /* Not commutative: b*a starts with b times a's first column */
    EXPECT_EQ((b*a)[0], (Vector4{4.0f, 2.0f, 1.0f, 0.0f}));
    EXPECT_EQ(a*Identity4, a);

    EXPECT_EQ(a*Vector4(1.0f, 2.0f, 3.0f, 4.0f), (Vector4{17.0f, 12.0f, 21.0f, 4.0f}));
    /* Translation applies to points (w = 1), not to directions (w = 0) */
    const Matrix4 t = Matrix4::translation({1.0f, 2.0f, 3.0f});
    EXPECT_EQ(t*Vector4(1.0f, 1.0f, 1.0f, 1.0f), (Vector4{2.0f, 3.0f, 4.0f, 1.0f}));
    EXPECT_EQ(t*Vector4(1.0f, 1.0f, 1.0f, 0.0f), (Vector4{1.0f, 1.0f, 1.0f, 0.0f}));

    const Matrix3x3 c{Vector3{1.0f, 2.0f, 0.0f}, Vector3{0.0f, 1.0f, 0.0f}, Vector3{3.0f, 0.0f, 1.0f}};
    EXPECT_EQ(c*c, (Matrix3x3{Vector3{1.0f, 4.0f, 0.0f}, Vector3{0.0f, 1.0f, 0.0f}, Vector3{6.0f, 6.0f, 1.0f}}));
}

TEST(MatrixTest, Determinant) {
    EXPECT_EQ(Identity4.determinant(), 1.0f);
    EXPECT_EQ((Matrix4{{1.0f, 2.0f, 0.0f, 0.0f},
                       {0.0f, 1.0f, 3.0f, 0.0f},
                       {4.0f, 0.0f, 1.0f, 0.0f},
                       {1.0f, 2.0f, 3.0f, 1.0f}}).determinant(), 25.0f);
    EXPECT_EQ((Matrix4{{2.0f, 1.0f, 0.0f, 3.0f},
                       {1.0f, 3.0f, 2.0f, 0.0f},
                       {0.0f, 1.0f, 4.0f, 1.0f},
                       {5.0f, 0.0f, 1.0f, 2.0f}}).determinant(), -136.0f);
    EXPECT_EQ((Matrix3x3{Vector3{2.0f, 0.0f, 1.0f},
                         Vector3{1.0f, 3.0f, 0.0f},
                         Vector3{0.0f, 1.0f, 4.0f}}).determinant(), 25.0f);
    /* Swapping two columns flips the sign */
    EXPECT_EQ((Matrix3x3{Vector3{1.0f, 3.0f, 0.0f},
                         Vector3{2.0f, 0.0f, 1.0f},
                         Vector3{0.0f, 1.0f, 4.0f}}).determinant(), -25.0f);
    EXPECT_EQ(Matrix4::scaling({2.0f, 3.0f, 4.0f}).determinant(), 24.0f);

    /* Singular: the fourth column is the sum of the first two */
    EXPECT_EQ((Matrix4{{1.0f, 2.0f, 3.0f, 4.0f},
                       {0.0f, 1.0f, 5.0f, 2.0f},
                       {7.0f, 0.0f, 1.0f, 3.0f},
                       {1.0f, 3.0f, 8.0f, 6.0f}}).determinant(), 0.0f);
}

TEST(MatrixTest, Inverted) {
    /* A known inverse; the matrix isn't symmetric, so a missing transpose
       of the cofactors shows */
    const Matrix3x3 a{Vector3{2.0f, 0.0f, 1.0f},
                      Vector3{1.0f, 3.0f, 0.0f},
                      Vector3{0.0f, 1.0f, 4.0f}};
    EXPECT_EQ(a.inverted(), (Matrix3x3{Vector3{12.0f, 1.0f, -3.0f}/25.0f,
                                       Vector3{-4.0f, 8.0f, 1.0f}/25.0f,
                                       Vector3{1.0f, -2.0f, 6.0f}/25.0f}));

    EXPECT_EQ(Matrix4::scaling({2.0f, 4.0f, 8.0f}).inverted(), Matrix4::scaling({0.5f, 0.25f, 0.125f}));
    EXPECT_EQ(Matrix4::translation({1.0f, -2.0f, 3.0f}).inverted(), Matrix4::translation({-1.0f, 2.0f, -3.0f}));

    /* Rotation + translation + non-uniform scaling */
    const Matrix4 trs = Matrix4::translation({3.0f, -1.0f, 2.0f})*
        Matrix4::from(Quaternion::rotation(Deg(30.0f), Vector3{0.0f, 0.6f, 0.8f}).toMatrix(), {})*
        Matrix4::scaling({2.0f, 0.5f, 3.0f});
    EXPECT_EQ(trs.inverted()*trs, Identity4);
    EXPECT_EQ(trs*trs.inverted(), Identity4);
    EXPECT_EQ(trs.inverted()*Vector4(3.0f, -1.0f, 2.0f, 1.0f), (Vector4{0.0f, 0.0f, 0.0f, 1.0f}));

    /* General matrix with a projective last row */
    const Matrix4 general{{2.0f, 1.0f, 0.0f, 3.0f},
                          {1.0f, 3.0f, 2.0f, 0.0f},
                          {0.0f, 1.0f, 4.0f, 1.0f},
                          {5.0f, 0.0f, 1.0f, 2.0f}};
    EXPECT_EQ(general.inverted()*general, Identity4);
    EXPECT_EQ(general*general.inverted(), Identity4);
}

TEST(MatrixTest, TransformationParts) {
    const Matrix3x3 rotationScaling{Vector3{1.0f, 2.0f, 3.0f},
                                    Vector3{4.0f, 5.0f, 6.0f},
                                    Vector3{7.0f, 8.0f, 9.0f}};
    const Matrix4 m = Matrix4::from(rotationScaling, {10.0f, 11.0f, 12.0f});
    EXPECT_EQ(m, (Matrix4{{1.0f, 2.0f, 3.0f, 0.0f},
                          {4.0f, 5.0f, 6.0f, 0.0f},
                          {7.0f, 8.0f, 9.0f, 0.0f},
                          {10.0f, 11.0f, 12.0f, 1.0f}}));
    EXPECT_EQ(m.rotationScaling(), rotationScaling);
    EXPECT_EQ(m.translation(), (Vector3{10.0f, 11.0f, 12.0f}));
    EXPECT_EQ(m.rotationScaling().diagonal(), (Math::Vector<3, Float>{1.0f, 5.0f, 9.0f}));

    EXPECT_EQ(Matrix4::scaling({2.0f, 3.0f, 4.0f}), (Matrix4{{2.0f, 0.0f, 0.0f, 0.0f},
                                                            {0.0f, 3.0f, 0.0f, 0.0f},
                                                            {0.0f, 0.0f, 4.0f, 0.0f},
                                                            {0.0f, 0.0f, 0.0f, 1.0f}}));
    EXPECT_EQ(Matrix4::translation({1.0f, 2.0f, 3.0f}), Matrix4::from({}, {1.0f, 2.0f, 3.0f}));
}

TEST(QuaternionTest, Basics) {
    EXPECT_EQ(Quaternion{}, Quaternion({}, 1.0f));
    EXPECT_EQ(Quaternion{}.toMatrix(), Matrix3x3{});

    const Quaternion q{{1.0f, 2.0f, 3.0f}, 4.0f};
    EXPECT_EQ(q.vector(), (Vector3{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(q.scalar(), 4.0f);
    EXPECT_EQ(q.conjugated(), Quaternion({-1.0f, -2.0f, -3.0f}, 4.0f));
    EXPECT_EQ(q.dot(), 30.0f);
    EXPECT_EQ(Quaternion({1.0f, 1.0f, 1.0f}, 1.0f).length(), 2.0f);
    EXPECT_EQ(Quaternion({1.0f, 1.0f, 1.0f}, 1.0f).normalized(), Quaternion({0.5f, 0.5f, 0.5f}, 0.5f));

    /* Hamilton product: i*j = k, j*i = -k, i*i = -1 */
    const Quaternion i{{1.0f, 0.0f, 0.0f}, 0.0f};
    const Quaternion j{{0.0f, 1.0f, 0.0f}, 0.0f};
    EXPECT_EQ(i*j, Quaternion({0.0f, 0.0f, 1.0f}, 0.0f));
    EXPECT_EQ(j*i, Quaternion({0.0f, 0.0f, -1.0f}, 0.0f));
    EXPECT_EQ(i*i, Quaternion({}, -1.0f));
    EXPECT_EQ(q*Quaternion({-1.0f, 0.5f, 2.0f}, 3.0f), Quaternion({1.5f, 3.0f, 19.5f}, 6.0f));

    const Quaternion unit = q.normalized();
    EXPECT_EQ(unit*unit.conjugated(), Quaternion{});
}

TEST(QuaternionTest, RotationToMatrix) {
    const Vector3 x{1.0f, 0.0f, 0.0f}, y{0.0f, 1.0f, 0.0f}, z{0.0f, 0.0f, 1.0f};

    /* Counterclockwise 90 degrees: x -> y about z, y -> z about x, z -> x about y */
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), x).toMatrix(), (Matrix3x3{x, z, -y}));
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), y).toMatrix(), (Matrix3x3{-z, y, x}));
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), z).toMatrix(), (Matrix3x3{y, -x, z}));
    EXPECT_EQ(Quaternion::rotation(Deg(90.0f), z).toMatrix()*x, y);

    /* Composition applies the right operand first */
    const Quaternion rz = Quaternion::rotation(Deg(90.0f), z);
    const Quaternion rx = Quaternion::rotation(Deg(90.0f), x);
    EXPECT_EQ((rx*rz).toMatrix(), rx.toMatrix()*rz.toMatrix());
    EXPECT_EQ((rx*rz).toMatrix()*x, z);
    EXPECT_EQ(rz*rz, Quaternion::rotation(Deg(180.0f), z));

    EXPECT_FLOAT_EQ(Float(Rad(Deg(180.0f))), 3.14159265f);
    EXPECT_FLOAT_EQ(Float(Deg(Rad(1.57079633f))), 90.0f);
}

TEST(QuaternionTest, FromMatrix) {
    const Float s2 = std::sqrt(0.5f);
    const Float s3 = std::sqrt(1.0f/3.0f);
    const struct {
        const char* name;
        Float degrees;
        Vector3 axis;
    } data[]{
        {"identity", 0.0f, {1.0f, 0.0f, 0.0f}},
        {"90 about x", 90.0f, {1.0f, 0.0f, 0.0f}},
        {"90 about y", 90.0f, {0.0f, 1.0f, 0.0f}},
        {"-90 about z", -90.0f, {0.0f, 0.0f, 1.0f}},
        {"120 about diagonal", 120.0f, {s3, s3, s3}},
        {"150 about tilted axis", 150.0f, {0.0f, 0.6f, -0.8f}},
        /* The trace is -1 at 180 degrees, so the other branch has to pick
           the axis from the largest diagonal element */
        {"180 about x", 180.0f, {1.0f, 0.0f, 0.0f}},
        {"180 about y", 180.0f, {0.0f, 1.0f, 0.0f}},
        {"180 about z", 180.0f, {0.0f, 0.0f, 1.0f}},
        {"180 about xy diagonal", 180.0f, {s2, -s2, 0.0f}},
        {"180 about tilted axis", 180.0f, {0.48f, 0.6f, 0.64f}},
        {"179 about tilted axis", 179.0f, {0.0f, 0.8f, 0.6f}},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        const Quaternion expected = Quaternion::rotation(Deg(row.degrees), row.axis);
        const Matrix3x3 matrix = expected.toMatrix();
        const Quaternion q = Quaternion::fromMatrix(matrix);
        /* q and -q are the same rotation */
        EXPECT_TRUE(q == expected || q == -expected) << ::testing::PrintToString(q);
        EXPECT_FLOAT_EQ(q.length(), 1.0f);
        EXPECT_EQ(q.toMatrix(), matrix);
    }

    /* A 180 degree rotation given as exact matrix elements */
    const Matrix3x3 flipXY{Vector3{-1.0f, 0.0f, 0.0f}, Vector3{0.0f, -1.0f, 0.0f}, Vector3{0.0f, 0.0f, 1.0f}};
    const Quaternion q = Quaternion::fromMatrix(flipXY);
    EXPECT_TRUE(q == Quaternion({0.0f, 0.0f, 1.0f}, 0.0f) || q == Quaternion({0.0f, 0.0f, -1.0f}, 0.0f)) << ::testing::PrintToString(q);

    /* Double precision goes through the same code */
    const Quaterniond qd = Quaterniond::rotation(Degd(180.0), Vector3d{0.6, 0.0, 0.8});
    const Quaterniond fromd = Quaterniond::fromMatrix(qd.toMatrix());
    EXPECT_TRUE(fromd == qd || fromd == -qd);
}

TEST(DualQuaternionTest, RigidTransformation) {
    const Vector3 translation{1.0f, 2.0f, 3.0f};
    EXPECT_EQ(DualQuaternion{}.toMatrix(), Identity4);
    EXPECT_EQ(DualQuaternion::translation(translation).translation(), translation);
    EXPECT_EQ(DualQuaternion::translation(translation).dual(), Quaternion({0.5f, 1.0f, 1.5f}, 0.0f));
    EXPECT_EQ(DualQuaternion::translation(translation).toMatrix(), Matrix4::translation(translation));

    /* Rotate 90 degrees about z, then translate */
    const Quaternion rotation = Quaternion::rotation(Deg(90.0f), {0.0f, 0.0f, 1.0f});
    const DualQuaternion dq = DualQuaternion::translation(translation)*DualQuaternion{rotation};
    const Matrix4 expected{{0.0f, 1.0f, 0.0f, 0.0f},
                           {-1.0f, 0.0f, 0.0f, 0.0f},
                           {0.0f, 0.0f, 1.0f, 0.0f},
                           {1.0f, 2.0f, 3.0f, 1.0f}};
    EXPECT_EQ(dq.real(), rotation);
    EXPECT_EQ(dq.rotation(), rotation);
    EXPECT_EQ(dq.translation(), translation);
    EXPECT_EQ(dq.toMatrix(), expected);
    EXPECT_EQ(DualQuaternion(dq.real(), dq.dual()), dq);

    /* The other order rotates the translation too */
    const DualQuaternion rotatedFirst = DualQuaternion::rotation(Deg(90.0f), {0.0f, 0.0f, 1.0f})*
        DualQuaternion::translation(translation);
    EXPECT_EQ(rotatedFirst.translation(), (Vector3{-2.0f, 1.0f, 3.0f}));
    EXPECT_EQ(rotatedFirst.toMatrix(), Matrix4::from(rotation.toMatrix(), {-2.0f, 1.0f, 3.0f}));

    /* Back from the matrix, including a 180 degree rotation */
    const DualQuaternion fromMatrix = DualQuaternion::fromMatrix(expected);
    EXPECT_EQ(fromMatrix.translation(), translation);
    EXPECT_EQ(fromMatrix.toMatrix(), expected);
    const Matrix4 flip = Matrix4::from(Quaternion::rotation(Deg(180.0f), {0.6f, 0.8f, 0.0f}).toMatrix(), {-4.0f, 0.5f, 7.0f});
    EXPECT_EQ(DualQuaternion::fromMatrix(flip).translation(), (Vector3{-4.0f, 0.5f, 7.0f}));
    EXPECT_EQ(DualQuaternion::fromMatrix(flip).toMatrix(), flip);
}

}
