#include "QuelmarEngine/host/KeyGenerator.h"

#include <chrono>
#include <random>
#include <string>

namespace QuelmarEngine {

namespace {

const char Base36[] = "0123456789abcdefghijklmnopqrstuvwxyz";

void appendBase36(std::string& out, unsigned long long value, const std::size_t minDigits) {
    char digits[16];
    std::size_t count = 0;
    do {
        digits[count++] = Base36[value % 36];
        value /= 36;
    } while(value);
    for(std::size_t i = count; i < minDigits; ++i) out += '0';
    while(count) out += digits[--count];
}

}

Containers::String KeyGenerator::next() {
    if(_prefix.isEmpty()) {
        std::string prefix;
        appendBase36(prefix, (unsigned long long)std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count(), 6);
        std::random_device random;
        appendBase36(prefix, random() % (36*36), 2);
        _prefix = Containers::String{prefix.data(), prefix.size()};
    }

    std::string key{_prefix.data(), _prefix.size()};
    appendBase36(key, ++_counter, 4);
    return Containers::String{key.data(), key.size()};
}

}
