#include <string>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/StaticMap.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;
using testing::Eq;

namespace {

/* A literal with the zero bytes inside it */
template<std::size_t size> std::string text(const char(&data)[size]) {
    return std::string(data, size - 1);
}

/* Counts its destructions and records what it heard */
struct CountingHandler: ChangeHandler {
    CountingHandler(const char* name, std::vector<std::string>& heard, int& destroyed): name{name}, heard{heard}, destroyed{destroyed} {}
    ~CountingHandler() override { ++destroyed; }

    void handle(const Change& change, Containers::ArrayView<const Containers::String> path) override {
        std::string line = std::string{name} + " " + change.path.data() + " [";
        for(const Containers::String& component: path)
            line += std::string{component.data(), component.size()} + "|";
        heard.push_back(line + "]");
    }

    const char* name;
    std::vector<std::string>& heard;
    int& destroyed;
};

}

TEST(StaticMapTest, FindsOnlyWholeKeys) {
    StaticMap<int> map;
    EXPECT_TRUE(map.isCompiled());
    EXPECT_EQ(map.capacity(), 0u);
    map.grow(4);
    map.put("objects", 1);
    map.put("name", 2);
    map.put("", 3);
    EXPECT_FALSE(map.isCompiled());
    map.compile();
    EXPECT_EQ(map.count(), 3u);
    EXPECT_STREQ(map.entries()[0].key, "");
    EXPECT_STREQ(map.entries()[2].key, "objects");

    struct Row {
        const char* key;
        std::size_t n;
        const int* expected;
    };
    const int one = 1, two = 2, three = 3;
    for(const Row& row: std::initializer_list<Row>{
        {"objects", 8, &one},
        {"object", 7, nullptr},
        {"objects2", 9, nullptr},
        /* Comparing without the zero byte finds a key by its prefix */
        {"object", 6, &one},
        {"name", 5, &two},
        {"", 1, &three},
        {"zzz", 4, nullptr},
    }) {
        SCOPED_TRACE(row.key);
        const int* found = map.findn(row.key, row.n);
        if(row.expected) {
            ASSERT_TRUE(found);
            EXPECT_EQ(*found, *row.expected);
        } else EXPECT_FALSE(found);
    }

    /* grow keeps entries, order and the compiled flag */
    map.grow(16);
    EXPECT_EQ(map.capacity(), 20u);
    EXPECT_TRUE(map.isCompiled());
    EXPECT_EQ(*map.findn("name", 5), 2);
    map.clear();
    EXPECT_EQ(map.count(), 0u);
    EXPECT_EQ(map.capacity(), 20u);
    EXPECT_FALSE(map.findn("name", 5));
}

TEST(StaticMapDeathTest, FatalErrors) {
    StaticMap<int> map;
    EXPECT_DEATH(map.put("a", 1), Eq("StaticMap::put(): capacity exhausted.\n"));
    map.grow(1);
    EXPECT_DEATH(map.put(nullptr, 1), Eq("StaticMap::put(): key cannot be nullptr.\n"));
    map.put("a", 1);
    EXPECT_DEATH(map.findn("a", 2), Eq("StaticMap::find(): Map needs to be compiled.\n"));
}

TEST(ChangeHandlerTest, Notification) {
    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a1":{}},"skins":{"s1":{}}})"));
    ChangeManager changes{project};
    std::vector<std::string> heard;
    int destroyed = 0;
    changes.addChangeHandler("parent", Containers::Pointer<ChangeHandler>{new CountingHandler{"parent", heard, destroyed}});
    changes.addChangeHandler("objects", Containers::Pointer<ChangeHandler>{new CountingHandler{"objects", heard, destroyed}});
    changes.addChangeHandler("name", Containers::Pointer<ChangeHandler>{new CountingHandler{"name", heard, destroyed}});

    changes.pushChange("/objects/a1/parent", "p", false);
    changes.pushChange("/skins/s1/joints", "j", false);
    changes.pushChange("/skins/s1/name", "n", false);
    /* A component equal to the key twice calls the handler twice */
    changes.pushChange("/objects/a1/objects", "o", false);
    EXPECT_EQ(heard, (std::vector<std::string>{
        /* Components in path order; the last one keeps the zero byte */
        text("objects /objects/a1/parent [|objects|a1|parent\0|]"),
        text("parent /objects/a1/parent [|objects|a1|parent\0|]"),
        text("name /skins/s1/name [|skins|s1|name\0|]"),
        text("objects /objects/a1/objects [|objects|a1|objects\0|]"),
        text("objects /objects/a1/objects [|objects|a1|objects\0|]"),
    }));

    /* The function form gets its user data; the empty key hears everything */
    std::vector<std::size_t> sizes;
    changes.addChangeHandler("", [](const Change&, Containers::ArrayView<const Containers::String> path, void* userData) {
        static_cast<std::vector<std::size_t>*>(userData)->push_back(path[path.size() - 1].size());
    }, &sizes);
    changes.pushChange("/objects/a1/name", "N", false);
    EXPECT_EQ(sizes, std::vector<std::size_t>{5});
    EXPECT_EQ(heard.back(), text("name /objects/a1/name [|objects|a1|name\0|]"));

    /* Reset destroys every handler, and none hears anything after */
    heard.clear();
    changes.reset(project);
    EXPECT_EQ(destroyed, 3);
    changes.pushChange("/objects/a1/name", "M", false);
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(sizes.size(), 1u);
}

TEST(ChangeHandlerTest, RegistrationGrowsInStepsOf16) {
    ProjectFile project;
    int destroyed = 0;
    std::vector<std::string> heard;
    {
        ChangeManager changes{project};
        EXPECT_EQ(changes.handlers().capacity(), 0u);
        static const char* const keys[]{"k00", "k01", "k02", "k03", "k04", "k05", "k06", "k07", "k08", "k09", "k10", "k11", "k12", "k13", "k14", "k15", "k16"};
        for(std::size_t i = 0; i != 17; ++i) {
            changes.addChangeHandler(keys[16 - i], Containers::Pointer<ChangeHandler>{new CountingHandler{keys[16 - i], heard, destroyed}});
            EXPECT_EQ(changes.handlers().capacity(), i < 16 ? 16u : 32u);
            EXPECT_TRUE(changes.handlers().isCompiled());
        }
        changes.pushChange("/k03/k16", "", false);
        EXPECT_EQ(heard, (std::vector<std::string>{
            text("k03 /k03/k16 [|k03|k16\0|]"),
            text("k16 /k03/k16 [|k03|k16\0|]")}));
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 17);
}

TEST(ChangeHandlerTest, EmptyFunctionThrows) {
    ProjectFile project;
    ChangeManager changes{project};
    changes.addChangeHandler("a", FunctionChangeHandler::Function{}, nullptr);
    EXPECT_THROW(changes.pushChange("/a", "", false), std::bad_function_call);
}

TEST(ChangeHandlerDeathTest, NullHandler) {
    ProjectFile project;
    ChangeManager changes{project};
    changes.addChangeHandler("a", Containers::Pointer<ChangeHandler>{});
    EXPECT_DEATH(changes.pushChange("/a", "", false), Eq("Containers::Pointer: the pointer is null\n"));
}
