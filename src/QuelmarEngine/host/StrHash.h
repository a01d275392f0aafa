#ifndef QuelmarEngine_host_StrHash_h
#define QuelmarEngine_host_StrHash_h
/* Hashing and comparing object keys, and the key-to-index map built on them. */

#include <cstddef>
#include <unordered_map>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** 64-bit MurmurHash2 of the key's bytes, seed 0; the view's flags don't take part */
struct StrHash {
    std::size_t operator()(Containers::StringView key) const;
};

/** Keys are equal when they have the same length and bytes */
struct StrEq {
    bool operator()(Containers::StringView a, Containers::StringView b) const {
        return a == b;
    }
};

/** Object key to object index */
typedef std::unordered_map<Containers::String, unsigned short, StrHash, StrEq> ObjectKeyMap;

}

#endif
