#include "Corrade/Containers/StringView.h"

#include <cstring>

namespace Corrade { namespace Containers {

namespace Implementation {

std::size_t stringLength(const char* const data) {
    return std::strlen(data);
}

}

bool operator==(const StringView a, const StringView b) {
    return a.size() == b.size() && (a.isEmpty() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}

bool operator!=(const StringView a, const StringView b) {
    return !(a == b);
}

}}
