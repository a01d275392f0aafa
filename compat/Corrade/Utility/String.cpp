#include "Corrade/Utility/String.h"

namespace Corrade { namespace Utility { namespace String {

std::vector<std::string> split(const std::string& string, const char delimiter) {
    std::vector<std::string> parts;
    if(string.empty()) return parts;
    std::size_t begin = 0;
    for(std::size_t end; (end = string.find(delimiter, begin)) != std::string::npos; begin = end + 1)
        parts.push_back(string.substr(begin, end - begin));
    parts.push_back(string.substr(begin));
    return parts;
}

std::string join(const std::vector<std::string>& strings, const char delimiter) {
    std::string out;
    for(std::size_t i = 0; i != strings.size(); ++i) {
        if(i) out += delimiter;
        out += strings[i];
    }
    return out;
}

}}}
