#include "QuelmarEngine/host/HostPointer.h"

#include <cstdlib>
#include <Corrade/Utility/Debug.h>

namespace QuelmarEngine { namespace Implementation {

void hostPointerIsNull() {
    Utility::Error{} << "Containers::Pointer: the pointer is null";
    std::abort();
}

}}
