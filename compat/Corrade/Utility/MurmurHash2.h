// MurmurHash 2 (MurmurHash64A), a fast non-cryptographic hash.
#ifndef Corrade_Utility_MurmurHash2_h
#define Corrade_Utility_MurmurHash2_h

#include <cstddef>

#include "Corrade/Utility/AbstractHash.h"

namespace Corrade { namespace Utility {

namespace Implementation {
    template<std::size_t> struct MurmurHash2;

    /* MurmurHash64A; 8-byte blocks are read as little-endian on any
       platform */
    template<> struct MurmurHash2<8> {
        unsigned long long operator()(unsigned long long seed, const char* data, std::size_t size) const;
    };
}

/**
 * @brief MurmurHash 2
 *
 * The 64-bit variant; the digest holds the hash value's bytes in the
 * machine's byte order.
 */
class MurmurHash2: public AbstractHash<8> {
    public:
        explicit MurmurHash2(unsigned long long seed = 0): _seed{seed} {}

        /** @brief Hash of @p size bytes at @p data */
        Digest operator()(const char* data, std::size_t size) const;

    private:
        unsigned long long _seed;
};

}}

#endif
