// Debug printer for std::string.
#ifndef Corrade_Utility_DebugStl_h
#define Corrade_Utility_DebugStl_h

#include <string>

#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade { namespace Utility {

/** @brief Print a @cpp std::string @ce */
inline Debug& operator<<(Debug& debug, const std::string& value) {
    return debug << Containers::StringView{value.data(), value.size()};
}

/** @overload */
inline Debug& operator<<(Debug&& debug, const std::string& value) {
    return debug << value;
}

}}

#endif
