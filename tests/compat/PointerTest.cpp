#include <gtest/gtest.h>

#include <Corrade/Containers/Pointer.h>

using namespace Corrade;
using Containers::Pointer;

namespace {

struct Base {
    static int destroyed;
    virtual ~Base() { ++destroyed; }
    virtual int value() const { return 1; }
};
int Base::destroyed;

struct Derived: Base {
    explicit Derived(int v): v{v} {}
    int value() const override { return v; }
    int v;
};

struct Aggregate {
    int a;
    int b;
};

}

TEST(PointerTest, Ownership) {
    Base::destroyed = 0;
    {
        Pointer<Base> empty;
        EXPECT_TRUE(empty == nullptr);
        EXPECT_TRUE(nullptr == empty);
        EXPECT_FALSE(empty);

        Pointer<Base> p = Containers::pointer<Derived>(5);
        EXPECT_TRUE(p != nullptr);
        EXPECT_EQ(p->value(), 5);
        EXPECT_EQ((*p).value(), 5);

        Pointer<Base> moved = std::move(p);
        EXPECT_EQ(p, nullptr);
        EXPECT_EQ(moved->value(), 5);

        Derived& emplaced = moved.emplace<Derived>(6);
        EXPECT_EQ(Base::destroyed, 1);
        EXPECT_EQ(&emplaced, moved.get());
        EXPECT_EQ(moved->value(), 6);

        Base* released = moved.release();
        EXPECT_EQ(moved, nullptr);
        delete released;
        EXPECT_EQ(Base::destroyed, 2);

        Pointer<Base> raw{new Base};
        EXPECT_EQ(raw->value(), 1);
    }
    EXPECT_EQ(Base::destroyed, 3);

    /* Aggregates are made with braces */
    Pointer<Aggregate> aggregate = Containers::pointer<Aggregate>(3, 4);
    EXPECT_EQ(aggregate->a + aggregate->b, 7);
    aggregate.emplace(5, 6);
    EXPECT_EQ(aggregate->b, 6);
}

TEST(PointerTest, NullAccessDies) {
    Pointer<Aggregate> p;
    const Pointer<Aggregate>& constP = p;
    EXPECT_DEATH(static_cast<void>(p->a), "^Containers::Pointer: the pointer is null\n$");
    EXPECT_DEATH(static_cast<void>((*p).a), "^Containers::Pointer: the pointer is null\n$");
    EXPECT_DEATH(static_cast<void>(constP->a), "^Containers::Pointer: the pointer is null\n$");
}
