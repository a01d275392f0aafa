// Tag types selecting how containers initialise their contents.
#ifndef Corrade_Tags_h
#define Corrade_Tags_h

namespace Corrade {

/** @brief Tag type for @ref NoInit */
struct NoInitT {
    struct Init {};
    constexpr explicit NoInitT(Init) {}
};

/** @brief Tag type for @ref ValueInit */
struct ValueInitT {
    struct Init {};
    constexpr explicit ValueInitT(Init) {}
};

/** @brief Leave contents uninitialised; the caller constructs them */
constexpr NoInitT NoInit{NoInitT::Init{}};

/** @brief Value-initialise contents (zero for builtin types) */
constexpr ValueInitT ValueInit{ValueInitT::Init{}};

}

#endif
