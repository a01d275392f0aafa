#include <gtest/gtest.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

using namespace Corrade;
using Containers::Array;
using Containers::ArrayView;

namespace {

/* Counts every construction and destruction, so a test can check that each
   item is destroyed exactly once and nothing is copied when it should move */
struct Counted {
    static int constructed, destroyed, copied, moved;
    static void reset() { constructed = destroyed = copied = moved = 0; }
    static int alive() { return constructed - destroyed; }

    /*implicit*/ Counted(int value = 0): value{value} { ++constructed; }
    Counted(const Counted& other): value{other.value} { ++constructed; ++copied; }
    Counted(Counted&& other) noexcept: value{other.value} { other.value = -1; ++constructed; ++moved; }
    ~Counted() { ++destroyed; }
    Counted& operator=(const Counted&) = default;
    Counted& operator=(Counted&&) = default;

    int value;
};
int Counted::constructed, Counted::destroyed, Counted::copied, Counted::moved;

class ArrayTest: public ::testing::Test {
    protected:
        void SetUp() override { Counted::reset(); }
        void TearDown() override { EXPECT_EQ(Counted::alive(), 0); }
};

int deleterCalls;
int* deletedData;
std::size_t deletedSize;
void countingDeleter(int* data, std::size_t size) {
    ++deleterCalls;
    deletedData = data;
    deletedSize = size;
    delete[] data;
}

int sum(ArrayView<const int> view) {
    int out = 0;
    for(int i: view) out += i;
    return out;
}

}

TEST_F(ArrayTest, ConstructionAndOwnership) {
    {
        Array<int> empty;
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_EQ(empty.data(), nullptr);

        Array<int> zeroes{3};
        ASSERT_EQ(zeroes.size(), 3u);
        EXPECT_EQ(zeroes[0] | zeroes[1] | zeroes[2], 0);

        Array<Counted> noInit{NoInit, 2};
        EXPECT_EQ(Counted::constructed, 0);
        new(&noInit[0]) Counted{4};
        new(&noInit[1]) Counted{5};
        EXPECT_EQ(noInit[1].value, 5);

        Array<Counted> moved = std::move(noInit);
        EXPECT_TRUE(noInit.isEmpty());
        EXPECT_EQ(moved.size(), 2u);
        EXPECT_EQ(Counted::alive(), 2);
    }
    EXPECT_EQ(Counted::destroyed, 2);

    deleterCalls = 0;
    int* const data = new int[4]{1, 2, 3, 4};
    {
        Array<int> a{data, 4, countingDeleter};
        EXPECT_EQ(a.deleter(), countingDeleter);
        Array<int> b;
        b = std::move(a);
        EXPECT_EQ(deleterCalls, 0);
    }
    EXPECT_EQ(deleterCalls, 1);
    EXPECT_EQ(deletedData, data);
    EXPECT_EQ(deletedSize, 4u);

    Array<int> c{new int[2]{7, 8}, 2, countingDeleter};
    int* const released = c.release();
    EXPECT_TRUE(c.isEmpty());
    EXPECT_EQ(c.deleter(), nullptr);
    EXPECT_EQ(released[1], 8);
    delete[] released;
    EXPECT_EQ(deleterCalls, 1);
}

TEST_F(ArrayTest, Views) {
    Array<int> a{3};
    a[0] = 1; a[1] = 2; a[2] = 4;
    ArrayView<int> view = a;
    view[1] = 10;
    EXPECT_EQ(a[1], 10);
    EXPECT_EQ(sum(a), 15);
    EXPECT_EQ(sum(view), 15);

    const Array<int>& constA = a;
    ArrayView<const int> constView = constA;
    EXPECT_EQ(constView.data(), a.data());

    int cArray[]{5, 6};
    EXPECT_EQ(sum(cArray), 11);
    EXPECT_EQ(sum({cArray + 1, 1}), 6);
    EXPECT_TRUE(ArrayView<int>{}.isEmpty());
}

TEST_F(ArrayTest, ReserveNeverShrinksAndConverts) {
    deleterCalls = 0;
    Array<int> a{new int[3]{1, 2, 3}, 3, countingDeleter};
    EXPECT_EQ(Containers::arrayCapacity(a), 3u);

    /* Asking for no more than the size keeps the non-growable array */
    EXPECT_EQ(Containers::arrayReserve(a, 2), 3u);
    EXPECT_EQ(a.deleter(), countingDeleter);

    EXPECT_EQ(Containers::arrayReserve(a, 10), 10u);
    EXPECT_EQ(deleterCalls, 1);
    EXPECT_EQ(deletedSize, 3u);
    EXPECT_EQ(a.deleter(), Containers::ArrayNewAllocator<int>::deleter);
    EXPECT_EQ(a.size(), 3u);
    EXPECT_EQ(a[2], 3);

    const int* const data = a.data();
    EXPECT_EQ(Containers::arrayReserve(a, 5), 10u);
    EXPECT_EQ(Containers::arrayReserve(a, 10), 10u);
    EXPECT_EQ(a.data(), data);
    EXPECT_EQ(Containers::arrayCapacity(a), 10u);
}

