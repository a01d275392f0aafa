#include "QuelmarEngine/host/Glob.h"

#include <cstddef>
#include <string_view>

namespace QuelmarEngine {

namespace {

/* The code point starting at @p i, moving @p i past it */
char32_t nextCharacter(const std::string_view text, std::size_t& i) {
    const unsigned char lead = text[i];
    std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xe ? 3 : (lead >> 3) == 0x1e ? 4 : 0;
    if(length > 1 && i + length <= text.size()) {
        char32_t value = lead & (0x7f >> length);
        std::size_t k = 1;
        for(; k != length && (static_cast<unsigned char>(text[i + k]) & 0xc0) == 0x80; ++k)
            value = (value << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3f);
        if(k == length) {
            i += length;
            return value;
        }
    }
    /* Not a sequence: the byte alone, kept apart from every code point */
    ++i;
    return length == 1 ? lead : 0x110000 + lead;
}

/* Whether @p c is in the set that starts after the "[" at @p i; moves @p i
   past the closing "]". Returns false without moving @p i when the set isn't
   closed, the "[" then standing for itself. */
bool matchSet(const std::string_view pattern, std::size_t& i, const char32_t c, bool& inSet) {
    std::size_t j = i + 1;
    const bool negated = j < pattern.size() && (pattern[j] == '!' || pattern[j] == '^');
    if(negated) ++j;
    bool found = false;
    /* A "]" right at the start is a member, not the end */
    for(bool first = true; j < pattern.size() && (first || pattern[j] != ']'); first = false) {
        if(pattern[j] == '\\' && j + 1 < pattern.size()) ++j;
        const char32_t low = nextCharacter(pattern, j);
        char32_t high = low;
        if(j + 1 < pattern.size() && pattern[j] == '-' && pattern[j + 1] != ']') {
            ++j;
            if(pattern[j] == '\\' && j + 1 < pattern.size()) ++j;
            high = nextCharacter(pattern, j);
        }
        found = found || (low <= c && c <= high);
    }
    if(j >= pattern.size()) return false;
    i = j + 1;
    inSet = found != negated;
    return true;
}

}

bool isGlobPattern(const Containers::StringView text) {
    for(const char c: std::string_view{text.data(), text.size()}) if(c == '*' || c == '?' || c == '[') return true;
    return false;
}

bool matchesGlob(const Containers::StringView patternView, const Containers::StringView textView) {
    const std::string_view pattern{patternView.data(), patternView.size()}, text{textView.data(), textView.size()};
    /* Greedy with a return to the last "*": it absorbs one more character
       of the text whenever what follows it fails, which needs no recursion */
    std::size_t p = 0, t = 0;
    std::size_t starPattern = std::string_view::npos, starText = 0;
    while(t < text.size()) {
        bool matched = false;
        std::size_t nextPattern = p, nextText = t;
        if(p < pattern.size()) {
            if(pattern[p] == '*') {
                starPattern = ++p;
                starText = t;
                continue;
            }
            const char32_t c = nextCharacter(text, nextText);
            bool inSet;
            if(pattern[p] == '?') {
                ++nextPattern;
                matched = true;
            } else if(pattern[p] == '[' && matchSet(pattern, nextPattern, c, inSet)) {
                matched = inSet;
            } else {
                if(pattern[p] == '\\' && p + 1 < pattern.size()) ++nextPattern;
                matched = nextCharacter(pattern, nextPattern) == c;
            }
        }
        if(matched) {
            p = nextPattern;
            t = nextText;
        } else if(starPattern != std::string_view::npos) {
            p = starPattern;
            nextCharacter(text, starText);
            t = starText;
        } else return false;
    }
    while(p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

}
