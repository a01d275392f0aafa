#include <gtest/gtest.h>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/String.h>

using namespace Corrade;
using Containers::MutableStringView;
using Containers::String;
using Containers::StringView;
using Containers::StringViewFlag;
using Containers::StringViewFlags;

TEST(StringTest, ViewFlagsStayOutOfSizeAndEquality) {
    const char text[] = "hello";
    const StringView literal = text;
    EXPECT_EQ(literal.size(), 5u);
    EXPECT_EQ(literal.flags(), StringViewFlag::NullTerminated);

    const StringView all{text, 5, StringViewFlag::Global|StringViewFlag::NullTerminated};
    EXPECT_EQ(all.size(), 5u);
    EXPECT_TRUE(all.flags() & StringViewFlag::Global);
    EXPECT_TRUE(all.flags() & StringViewFlag::NullTerminated);

    const StringView sized{text, 5};
    EXPECT_EQ(sized.flags(), StringViewFlags{});
    EXPECT_EQ(StringView{}.flags(), StringViewFlag::Global);
    EXPECT_EQ(StringView{static_cast<const char*>(nullptr)}.size(), 0u);

    EXPECT_TRUE(literal == all);
    EXPECT_TRUE(sized == all);
    EXPECT_TRUE(StringView{} == (StringView{text, 0}));

    struct {
        const char* name;
        StringView a, b;
        bool equal;
    } cases[]{
        {"prefix", {text, 4}, {text, 5}, false},
        {"same bytes elsewhere", {"hello", 5}, {text, 5, StringViewFlag::Global}, true},
        {"different byte", "hellO", text, false},
        {"embedded NUL", {"a\0b", 3}, {"a\0c", 3}, false},
    };
    for(const auto& row: cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.a == row.b, row.equal);
        EXPECT_EQ(row.a != row.b, !row.equal);
    }

    char mutableText[] = "abc";
    MutableStringView mutableView = mutableText;
    mutableView.data()[0] = 'x';
    const StringView fromMutable = mutableView;
    EXPECT_EQ(fromMutable, "xbc");
    EXPECT_EQ(fromMutable.flags(), StringViewFlag::NullTerminated);
}

TEST(StringTest, StringOwnsNullTerminatedCopy) {
    char source[] = "abc";
    String a = source;
    source[0] = 'x';
    EXPECT_EQ(a, "abc");
    EXPECT_EQ(a.data()[3], '\0');
    EXPECT_NE(a.data(), source);

    const String embedded{"a\0b", 3};
    EXPECT_EQ(embedded.size(), 3u);
    EXPECT_EQ(embedded, (StringView{"a\0b", 3}));
    EXPECT_EQ(embedded.data()[3], '\0');

    const String fromView{StringView{"hello", 4}};
    EXPECT_EQ(fromView, "hell");
    EXPECT_EQ(fromView.data()[4], '\0');
    EXPECT_EQ(StringView{fromView}.flags(), StringViewFlag::NullTerminated);

    for(const String& empty: {String{}, String{static_cast<const char*>(nullptr)}, String{""}}) {
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_STREQ(empty.data(), "");
    }

    String copy = a;
    copy.data()[0] = 'z';
    EXPECT_EQ(a, "abc");
    EXPECT_EQ(copy, "zbc");
    copy = a;
    EXPECT_EQ(copy, a);
    EXPECT_NE(copy.data(), a.data());

    String moved = std::move(copy);
    EXPECT_EQ(moved, "abc");
    EXPECT_TRUE(copy.isEmpty());
    EXPECT_STREQ(copy.data(), "");
    EXPECT_NE(String{"abc"}, String{"abd"});
}

TEST(StringTest, SplitJoin) {
    struct {
        const char* name;
        std::string input;
        std::vector<std::string> pieces;
    } cases[]{
        {"empty", "", {}},
        {"no delimiter", "abc", {"abc"}},
        {"only delimiter", "/", {"", ""}},
        {"empty pieces", "/a//b", {"", "a", "", "b"}},
        {"trailing", "a/", {"a", ""}},
    };
    for(const auto& row: cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Utility::String::split(row.input, '/'), row.pieces);
        EXPECT_EQ(Utility::String::join(row.pieces, '/'), row.input);
    }
    EXPECT_EQ(Utility::String::join({"", ""}, ','), ",");
}
