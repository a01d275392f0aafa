#ifndef QuelmarEngine_host_RefreshHook_h
#define QuelmarEngine_host_RefreshHook_h
/* What the scene graph, the key-to-index map and the selection call before
   every read, so that the host can bring them up to date lazily, once per
   batch of changes. */

namespace QuelmarEngine {

struct RefreshHook {
    void(*function)(void*){};
    void* data{};

    void operator()() const {
        if(function) function(data);
    }
};

}

#endif
