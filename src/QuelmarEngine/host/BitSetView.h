#ifndef QuelmarEngine_host_BitSetView_h
#define QuelmarEngine_host_BitSetView_h
/* A non-owning view of a bit set over object indices. */

#include <cstdint>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Bits over object indices

The bit of index i is bit i % 32 of word i / 32, counted from the least
significant bit. Bits at or beyond @ref size are never set.
*/
struct BitSetView {
    std::uint64_t size;
    const std::uint32_t* words;

    /** Whether bit @p i is set; false at or beyond @ref size */
    bool operator[](std::uint64_t i) const {
        return i < size && (words[i/32] >> (i % 32)) & 1u;
    }
};

}

#endif
