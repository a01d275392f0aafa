#include <gtest/gtest.h>

#include <sstream>

#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>

using namespace Corrade;
using Utility::Debug;

TEST(DebugTest, SpacingFlagsAndNewlines) {
    std::ostringstream out;
    const char text[] = "view!";
    Debug{&out} << "a" << 1 << Containers::StringView{text, 4} << true;
    Debug{&out, Debug::Flag::NoSpace} << "a" << Containers::StringView{text, 4} << 1 << false;
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd} << "no" << "newline";
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd|Debug::Flag::NoSpace} << "|";
    Debug{&out};
    Debug{&out} << "" << "empty counts";
    EXPECT_EQ(out.str(), "a 1 view true\naview1false\nno newline| empty counts\n");
}

