#include <tuple>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonWriter.h"

using namespace QuelmarEngine;

namespace {

rapidjson::Document parse(const char* json) {
    rapidjson::Document document;
    document.Parse(json);
    return document;
}

TEST(JsonPointerTest, Parse) {
    const struct { const char* path; bool valid; std::vector<std::string> names; std::vector<std::uint32_t> indices; } data[]{
        {"", true, {}, {}},
        {"/", true, {""}, {JsonPointer::InvalidIndex}},
        {"/objects/a7/name", true, {"objects", "a7", "name"}, {JsonPointer::InvalidIndex, JsonPointer::InvalidIndex, JsonPointer::InvalidIndex}},
        {"/a~1b/c~0d/~01", true, {"a/b", "c~d", "~1"}, {JsonPointer::InvalidIndex, JsonPointer::InvalidIndex, JsonPointer::InvalidIndex}},
        /* Leading zeros, signs and overflow are names, not indices */
        {"/0/12/007/-3/-/4294967295/4294967294", true, {"0", "12", "007", "-3", "-", "4294967295", "4294967294"},
            {0, 12, JsonPointer::InvalidIndex, JsonPointer::InvalidIndex, JsonPointer::InvalidIndex, JsonPointer::InvalidIndex, 4294967294u}},
        {"objects", false, {}, {}},
        {"#/a", false, {}, {}},
        {"/a~2", false, {}, {}},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.path);
        const JsonPointer pointer{row.path};
        ASSERT_EQ(pointer.isValid(), row.valid);
        ASSERT_EQ(pointer.tokenCount(), row.names.size());
        for(std::size_t i = 0; i != row.names.size(); ++i) {
            EXPECT_EQ(std::string(pointer.token(i).name.data(), pointer.token(i).name.size()), row.names[i]);
            EXPECT_EQ(pointer.token(i).index, row.indices[i]);
        }
    }
}

TEST(JsonPointerTest, GetCreateErase) {
    const struct { const char* name; const char* before; const char* path; const char* afterCreate; bool existed; const char* afterErase; } data[]{
        {"member exists", R"({"a":{"b":1}})", "/a/b", R"({"a":{"b":1}})", true, R"({"a":{}})"},
        {"member added last", R"({"a":{"c":1}})", "/a/b", R"({"a":{"c":1,"b":null}})", false, R"({"a":{"c":1}})"},
        {"dash on an object is a name", R"({"o":{}})", "/o/-", R"({"o":{"-":null}})", false, R"({"o":{}})"},
        {"erase keeps member order", R"({"a":1,"b":2,"c":3})", "/b", R"({"a":1,"b":2,"c":3})", true, R"({"a":1,"c":3})"},
        {"erase moves elements down", R"({"l":[10,20,30]})", "/l/1", R"({"l":[10,20,30]})", true, R"({"l":[10,30]})"},
        {"escaped name", R"({"a/b":{"~":1}})", "/a~1b/~0", R"({"a/b":{"~":1}})", true, R"({"a/b":{}})"},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        const JsonPointer pointer{row.path};
        ASSERT_TRUE(pointer.isValid());

        rapidjson::Document document = parse(row.before);
        EXPECT_EQ(pointer.get(document) != nullptr, row.existed);
        bool existed = !row.existed;
        rapidjson::Value& created = pointer.create(document, document.GetAllocator(), &existed);
        EXPECT_EQ(std::make_tuple(existed, pointer.get(document), writeJson(document)), std::make_tuple(row.existed, &created, row.afterCreate));

        rapidjson::Document erased = parse(row.before);
        EXPECT_EQ(pointer.erase(erased), row.existed);
        EXPECT_EQ(writeJson(erased), row.afterErase);
    }

    /* The root can be read and created, never erased */
    rapidjson::Document document = parse("{}");
    const JsonPointer root{""};
    EXPECT_EQ(root.get(document), &document);
    EXPECT_FALSE(root.erase(document));
}

}
