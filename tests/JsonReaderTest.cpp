#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <gtest/gtest.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"

using namespace QuelmarEngine;

namespace {

const std::string Zeros400(400, '0');

TEST(JsonReaderTest, ReadExactlyOrRefused) {
    /* The document printed, or where and why it is refused */
    const struct { const char* name; std::string text; const char* printed; } data[]{
        {"unclosed", "{\"a\":1", "refused at 6, line 1, column 7: Missing a comma or '}' after an object member."},
        {"trailing garbage", "{}\n\n  x", "refused at 6, line 3, column 3: The document root must not be followed by other values."},
        {"NUL inside", std::string{"{}\0{}", 5}, "refused at 2, line 1, column 3: unexpected NUL byte"},
        {"too deep", std::string(257, '[') + std::string(257, ']'), "refused at 256, line 1, column 257: nested deeper than 256 levels"},
        /* Neither recursing nor reading on */
        {"a million brackets", std::string(1000000, '['), "refused at 256, line 1, column 257: nested deeper than 256 levels"},
        /* The mark is skipped once, and isn't a column */
        {"two byte order marks", "\xef\xbb\xbf\xef\xbb\xbf{}", "refused at 3, line 1, column 1: Invalid value."},
        {"out of range after a mark", "\xef\xbb\xbf[1e400]", "refused at 4, line 1, column 2: number out of range"},
        {"out of range on line 3", "[1,\r\n 2,\n  -1e309]", "refused at 11, line 3, column 3: number out of range"},
        {"just above the largest double", "[1.7976931348623159e308]", "refused at 1, line 1, column 2: number out of range"},
        {"26 digits and e290", "[13555555555555555555555555e290]", "refused at 1, line 1, column 2: number out of range"},
        {"62 digits and e308", "[" + std::string(62, '7') + "e308]", "refused at 1, line 1, column 2: number out of range"},
        {"an integer part too long for the scan", "[1" + Zeros400 + "]", "refused at 1, line 1, column 2: number out of range"},
        {"the same after one it refuses in range", "[0e400,\n1" + Zeros400 + "]", "refused at 8, line 2, column 1: number out of range"},
        {"a long integer part without a fraction", "[1" + Zeros400 + ".]", "refused at 403, line 1, column 404: Miss fraction part in number."},
        {"the same after one in range", "[0e400,1" + Zeros400 + "e]", "refused at 409, line 1, column 410: Miss exponent in number."},
        {"zeros that crashed or read as garbage", "[0." + Zeros400 + ",0.000000000000000000000000000000,0e53,0e100,-0.000000000000000200000000000002e-324]",
            "[0.0,0.0,0.0,0.0,-0.0]"},
        /* The reader's scan refuses these, so they take a second parse;
           numbers in strings stay as they are */
        {"zeros and an integer part the scan refuses", "[\"0e999 \\\" 1e999\",0e400,-0e309,1" + Zeros400 + "e-300]", "[\"0e999 \\\" 1e999\",0.0,-0.0,1e+100]"},
        {"integers typed as by the default parse", "[-0,4294967295,4294967296,-2147483648,-2147483649,9007199254740993]",
            "[0,4294967295,4294967296,-2147483648,-2147483649,9007199254740993]"},
        {"64-bit limits and one past", "[-9223372036854775808,-9223372036854775809,18446744073709551615,18446744073709551616]",
            "[-9223372036854775808,-9223372036854775808.0,18446744073709551615,18446744073709551616.0]"},
        {"largest double and what rounds to it", "[1.7976931348623157e308,-1.7976931348623158E+308]", "[1.7976931348623157e+308,-1.7976931348623157e+308]"},
        {"subnormals and underflow", "[2.2250738585072011e-308,5e-324,2.4703282292062328e-324,2.4703282292062327e-324,-1e-400,2.0000000000000000001e-330]",
            "[2.225073858507201e-308,5e-324,5e-324,0.0,-0.0,0.0]"},
        {"17 digits and ties", "[0.30000000000000004,1.0000000000000002,9007199254740993.0,-0.0,1e0]",
            "[0.30000000000000004,1.0000000000000002,9007199254740992.0,-0.0,1.0]"},
    };
    /* What the default parse makes of a number, which the exact reader keeps */
    const auto typing = [](const rapidjson::Value& value) {
        return std::to_string(value.GetType()) + (value.IsInt() ? " Int" : "") + (value.IsUint() ? " Uint" : "") +
            (value.IsInt64() ? " Int64" : "") + (value.IsUint64() ? " Uint64" : "") + (value.IsDouble() ? " Double" : "");
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        rapidjson::Document document, reference;
        JsonParseError error;
        if(!parseJson(document, {row.text.data(), row.text.size()}, error)) {
            EXPECT_TRUE(document.IsNull());
            EXPECT_EQ(Utility::format("refused at {}, line {}, column {}: {}", error.offset, error.line, error.column, error.reason), row.printed);
            continue;
        }
        EXPECT_EQ(writeJson(document), row.printed);
        if(reference.Parse(row.text.data()).HasParseError()) continue;
        for(rapidjson::SizeType i = 0; i != document.Size(); ++i)
            EXPECT_EQ(typing(document[i]), typing(reference[i])) << i;
    }
}

/* Any double, printed in shortest form, reads back bit for bit */
TEST(JsonReaderTest, PrintedDoublesReadBack) {
    std::mt19937_64 random{20240612};
    rapidjson::Document document{rapidjson::kArrayType};
    while(document.Size() != 20000) {
        const std::uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof(value));
        if(std::isfinite(value)) document.PushBack(value, document.GetAllocator());
    }
    document.PushBack(rapidjson::Value{"\x01\"\\/\xc3\xa9", document.GetAllocator()}, document.GetAllocator());
    const std::string printed = writeJson(document);
    rapidjson::Document again;
    JsonParseError error;
    ASSERT_TRUE(parseJson(again, {printed.data(), printed.size()}, error));
    ASSERT_EQ(again.Size(), document.Size());
    for(rapidjson::SizeType i = 0; i != document.Size() - 1; ++i) {
        const double a = document[i].GetDouble(), b = again[i].GetDouble();
        ASSERT_EQ(std::memcmp(&a, &b, sizeof(double)), 0) << writeJson(document[i]);
    }
    EXPECT_TRUE(again[document.Size() - 1] == document[document.Size() - 1]);
}

}
