#include <string>
#include <gtest/gtest.h>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"

using namespace QuelmarEngine;

namespace {

TEST(JsonReaderTest, Refusals) {
    const struct {
        const char* name;
        std::string text;
        std::size_t offset;
        const char* reason;
    } data[]{
        {"unclosed", "{\"a\":1", 6, "Missing a comma or '}' after an object member."},
        {"trailing garbage", "{} x", 3, "The document root must not be followed by other values."},
        {"NUL inside", std::string{"{}\0{}", 5}, 2, "unexpected NUL byte"},
        {"too deep", std::string(257, '[') + std::string(257, ']'), 256, "nested deeper than 256 levels"},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        rapidjson::Document document;
        JsonParseError error;
        EXPECT_FALSE(parseJson(document, {row.text.data(), row.text.size()}, error));
        EXPECT_TRUE(document.IsNull());
        EXPECT_EQ(error.offset, row.offset);
        EXPECT_EQ(std::string(error.reason.data(), error.reason.size()), row.reason);
    }
}

TEST(JsonReaderTest, DeepAndLargeInput) {
    /* Exactly at the bound is fine */
    const std::string deepest = std::string(256, '[') + std::string(256, ']');
    rapidjson::Document document;
    JsonParseError error;
    EXPECT_TRUE(parseJson(document, {deepest.data(), deepest.size()}, error));

    /* A million brackets neither recurse nor get far */
    const std::string million(1000000, '[');
    EXPECT_FALSE(parseJson(document, {million.data(), million.size()}, error));
    EXPECT_EQ(error.offset, 256);

    /* Parsing a value that was printed gives the value back */
    const char* json = R"({"n":[0.1,1.0,-0.0,1e300,5e-324,18446744073709551615,-9223372036854775808],"s":"\u0001\"\\/é"})";
    ASSERT_TRUE(parseJson(document, json, error));
    const std::string printed = writeJson(document);
    rapidjson::Document again;
    ASSERT_TRUE(parseJson(again, {printed.data(), printed.size()}, error));
    EXPECT_TRUE(again == document);
    EXPECT_TRUE(again["n"][1].IsDouble());
    EXPECT_EQ(printed.substr(0, 15), R"({"n":[0.1,1.0,-)");
}

}
