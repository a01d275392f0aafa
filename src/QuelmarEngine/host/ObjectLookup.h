#ifndef QuelmarEngine_host_ObjectLookup_h
#define QuelmarEngine_host_ObjectLookup_h
/* The map from object key to object index. */

#include "QuelmarEngine/host/RefreshHook.h"
#include "QuelmarEngine/host/StrHash.h"

namespace QuelmarEngine {

/**
@brief Object key to object index

Its subscript finds a key or enters it with index 0, the root. Every access
first calls the refresh hook.
*/
class ObjectLookup {
    public:
        /** The map, brought up to date first */
        ObjectKeyMap& keyToIndex() {
            _refresh();
            return _keyToIndex;
        }

        /** The map as it is; for the host's rebuild */
        ObjectKeyMap& storedKeyToIndex() { return _keyToIndex; }

        /** What every access calls first */
        void setRefreshHook(RefreshHook hook) { _refresh = hook; }

    private:
        RefreshHook _refresh;
        ObjectKeyMap _keyToIndex;
};

}

#endif
