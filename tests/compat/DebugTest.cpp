#include <gtest/gtest.h>

#include <climits>
#include <iostream>
#include <sstream>

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

using namespace Corrade;
using Utility::Debug;
using Utility::Error;
using Utility::Warning;

TEST(DebugTest, SpacingAndNewlines) {
    std::ostringstream out;
    Debug{&out} << "a" << 1 << "b";
    Debug{&out, Debug::Flag::NoSpace} << "a" << 1 << "b";
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd} << "no" << "newline";
    Debug{&out, Debug::Flag::NoNewlineAtTheEnd|Debug::Flag::NoSpace} << "|";
    Debug{&out};
    Debug{&out} << "" << "empty counts";
    EXPECT_EQ(out.str(), "a 1 b\na1b\nno newline| empty counts\n");

    Debug::Flags flags = Debug::Flag::DisableColors|Debug::Flag::NoSpace;
    EXPECT_TRUE(flags & Debug::Flag::NoSpace);
    EXPECT_FALSE(flags & Debug::Flag::NoNewlineAtTheEnd);
}

TEST(DebugTest, Printers) {
    std::ostringstream out;
    {
        Debug d{&out, Debug::Flag::NoNewlineAtTheEnd};
        d << true << false << 'a' << static_cast<signed char>(-3) << static_cast<unsigned char>(200)
          << static_cast<short>(-7) << static_cast<unsigned short>(65535)
          << INT_MIN << UINT_MAX << LONG_MIN << ULONG_MAX << LLONG_MIN << ULLONG_MAX;
    }
    EXPECT_EQ(out.str(), "true false 97 -3 200 -7 65535 -2147483648 4294967295 "
        "-9223372036854775808 18446744073709551615 -9223372036854775808 18446744073709551615");

    out.str({});
    Debug{&out} << 3.14159265358979f << 3.14159265358979 << 1.0f << 1.0e20 << 0.1;
    EXPECT_EQ(out.str(), "3.14159 3.14159265358979 1 1e+20 0.1\n");

    /* Precision is restored on the stream */
    out.str({});
    out << 1.23456789;
    EXPECT_EQ(out.str(), "1.23457");

    out.str({});
    const char text[] = "abcdef";
    Debug{&out} << Containers::StringView{text, 3} << Containers::String{"str"} << std::string{"std"};
    Debug{&out} << std::string{"first"};
    EXPECT_EQ(out.str(), "abc str std\nfirst\n");
}

TEST(DebugTest, Redirection) {
    std::ostream* const defaultDebug = Debug::output();
    EXPECT_EQ(defaultDebug, &std::cout);
    EXPECT_EQ(Warning::output(), &std::cerr);
    EXPECT_EQ(Error::output(), &std::cerr);

    std::ostringstream outer, inner, warnings;
    {
        Debug redirectOuter{&outer};
        EXPECT_EQ(Debug::output(), &outer);
        Debug{} << "to outer";
        {
            Debug redirectInner{&inner, Debug::Flag::NoNewlineAtTheEnd};
            Debug{} << "to inner";
            {
                Debug discard{nullptr};
                EXPECT_EQ(Debug::output(), nullptr);
                Debug{} << "discarded";
                discard << "discarded too";
            }
            Debug{} << "inner again";
            redirectInner << "itself";
        }
        Debug{} << "outer again";

        /* Each class has its own default */
        Warning redirectWarning{&warnings};
        EXPECT_EQ(Warning::output(), &warnings);
        EXPECT_EQ(Error::output(), &std::cerr);
        EXPECT_EQ(Debug::output(), &outer);
        Warning{} << "warning";
    }
    EXPECT_EQ(Debug::output(), defaultDebug);
    EXPECT_EQ(Warning::output(), &std::cerr);
    EXPECT_EQ(outer.str(), "to outer\nouter again\n");
    EXPECT_EQ(inner.str(), "to inner\ninner again\nitself");
    EXPECT_EQ(warnings.str(), "warning\n");

    std::ostringstream errors;
    {
        Error redirectError{&errors, Error::Flag::NoSpace};
        Error{} << "error" << 1;
        EXPECT_EQ(Warning::output(), &std::cerr);
    }
    EXPECT_EQ(Error::output(), &std::cerr);
    EXPECT_EQ(errors.str(), "error 1\n");
}
