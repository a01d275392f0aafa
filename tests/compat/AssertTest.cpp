#include <gtest/gtest.h>

#include <string>

#include <Corrade/Utility/Assert.h>

namespace {

constexpr int InternalAssertLine = __LINE__ + 2;
int internalCheck(int value) {
    CORRADE_INTERNAL_ASSERT(value > 3);
    return value;
}

}

TEST(AssertTest, InternalAssert) {
    EXPECT_EQ(internalCheck(4), 4);
    EXPECT_DEATH(internalCheck(3), "^Assertion value > 3 failed at [^ ]*AssertTest\\.cpp:" + std::to_string(InternalAssertLine) + "\n$");
}
