#include <string>
#include <tuple>
#include <gtest/gtest.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

using namespace Corrade;
using Containers::Array;
using Containers::arrayAppend;
using Containers::arrayCapacity;
using Containers::arrayReserve;
using Containers::arrayResize;

namespace {

/* Counts constructions and destructions, so a test sees every item destroyed
   exactly once and moved rather than copied */
struct Counted {
    static int constructed, destroyed, copied, moved;
    /*implicit*/ Counted(int value = 0): value{value} { ++constructed; }
    Counted(const Counted& other): value{other.value} { ++constructed; ++copied; }
    Counted(Counted&& other) noexcept: value{other.value} { ++constructed; ++moved; }
    ~Counted() { ++destroyed; }
    int value;
};
int Counted::constructed, Counted::destroyed, Counted::copied, Counted::moved;
int alive() { return Counted::constructed - Counted::destroyed; }

int deleterCalls;
std::size_t deletedSize;
void countingDeleter(int* data, std::size_t size) {
    ++deleterCalls;
    deletedSize = size;
    delete[] data;
}

/* Capacity, moves and copies so far, live items and the values */
std::string state(Array<Counted>& a) {
    std::string out = std::to_string(arrayCapacity(a)) + " moved " + std::to_string(Counted::moved) + " copied " + std::to_string(Counted::copied) + " alive " + std::to_string(alive()) + ":";
    for(const Counted& item: a) out += " " + std::to_string(item.value);
    return out;
}

struct ArrayTest: ::testing::Test {
    void SetUp() override { Counted::constructed = Counted::destroyed = Counted::copied = Counted::moved = deleterCalls = 0; }
    void TearDown() override { EXPECT_EQ(alive(), 0); }
};

}

TEST_F(ArrayTest, ReserveNeverShrinksAndConvertsNonGrowable) {
    Array<int> a{new int[3]{1, 2, 3}, 3, countingDeleter};
    EXPECT_EQ(arrayReserve(a, 2), 3u);
    EXPECT_EQ(a.deleter(), countingDeleter);

    /* Capacity, deleter calls and the size they saw, the deleter, size and last item */
    const std::size_t grown = arrayReserve(a, 10);
    EXPECT_EQ(std::make_tuple(grown, deleterCalls, deletedSize, a.deleter(), a.size(), a[2]),
        std::make_tuple(10u, 1, 3u, Containers::ArrayNewAllocator<int>::deleter, 3u, 3));

    const int* const data = a.data();
    const std::size_t kept = arrayReserve(a, 5);
    EXPECT_EQ(std::make_tuple(kept, a.data(), arrayCapacity(a)), std::make_tuple(10u, data, 10u));
}

TEST_F(ArrayTest, ResizeExactlyToSize) {
    /* A non-growable array moves to a growable allocation of exactly the size */
    Array<Counted> a{ValueInit, 2};
    a[0].value = 10; a[1].value = 11;
    arrayResize(a, 3);
    EXPECT_EQ(a.deleter(), Containers::ArrayNewAllocator<Counted>::deleter);
    EXPECT_EQ(state(a), "3 moved 2 copied 0 alive 3: 10 11 0");

    /* Growing past the capacity reallocates to exactly the size, moving */
    arrayResize(a, 5);
    EXPECT_EQ(state(a), "5 moved 5 copied 0 alive 5: 10 11 0 0 0");

    /* Shrinking destroys the items past the size and keeps the capacity;
       growing within it value-initialises in place */
    a[3].value = 13;
    const Counted* const data = a.data();
    arrayResize(a, 1);
    EXPECT_EQ(state(a), "5 moved 5 copied 0 alive 1: 10");
    arrayResize(a, 4);
    EXPECT_EQ(a.data(), data);
    EXPECT_EQ(state(a), "5 moved 5 copied 0 alive 4: 10 0 0 0");
}

TEST_F(ArrayTest, AppendGrowsGeometrically) {
    Array<Counted> a{ValueInit, 1};
    a[0].value = 7;
    const Counted value{8};
    Counted& appended = arrayAppend(a, value);
    EXPECT_EQ(&appended, &a[1]);
    EXPECT_EQ(Counted::copied, 1);
    arrayAppend(a, Counted{9});
    EXPECT_EQ(Counted::copied, 1);

    int reallocations = 0;
    std::size_t previousCapacity = arrayCapacity(a);
    for(int i = 3; i != 1000; ++i) {
        const Counted* const data = a.data();
        arrayAppend(a, Counted{i});
        const std::size_t capacity = arrayCapacity(a);
        ASSERT_GE(capacity, a.size());
        if(a.data() != data) {
            ++reallocations;
            EXPECT_GE(capacity, previousCapacity + previousCapacity/2);
        }
        previousCapacity = capacity;
    }
    EXPECT_LE(reallocations, 20);
    EXPECT_EQ(alive(), 1001);
    EXPECT_EQ(a[0].value + a[1].value + a[2].value, 24);
    EXPECT_EQ(a[999].value, 999);

    /* Appending an item of the array itself survives the reallocation */
    Array<Counted> b;
    arrayAppend(b, Counted{3});
    arrayResize(b, arrayCapacity(b));
    arrayAppend(b, b[0]);
    EXPECT_EQ(b[b.size() - 1].value, 3);
}
