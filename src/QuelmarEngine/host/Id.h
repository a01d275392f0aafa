#ifndef QuelmarEngine_host_Id_h
#define QuelmarEngine_host_Id_h
/* The index of an object in the scene graph; 0 is the scene root. */

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine { namespace Data {

/** A 16-bit object index, passed by value */
struct Id {
    constexpr /*implicit*/ Id(unsigned short index = 0) noexcept: index{index} {}
    constexpr /*implicit*/ operator unsigned short() const noexcept { return index; }

    unsigned short index;
};

}}

#endif
