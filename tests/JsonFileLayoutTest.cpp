/* Project files laid out as they were written, numbers too */
#include <gtest/gtest.h>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/host/JsonFileLayout.h"

using namespace QuelmarEngine;

namespace {

rapidjson::Document parsed(const std::string& text) {
    rapidjson::Document document;
    JsonParseError error;
    EXPECT_TRUE(parseJson(document, {text.data(), text.size()}, error)) << error.reason.data();
    return document;
}

std::string resaved(const std::string& text) {
    return writeJsonFile(parsed(text), detectJsonFileLayout({text.data(), text.size()}));
}

}

TEST(JsonFileLayoutTest, FilesSaveAsTheyWereWritten) {
    const char* const texts[]{
        /* The default layout */
        "{\n  \"a\": {\n    \"b\": [1, 2.5, \"x\"],\n    \"c\": {},\n    \"d\": []\n  }\n}\n",
        /* Tabs, carriage returns, no final line end, a byte order mark */
        "{\r\n\t\"a\": {\r\n\t\t\"b\": true\r\n\t}\r\n}",
        "\xef\xbb\xbf{\n    \"a\": null\n}\n",
        /* Everything on one line, with and without spaces */
        "{\"a\":{\"b\":[1,{\"c\":2}]}}",
        "{\"a\": {\"b\": [1, {\"c\": 2}]}}\n",
        /* Objects on one line among others, arrays of records over several,
           an array of numbers over several, escaped names on the way */
        ("{\n  \"m\": {\"x\": 1, \"y\": [1, 2]},\n  \"l\": [\n    {\"t\": 1},\n    {\n      \"t\": 2\n    }\n  ],\n"
         "  \"n\": [\n    1,\n    2\n  ],\n  \"e\\n/~\": {\"k\": [3]}\n}\n"),
        /* Numbers keep their kind and value as written; control characters
           and quotes are escaped, the rest kept */
        "[1, -3, 0, 18446744073709551615, -9223372036854775808]\n",
        "[1.0, -3.0, -0.0, 0.1, 0.10000000149011612, -2.5e-08, 1e+300, 18014398509481988.0]\n",
        "[\"\\u0001\\n\\\"\\\\/\xc3\xa9\"]",
    };
    for(const char* const text: texts) {
        SCOPED_TRACE(text);
        EXPECT_EQ(resaved(text), text);
    }
}

TEST(JsonFileLayoutTest, NewValuesFollowTheDefaultRuleInTheFileStyle) {
    const std::string text = "{\n\t\"old\": {\"x\": 1},\n\t\"list\": [\n\t\t1\n\t]\n}";
    rapidjson::Document document = parsed(text);
    const rapidjson::Document added = parsed(R"({"t":[0,1],"c":[{"a":1}]})");
    document.AddMember("new", rapidjson::Value{added, document.GetAllocator()}, document.GetAllocator());
    /* Values at the place of one written on one line take its layout */
    document["list"].PushBack(2, document.GetAllocator());
    document["old"].AddMember("y", 2, document.GetAllocator());
    EXPECT_EQ(writeJsonFile(document, detectJsonFileLayout({text.data(), text.size()})),
        "{\n\t\"old\": {\"x\": 1, \"y\": 2},\n\t\"list\": [\n\t\t1,\n\t\t2\n\t],\n"
        "\t\"new\": {\n\t\t\"t\": [0, 1],\n\t\t\"c\": [\n\t\t\t{\n\t\t\t\t\"a\": 1\n\t\t\t}\n\t\t]\n\t}\n}");
}
