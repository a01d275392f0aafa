// Type-safe string formatting with {} placeholders.
#ifndef Corrade_Utility_Format_h
#define Corrade_Utility_Format_h

#include <cstddef>
#include <type_traits>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"

namespace Corrade { namespace Utility {

namespace Implementation {
    /* One argument, erased to what the formatter needs */
    struct FormatArg {
        enum class Type: unsigned char { Signed, Unsigned, Float, Double, String };

        Type type;
        union {
            long long s;
            unsigned long long u;
            double d;
        };
        Containers::StringView string;
    };

    template<class T, class = void> struct Formatter;

    template<class T> struct Formatter<T, typename std::enable_if<std::is_integral<T>::value && !std::is_same<T, bool>::value>::type> {
        static FormatArg arg(const T value) {
            FormatArg a{};
            if(std::is_signed<T>::value) {
                a.type = FormatArg::Type::Signed;
                a.s = static_cast<long long>(value);
            } else {
                a.type = FormatArg::Type::Unsigned;
                a.u = static_cast<unsigned long long>(value);
            }
            return a;
        }
    };
    template<> struct Formatter<float> {
        static FormatArg arg(const float value) {
            FormatArg a{};
            a.type = FormatArg::Type::Float;
            a.d = value;
            return a;
        }
    };
    template<> struct Formatter<double> {
        static FormatArg arg(const double value) {
            FormatArg a{};
            a.type = FormatArg::Type::Double;
            a.d = value;
            return a;
        }
    };
    template<> struct Formatter<Containers::StringView> {
        static FormatArg arg(const Containers::StringView value) {
            FormatArg a{};
            a.type = FormatArg::Type::String;
            a.string = value;
            return a;
        }
    };
    template<> struct Formatter<Containers::MutableStringView>: Formatter<Containers::StringView> {};
    template<> struct Formatter<Containers::String>: Formatter<Containers::StringView> {};
    template<> struct Formatter<const char*>: Formatter<Containers::StringView> {};
    template<> struct Formatter<char*>: Formatter<Containers::StringView> {};

    Containers::String format(const char* format, const FormatArg* args, std::size_t count);
}

/**
 * @brief Format a string
 *
 * `{}` is replaced with the next argument, `{{` and `}}` print literal
 * braces. `{:.N}` or `{:.Nd}` zero-fills an integer to at least N digits,
 * with the sign before the zeros; for floating-point values `{:.N}` gives N
 * significant digits. `{}` prints a @cpp float @ce with 6 and a
 * @cpp double @ce with 15 significant digits. Arguments can be
 * @cpp const char* @ce, @ref Containers::StringView, @ref Containers::String,
 * integers and floating-point values; include
 * @ref Corrade/Utility/FormatStl.h for @cpp std::string @ce. Expects that
 * there are at least as many arguments as placeholders; extra arguments are
 * ignored.
 */
template<class... Args> Containers::String format(const char* format, const Args&... args) {
    const Implementation::FormatArg formatArgs[sizeof...(Args) + 1]{Implementation::Formatter<typename std::decay<Args>::type>::arg(args)..., {}};
    return Implementation::format(format, formatArgs, sizeof...(Args));
}

}}

#endif
