#include "Corrade/Utility/MurmurHash2.h"

namespace Corrade { namespace Utility {

namespace Implementation {

unsigned long long MurmurHash2<8>::operator()(const unsigned long long seed, const char* const signedData, const std::size_t size) const {
    const unsigned char* const data = reinterpret_cast<const unsigned char*>(signedData);
    const unsigned long long m = 0xc6a4a7935bd1e995ull;
    const int r = 47;

    unsigned long long h = seed ^ (size*m);

    const std::size_t blockEnd = size & ~std::size_t{7};
    for(std::size_t i = 0; i != blockEnd; i += 8) {
        unsigned long long k = 0;
        for(std::size_t j = 0; j != 8; ++j)
            k |= static_cast<unsigned long long>(data[i + j]) << (8*j);

        k *= m;
        k ^= k >> r;
        k *= m;

        h ^= k;
        h *= m;
    }

    const std::size_t rest = size & 7;
    if(rest) {
        for(std::size_t j = rest; j != 0; --j)
            h ^= static_cast<unsigned long long>(data[blockEnd + j - 1]) << (8*(j - 1));
        h *= m;
    }

    h ^= h >> r;
    h *= m;
    h ^= h >> r;
    return h;
}

}

MurmurHash2::Digest MurmurHash2::operator()(const char* const data, const std::size_t size) const {
    const unsigned long long hash = Implementation::MurmurHash2<8>{}(_seed, data, size);
    return Digest::fromByteArray(reinterpret_cast<const char*>(&hash));
}

}}
