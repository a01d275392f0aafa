#ifndef QuelmarEngine_host_Scene_h
#define QuelmarEngine_host_Scene_h
/* The scene, which holds the scene graph. */

#include "QuelmarEngine/host/DynamicSceneGraph.h"
#include "QuelmarEngine/host/HostPointer.h"

namespace QuelmarEngine {

class Scene {
    public:
        HostPointer<Data::DynamicSceneGraph<unsigned short>> sceneGraph;
};

}

#endif
