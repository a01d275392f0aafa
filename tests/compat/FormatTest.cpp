#include <gtest/gtest.h>

#include <climits>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/FormatStl.h>

using namespace Corrade;
using Containers::String;
using Containers::StringView;

TEST(FormatTest, ZeroFilledIntegers) {
    struct {
        int value;
        const char* expected;
    } cases[]{
        {0, "Cube.000"},
        {12, "Cube.012"},
        {999, "Cube.999"},
        {1000, "Cube.1000"},
        {12345, "Cube.12345"},
        {-5, "Cube.-005"},
    };
    for(const auto& row: cases) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(Utility::format("{}.{:.3d}", "Cube", row.value), row.expected);
    }
    EXPECT_EQ(Utility::format("{:.3}|{:d}|{:.0d}", 7u, -7, 0), "007|-7|");
}

TEST(FormatTest, PlaceholdersAndArguments) {
    const char text[] = "view!";
    const std::string stdString = "std";
    const char* const nullString = nullptr;
    EXPECT_EQ(Utility::format("{} {} {} {} [{}]", StringView{text, 4}, String{"string"}, stdString, text, nullString),
        "view string std view! []");
    EXPECT_EQ(Utility::format("{} {} {} {}", static_cast<unsigned char>(255), LLONG_MIN, ULLONG_MAX, 'a'),
        "255 -9223372036854775808 18446744073709551615 97");
    EXPECT_EQ(Utility::format("{} {} {:.3}", 3.14159265358979f, 3.14159265358979, 2.71828), "3.14159 3.14159265358979 2.72");
    EXPECT_EQ(Utility::format("{{}} {{{}}} }}{{", 1), "{} {1} }{");
    EXPECT_EQ(Utility::format("no placeholders", 1, 2), "no placeholders");
    EXPECT_EQ(Utility::format(""), "");
}

TEST(FormatTest, Into) {
    struct {
        const char* name;
        std::string buffer;
        std::size_t offset;
        std::string expected;
        std::size_t end;
    } cases[]{
        {"empty", "", 0, "obj-042", 7},
        {"overwrite middle", "0123456789", 2, "01obj-0429", 9},
        {"grow at end", "0123", 2, "01obj-042", 9},
        {"offset past end", "ab", 3, std::string{"ab\0obj-042", 10}, 10},
    };
    for(auto& row: cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Utility::formatInto(row.buffer, row.offset, "{}-{:.3d}", std::string{"obj"}, 42), row.end);
        EXPECT_EQ(row.buffer, row.expected);
    }
}

TEST(FormatTest, InvalidFormatDies) {
    EXPECT_DEATH(Utility::format("{} {}", 1), "^Utility::format\\(\\): not enough arguments for \\{\\} \\{\\}\n$");
    EXPECT_DEATH(Utility::format("a } b"), "^Utility::format\\(\\): mismatched \\} in a \\} b\n$");
    EXPECT_DEATH(Utility::format("{0}", 1), "^Utility::format\\(\\): invalid placeholder in \\{0\\}\n$");
    EXPECT_DEATH(Utility::format("{:x}", 1), "^Utility::format\\(\\): type x is not supported for integers\n$");
    EXPECT_DEATH(Utility::format("{:.2}", "ab"), "^Utility::format\\(\\): strings take no precision or type\n$");
}
