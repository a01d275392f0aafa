#include <gtest/gtest.h>

#include <Corrade/Containers/Pointer.h>

TEST(PointerTest, NullAccessDies) {
    struct Aggregate { int a; };
    Corrade::Containers::Pointer<Aggregate> p;
    EXPECT_DEATH(static_cast<void>(p->a), "^Containers::Pointer: the pointer is null\n$");
}
