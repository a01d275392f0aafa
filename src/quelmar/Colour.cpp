/* Colour for people at a terminal: never in a pipe or a file, and never
   when NO_COLOR asks for none. */
#include "Colour.h"

#include <cstdlib>
#include <unistd.h>

namespace quelmar {

bool wantsColour(const int fd) {
    const char* const noColour = std::getenv("NO_COLOR");
    return (!noColour || !*noColour) && ::isatty(fd);
}

std::string painted(const bool colour, const Paint paint, const std::string& text) {
    if(!colour) return text;
    static const char* const codes[]{"\x1b[1;31m", "\x1b[1;33m", "\x1b[1;32m", "\x1b[2m"};
    return codes[int(paint)] + text + "\x1b[0m";
}

std::string printable(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for(const char c: text) {
        const unsigned char byte = c;
        if(byte >= 0x20 && byte != 0x7f) {
            out += c;
            continue;
        }
        const char hex[] = "0123456789abcdef";
        out += "\\x";
        out += hex[byte >> 4];
        out += hex[byte & 15];
    }
    return out;
}

}
