#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>

using namespace Corrade;
using Utility::Debug;
using Utility::Error;
using Utility::Warning;

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

TEST(DebugTest, NestedAndPerClassRedirection) {
    EXPECT_EQ(Debug::output(), &std::cout);
    EXPECT_EQ(Warning::output(), &std::cerr);
    EXPECT_EQ(Error::output(), &std::cerr);

    std::ostringstream outer, inner, warnings, errors;
    {
        Debug redirectOuter{&outer};
        Debug{} << "to outer";
        {
            Debug redirectInner{&inner, Debug::Flag::NoNewlineAtTheEnd};
            Debug{} << "to inner";
            {
                Debug discard{nullptr};
                Debug{} << "discarded";
            }
            Debug{} << "inner again";
            redirectInner << "itself";
        }
        Debug{} << "outer again";

        /* Each class has its own redirection */
        Warning redirectWarning{&warnings};
        Warning{} << "warning";
        {
            Error redirectError{&errors, Error::Flag::NoSpace};
            Error{} << "error" << 1;
            EXPECT_EQ(Warning::output(), &warnings);
        }
        EXPECT_EQ(Error::output(), &std::cerr);
        EXPECT_EQ(Debug::output(), &outer);
    }
    EXPECT_EQ(Debug::output(), &std::cout);
    EXPECT_EQ(Warning::output(), &std::cerr);
    EXPECT_EQ(outer.str(), "to outer\nouter again\n");
    EXPECT_EQ(inner.str(), "to inner\ninner again\nitself");
    EXPECT_EQ(warnings.str(), "warning\n");
    EXPECT_EQ(errors.str(), "error 1\n");
}
