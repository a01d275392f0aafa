#include <cstring>
#include <string>
#include <tuple>
#include <gmock/gmock.h>

#include "QuelmarEngine/StaticMap.h"

using namespace QuelmarEngine;
using testing::Eq;

TEST(StaticMapTest, FindsOnlyWholeKeys) {
    StaticMap<int> map;
    map.grow(4);
    map.put("objects", 1);
    map.put("name", 2);
    map.put("", 3);
    EXPECT_FALSE(map.isCompiled());
    map.compile();
    /* Sorted by key */
    EXPECT_EQ(std::string{map.entries()[0].key} + "|" + map.entries()[1].key + "|" + map.entries()[2].key, "|name|objects");
    /* With n counting the zero byte only a whole key matches, without it a
       key is found by its prefix; 0 is for none */
    const struct { const char* key; std::size_t n; int expected; } rows[]{
        {"objects", 8, 1}, {"object", 7, 0}, {"objects2", 9, 0}, {"name", 5, 2}, {"", 1, 3}, {"zzz", 4, 0}, {"object", 6, 1},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.key);
        const int* const found = map.findn(row.key, row.n);
        EXPECT_EQ(found ? *found : 0, row.expected);
        /* find() of a key that isn't zero-terminated is findn() of a whole key */
        if(row.n == std::strlen(row.key) + 1) {
            const std::string text = std::string{row.key} + "/more";
            const int* const whole = map.find({text.data(), std::strlen(row.key)});
            EXPECT_EQ(whole ? *whole : 0, row.expected);
        }
    }
    /* grow and clear keep the compiled state, clear keeps the capacity */
    map.grow(16);
    map.clear();
    EXPECT_EQ(std::make_tuple(map.isCompiled(), map.capacity(), map.findn("name", 5)), std::make_tuple(true, 20u, nullptr));
}

TEST(StaticMapDeathTest, FatalErrors) {
    StaticMap<int> map;
    EXPECT_DEATH(map.put("a", 1), Eq("StaticMap::put(): capacity exhausted.\n"));
    map.grow(1);
    EXPECT_DEATH(map.put(nullptr, 1), Eq("StaticMap::put(): key cannot be nullptr.\n"));
    map.put("a", 1);
    EXPECT_DEATH(map.findn("a", 2), Eq("StaticMap::find(): Map needs to be compiled.\n"));
}
