#ifndef QuelmarEngine_host_KeyGenerator_h
#define QuelmarEngine_host_KeyGenerator_h
/* Candidate keys for new records: short, usable unescaped anywhere, sorting
   by creation. */

#include <Corrade/Containers/String.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Candidate keys for new records

A per-session prefix (the time in seconds and two random digits, so that keys
of later sessions sort after earlier ones and two sessions started in the
same second differ) and a counter, in base 36. Whether a key is taken is the
caller's to check.
*/
class KeyGenerator {
    public:
        /** A key that no earlier call returned, sorting after all of them */
        Containers::String next();

    private:
        Containers::String _prefix;
        unsigned long long _counter{};
};

}

#endif
