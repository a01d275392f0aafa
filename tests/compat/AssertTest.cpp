#include <gtest/gtest.h>

#include <string>

#include <Corrade/Utility/Assert.h>

namespace {

int checkedHalf(int value) {
    CORRADE_ASSERT(value % 2 == 0, "checkedHalf(): expected an even value, got" << value, {});
    return value/2;
}

constexpr int InternalAssertLine = __LINE__ + 2;
int internalCheck(int value) {
    CORRADE_INTERNAL_ASSERT(value > 3);
    return value;
}

constexpr int UnreachableLine = __LINE__ + 3;
int classify(int value) {
    if(value == 0) return 1;
    CORRADE_INTERNAL_ASSERT_UNREACHABLE();
}

}

TEST(AssertTest, PassingAssertionsAreSilent) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(checkedHalf(4), 2);
    EXPECT_EQ(internalCheck(4), 4);
    EXPECT_EQ(classify(0), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(AssertTest, FailingAssertionsDie) {
    EXPECT_DEATH(checkedHalf(3), "^checkedHalf\\(\\): expected an even value, got 3\n$");
    EXPECT_DEATH(internalCheck(3), "^Assertion value > 3 failed at [^ ]*AssertTest\\.cpp:" + std::to_string(InternalAssertLine) + "\n$");
    EXPECT_DEATH(classify(1), "^Reached unreachable code at [^ ]*AssertTest\\.cpp:" + std::to_string(UnreachableLine) + "\n$");
}
