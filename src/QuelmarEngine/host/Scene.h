#ifndef QuelmarEngine_host_Scene_h
#define QuelmarEngine_host_Scene_h
/* The scene, which holds the scene graph. */

#include <Corrade/Containers/Pointer.h>

#include "QuelmarEngine/host/DynamicSceneGraph.h"

namespace QuelmarEngine {

class Scene {
    public:
        Containers::Pointer<Data::DynamicSceneGraph<unsigned short>> sceneGraph;
};

}

#endif