TEST_F(ArrayTest, ResizeExactlyToSize) {
    Array<Counted> a;
    Containers::arrayResize(a, 3);
    EXPECT_EQ(a.size(), 3u);
    EXPECT_EQ(Containers::arrayCapacity(a), 3u);
    EXPECT_EQ(Counted::alive(), 3);
    a[0].value = 10; a[1].value = 11; a[2].value = 12;

    /* Growing past the capacity reallocates to exactly the size and moves */
    Counted::moved = 0;
    Containers::arrayResize(a, 5);
    EXPECT_EQ(Containers::arrayCapacity(a), 5u);
    EXPECT_EQ(Counted::moved, 3);
    EXPECT_EQ(Counted::copied, 0);
    EXPECT_EQ(Counted::alive(), 5);
    EXPECT_EQ(a[2].value, 12);
    EXPECT_EQ(a[4].value, 0);

    /* Shrinking destroys the items past the size and keeps the capacity */
    const Counted* const data = a.data();
    Containers::arrayResize(a, 1);
    EXPECT_EQ(Counted::alive(), 1);
    EXPECT_EQ(a.data(), data);
    EXPECT_EQ(Containers::arrayCapacity(a), 5u);

    /* Growing within the capacity value-initialises without moving */
    Counted::moved = 0;
    Containers::arrayResize(a, 4);
    EXPECT_EQ(a.data(), data);
    EXPECT_EQ(Counted::moved, 0);
    EXPECT_EQ(a[0].value, 10);
    EXPECT_EQ(a[3].value, 0);
    EXPECT_EQ(Counted::alive(), 4);

    /* A non-growable array is moved to an exact growable allocation */
    Array<int> b{2};
    b[1] = 42;
    Containers::arrayResize(b, 1);
    EXPECT_EQ(b.deleter(), Containers::ArrayNewAllocator<int>::deleter);
    EXPECT_EQ(Containers::arrayCapacity(b), 1u);
    Containers::arrayResize(b, 3);
    EXPECT_EQ(b[1], 0);
    EXPECT_EQ(b[2], 0);
}

TEST_F(ArrayTest, AppendGrowsGeometrically) {
    Array<Counted> a;
    const Counted value{7};
    Counted& first = Containers::arrayAppend(a, value);
    EXPECT_EQ(&first, &a[0]);
    EXPECT_EQ(first.value, 7);
    EXPECT_EQ(Counted::copied, 1);

    Counted& second = Containers::arrayAppend(a, Counted{8});
    EXPECT_EQ(&second, &a[1]);
    EXPECT_EQ(Counted::copied, 1);

    int reallocations = 0;
    std::size_t previousCapacity = Containers::arrayCapacity(a);
    for(int i = 2; i != 1000; ++i) {
        const Counted* const data = a.data();
        Containers::arrayAppend(a, Counted{i});
        const std::size_t capacity = Containers::arrayCapacity(a);
        ASSERT_GE(capacity, a.size());
        if(a.data() != data) {
            ++reallocations;
            EXPECT_GE(capacity, previousCapacity + previousCapacity/2);
        }
        previousCapacity = capacity;
    }
    EXPECT_LE(reallocations, 20);
    EXPECT_EQ(a.size(), 1000u);
    EXPECT_EQ(Counted::alive(), 1001);
    EXPECT_EQ(a[999].value, 999);
    EXPECT_EQ(a[1].value, 8);

    /* Appending an item of the array itself survives the reallocation */
    Array<Counted> b;
    Containers::arrayAppend(b, Counted{3});
    Containers::arrayResize(b, Containers::arrayCapacity(b));
    Containers::arrayAppend(b, b[0]);
    EXPECT_EQ(b[b.size() - 1].value, 3);
}

TEST_F(ArrayTest, AppendConvertsNonGrowable) {
    deleterCalls = 0;
    int* const data = new int[2]{1, 2};
    Array<int> a{data, 2, countingDeleter};
    Containers::arrayAppend(a, 3);
    EXPECT_EQ(deleterCalls, 1);
    EXPECT_EQ(deletedData, data);
    ASSERT_EQ(a.size(), 3u);
    EXPECT_EQ(a[0] + a[1] + a[2], 6);
    EXPECT_GE(Containers::arrayCapacity(a), 3u);

    /* Each item is destroyed once, including those of the old array */
    {
        Array<Counted> b{2};
        Containers::arrayAppend(b, Counted{1});
        EXPECT_EQ(Counted::alive(), 3);
    }
}
