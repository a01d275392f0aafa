#include <utility>
#include <gtest/gtest.h>

#include <Corrade/Containers/StringView.h>

using namespace Corrade;
using Containers::StringView;
using Containers::StringViewFlag;

TEST(StringTest, ViewFlagsStayOutOfSizeAndEquality) {
    const char text[] = "hello";
    const StringView literal = text;
    const StringView flagged{text, 5, StringViewFlag::Global|StringViewFlag::NullTerminated};
    EXPECT_EQ(std::make_pair(literal.flags(), literal.size()), std::make_pair(Containers::StringViewFlags{StringViewFlag::NullTerminated}, std::size_t{5}));
    EXPECT_EQ(std::make_pair(flagged.flags(), flagged.size()), std::make_pair(StringViewFlag::Global|StringViewFlag::NullTerminated, std::size_t{5}));

    struct { const char* name; StringView a, b; bool equal; } cases[]{
        {"flags differ", literal, flagged, true},
        {"same bytes elsewhere", {"hello", 5}, flagged, true},
        {"empty", {}, {text, 0}, true},
        {"prefix", {text, 4}, flagged, false},
        {"different byte", "hellO", literal, false},
        {"embedded NUL", {"a\0b", 3}, {"a\0c", 3}, false},
    };
    for(const auto& row: cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.a == row.b, row.equal);
        EXPECT_EQ(row.a != row.b, !row.equal);
    }
}
