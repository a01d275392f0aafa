/* String arrays and the key hash of the key-to-index map */
#include <cstring>
#include <string>
#include <tuple>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/StringArray.h"
#include "QuelmarEngine/host/StrHash.h"

using namespace QuelmarEngine;

namespace {

TEST(StringArrayTest, AddGetMove) {
    StringArray array{2};
    EXPECT_TRUE(array.isEmpty());
    array.add("one");
    array.add("twofold", 3);
    array.add("");
    /* Growing past the reservation keeps earlier strings, also when adding
       one of its own */
    for(int i = 0; i != 100; ++i) array.add(array.get(0));
    ASSERT_EQ(array.size(), 103);
    EXPECT_EQ(std::string(array.get(1)) + "|" + array.get(2) + "|" + array.get(102), "two||one");

    StringArray moved{std::move(array)};
    EXPECT_EQ(std::make_tuple(moved.size(), array.size()), std::make_tuple(103, 0));
    array = std::move(moved);
    EXPECT_EQ(std::string(array.get(102)), "one");
}

TEST(StringArrayTest, KeyHash) {
    /* The 64-bit hash with seed 0, whatever flags the view carries */
    const char* const key = "obj-12345678901234567890";
    EXPECT_EQ(StrHash{}(key), 0x8f129d9e0e3695dfull);
    EXPECT_EQ(StrHash{}(Containers::StringView{key, std::strlen(key), Containers::StringViewFlag::Global}), 0x8f129d9e0e3695dfull);
    EXPECT_TRUE(StrEq{}(Containers::StringView{"ab", 1}, "a"));
    EXPECT_FALSE(StrEq{}("a", "ab"));
}

}
