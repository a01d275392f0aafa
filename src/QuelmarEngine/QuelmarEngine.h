#ifndef QuelmarEngine_QuelmarEngine_h
#define QuelmarEngine_QuelmarEngine_h
/* Forward declarations for the QuelmarEngine namespace, so that headers can
   name each other's types without including each other. */

#include <Corrade/Containers/Containers.h>
#include <rapidjson/fwd.h>

namespace QuelmarEngine {

using namespace Corrade;

/** Allocator of the project document and of every value the history keeps */
typedef rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator> JsonAllocator;

class JsonPointer;
class MemberIndex;

struct Change;
class ChangeManager;
class ChangeHandler;
class FunctionChangeHandler;
template<class> class StaticMap;

class JsonObject;
class ValueAccess;
class SubValueAccess;
class ProjectFile;

class StringArrayView;
class StringArray;
struct StrHash;
struct StrEq;
struct BitSetView;
class EditorData;
class Scene;
class ObjectLookup;
class QuelmarEditor;
class SceneKeeper;

namespace Data {
    struct Id;
    template<class> class DynamicSceneGraph;
}

}

#endif
