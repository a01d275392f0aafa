#include <gtest/gtest.h>

#include <climits>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/FormatStl.h>

using namespace Corrade;

TEST(FormatTest, PlaceholdersAndLiteralBraces) {
    const char text[] = "view!";
    EXPECT_EQ(Utility::format("{} {} {} {}", Containers::StringView{text, 4}, Containers::String{"string"}, std::string{"std"}, text),
        "view string std view!");
    EXPECT_EQ(Utility::format("{} {} {}", static_cast<unsigned char>(255), LLONG_MIN, ULLONG_MAX),
        "255 -9223372036854775808 18446744073709551615");
    EXPECT_EQ(Utility::format("{{}} {{{}}} }}{{", 1), "{} {1} }{");
}
