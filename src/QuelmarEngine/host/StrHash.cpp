#include "QuelmarEngine/host/StrHash.h"

#include <Corrade/Utility/MurmurHash2.h>

namespace QuelmarEngine {

std::size_t StrHash::operator()(const Containers::StringView key) const {
    static_assert(sizeof(std::size_t) == 8, "the key hash is 64 bits wide");
    return std::size_t(Utility::Implementation::MurmurHash2<8>{}(0, key.data(), key.size()));
}

}
