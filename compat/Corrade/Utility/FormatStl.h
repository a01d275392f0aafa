// Formatting into and from std::string.
#ifndef Corrade_Utility_FormatStl_h
#define Corrade_Utility_FormatStl_h

#include <cstring>
#include <string>

#include "Corrade/Utility/Format.h"

namespace Corrade { namespace Utility {

namespace Implementation {
    template<> struct Formatter<std::string> {
        static FormatArg arg(const std::string& value) {
            return Formatter<Containers::StringView>::arg({value.data(), value.size()});
        }
    };
}

/**
 * @brief Format into a @cpp std::string @ce at @p offset
 *
 * Same placeholders as @ref format(). Overwrites the bytes from @p offset
 * on, growing @p buffer if it is too short; bytes past the formatted text
 * are kept. Returns @p offset plus the formatted size.
 */
template<class... Args> std::size_t formatInto(std::string& buffer, const std::size_t offset, const char* format, const Args&... args) {
    const Containers::String formatted = Utility::format(format, args...);
    if(buffer.size() < offset + formatted.size()) buffer.resize(offset + formatted.size());
    if(!formatted.isEmpty()) std::memcpy(&buffer[offset], formatted.data(), formatted.size());
    return offset + formatted.size();
}

}}

#endif
