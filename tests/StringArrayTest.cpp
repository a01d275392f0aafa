#include <string>
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
    EXPECT_EQ(std::string(array.get(1)), "two");
    EXPECT_EQ(std::string(array.get(2)), "");
    EXPECT_EQ(std::string(array.get(102)), "one");

    StringArray moved{std::move(array)};
    EXPECT_EQ(moved.size(), 103);
    EXPECT_EQ(array.size(), 0);
    array = std::move(moved);
    EXPECT_EQ(std::string(array.get(102)), "one");
}

TEST(StringArrayTest, InvalidIndex) {
    EXPECT_DEATH(StringArray{}.get(0), "^StringArrayView::get\\(\\): invalid index 0 for size 0\n$");
    StringArray array;
    array.add("a");
    EXPECT_DEATH(array.get(1), "^StringArrayView::get\\(\\): invalid index 1 for size 1\n$");
}

TEST(StringArrayTest, KeyHash) {
    const struct {
        const char* key;
        std::size_t hash;
    } data[]{
        {"", 0x0000000000000000ull},
        {"objects", 0xdcf2f7f2a57cee5full},
        {"K1", 0x60206de8f1e2126cull},
        {"obj-12345678901234567890", 0x8f129d9e0e3695dfull},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(StrHash{}(row.key), row.hash);
        /* The view's flag bits don't take part */
        EXPECT_EQ(StrHash{}(Containers::StringView{row.key, std::strlen(row.key), Containers::StringViewFlag::Global}), row.hash);
    }

    ObjectKeyMap map;
    map[Containers::String{"a"}] = 3;
    EXPECT_EQ(map.count(Containers::String{"a"}), 1);
    EXPECT_TRUE(StrEq{}(Containers::StringView{"ab", 1}, "a"));
    EXPECT_FALSE(StrEq{}("a", "ab"));
}

}
