#include "Corrade/Utility/Format.h"

#include <cstdio>
#include <string>

#include "Corrade/Utility/Assert.h"

namespace Corrade { namespace Utility { namespace Implementation {

namespace {
    template<class T> void appendPrintf(std::string& out, const char* const printfFormat, const int precision, const T value) {
        const int size = std::snprintf(nullptr, 0, printfFormat, precision, value);
        const std::size_t offset = out.size();
        out.resize(offset + size + 1);
        std::snprintf(&out[offset], size + 1, printfFormat, precision, value);
        out.resize(offset + size);
    }

    void appendArg(std::string& out, const FormatArg& arg, const int precision, const char type) {
        switch(arg.type) {
            case FormatArg::Type::Signed:
            case FormatArg::Type::Unsigned:
                CORRADE_ASSERT(!type || type == 'd', "Utility::format(): type" << Containers::StringView(&type, 1) << "is not supported for integers", );
                /* A negative precision is the same as none */
                if(arg.type == FormatArg::Type::Signed)
                    appendPrintf(out, "%.*lld", precision, arg.s);
                else
                    appendPrintf(out, "%.*llu", precision, arg.u);
                return;
            case FormatArg::Type::Float:
            case FormatArg::Type::Double:
                CORRADE_ASSERT(!type, "Utility::format(): type" << Containers::StringView(&type, 1) << "is not supported for floating-point values", );
                appendPrintf(out, "%.*g", precision >= 0 ? precision : arg.type == FormatArg::Type::Float ? 6 : 15, arg.d);
                return;
            case FormatArg::Type::String:
                CORRADE_ASSERT(!type && precision < 0, "Utility::format(): strings take no precision or type", );
                out.append(arg.string.data(), arg.string.size());
                return;
        }
        CORRADE_INTERNAL_ASSERT_UNREACHABLE();
    }
}

Containers::String format(const char* const format, const FormatArg* const args, const std::size_t count) {
    std::string out;
    std::size_t next = 0;
    for(const char* c = format; *c; ++c) {
        if(*c == '}') {
            CORRADE_ASSERT(c[1] == '}', "Utility::format(): mismatched } in" << format, {});
            out += '}';
            ++c;
            continue;
        }
        if(*c != '{') {
            out += *c;
            continue;
        }
        if(c[1] == '{') {
            out += '{';
            ++c;
            continue;
        }

        /* A placeholder: {} or {:.N} with an optional type letter */
        ++c;
        int precision = -1;
        char type = 0;
        if(*c == ':') {
            ++c;
            if(*c == '.') {
                ++c;
                CORRADE_ASSERT(*c >= '0' && *c <= '9', "Utility::format(): invalid placeholder in" << format, {});
                precision = 0;
                for(; *c >= '0' && *c <= '9'; ++c)
                    precision = precision*10 + (*c - '0');
            }
            if(*c >= 'a' && *c <= 'z') type = *c++;
        }
        CORRADE_ASSERT(*c == '}', "Utility::format(): invalid placeholder in" << format, {});
        CORRADE_ASSERT(next < count, "Utility::format(): not enough arguments for" << format, {});
        appendArg(out, args[next++], precision, type);
    }
    return Containers::String{out.data(), out.size()};
}

}}}
