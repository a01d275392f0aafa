/* Reparenting that keeps objects where they are in the world: the local
   transformation is rewritten to undo the change of parent. */

#include "QuelmarEngine/Tools/ProjectTools.h"

#include <cmath>
#include <cstdint>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/DualQuaternion.h>
#include <Magnum/Math/Matrix4.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

using Magnum::Matrix3x3;
using Magnum::Matrix4;

typedef Data::DynamicSceneGraph<unsigned short> SceneGraph;

/* Rotation columns times scaling, and the translation, of the world
   placement that the graph computed for object @p index */
Matrix4 worldMatrix(const SceneGraph& graph, const unsigned short index) {
    const unsigned short position = graph.indexToPosition()[index];
    const Magnum::DualQuaternion transformation = graph.absoluteTransformations()[position];
    const Magnum::Vector3 scaling = graph.absoluteScalings()[position];
    const Matrix3x3 rotation = transformation.real().toMatrix();
    return Matrix4::from(Matrix3x3{rotation[0]*scaling.x(), rotation[1]*scaling.y(), rotation[2]*scaling.z()}, transformation.translation());
}

bool isFinite(const Matrix4& matrix) {
    for(std::size_t i = 0; i != 16; ++i)
        if(!std::isfinite(matrix.data()[i])) return false;
    return true;
}

/* Index of the lowest set bit, or the size when none is set */
std::uint64_t lowestSetBit(const BitSetView& bits) {
    for(std::uint64_t word = 0; word*32 < bits.size; ++word) {
        if(!bits.words[word]) continue;
        std::uint64_t i = word*32;
        while(!bits[i] && i < word*32 + 31) ++i;
        /* Bits past the size don't count even if a caller left them set */
        return i < bits.size ? i : bits.size;
    }
    return bits.size;
}

/* The command itself, for a caller that may have brought the world
   placement up to date already: a set moved in one group reads the same
   hierarchy for every object, so computing it once is enough, as long as
   nothing rebuilt the graph since */
void moveKeepingWorld(QuelmarEditor& editor, const char* const object, const char* const newParent, std::size_t& computedAtRebuild) {
    SceneGraph& graph = *editor.scene->sceneGraph;
    ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const unsigned short objectIndex = keyToIndex[Containers::String{object}];
    const unsigned short parentIndex = newParent ? keyToIndex[Containers::String{newParent}] : 0;

    /* Everything is read before the first push: outside a group the parent
       change marks the graph stale, and the next read would see the object
       under its new parent already */
    if(computedAtRebuild != editor.rebuildCount()) {
        graph.computeAbsoluteTransformations();
        computedAtRebuild = editor.rebuildCount();
    }
    const Matrix4 parentWorld = worldMatrix(graph, parentIndex);
    const Magnum::Float determinant = parentWorld.determinant();
    /* JSON has no place for what dividing by zero gives, and a move that
       can't keep the placement shouldn't happen half-way */
    if(determinant == 0.0f || !std::isfinite(determinant)) {
        Utility::Warning{} << "Object" << object << "is not moved under" << (newParent ? newParent : "root") << "as the world transformation of the parent can't be inverted";
        return;
    }
    const Matrix4 local = parentWorld.inverted()*worldMatrix(graph, objectIndex);
    if(!isFinite(local)) {
        Utility::Warning{} << "Object" << object << "is not moved under" << (newParent ? newParent : "root") << "as its transformation there would not be finite";
        return;
    }

    rapidjson::Value array{rapidjson::kArrayType};
    JsonAllocator& allocator = editor.data.project.allocator();
    for(std::size_t column = 0; column != 4; ++column)
        for(std::size_t row = 0; row != 4; ++row)
            array.PushBack(rapidjson::Value{double(local[column][row])}, allocator);
    const Containers::String path = Utility::format("/objects/{}/transformation", object);

    reparentObject(editor, object, newParent);
    editor.changeManager->pushChange(path.data(), array, false);
}

}

void reparentObjectKeepTransform(QuelmarEditor& editor, const char* const object, const char* const newParent) {
    /* Never equal to a rebuild count, so the placement gets computed */
    std::size_t computedAtRebuild = ~std::size_t{};
    moveKeepingWorld(editor, object, newParent, computedAtRebuild);
}

void reparentObjectsKeepTransform(QuelmarEditor& editor, const BitSetView& objectBits, const char* const newParent) {
    editor.changeManager->beginGroup();
    const unsigned short parentIndex = newParent ? editor.objectLookup->keyToIndex()[Containers::String{newParent}] : 0;
    std::size_t computedAtRebuild = ~std::size_t{};

    /* The root has no record to move, and every object is below it, so it is
       neither moved nor counted as a moving ancestor. The bound is the
       number of object indices: objects flagged deleted have an index but
       no position, so the position count would stop short of live objects
       with higher indices. */
    for(std::uint64_t i = lowestSetBit(objectBits); ; ++i) {
        const SceneGraph& graph = *editor.scene->sceneGraph;
        graph.header();
        if(i >= graph.indexToPosition().size()) break;
        if(i == 0 || i == parentIndex || !objectBits[i]) continue;

        bool ancestorMoves = false;
        for(unsigned short current = (unsigned short)i; current && !ancestorMoves; ) {
            current = graph.positionToIndex()[graph.hierarchy()[graph.indexToPosition()[current]].parent];
            ancestorMoves = current && objectBits[current];
        }
        if(ancestorMoves) continue;

        /* Inside the group nothing is rebuilt, but the key is the graph's;
           a copy doesn't depend on that */
        const Containers::String key{graph.objectKeys().get(i)};
        moveKeepingWorld(editor, key.data(), newParent, computedAtRebuild);
    }

    editor.changeManager->commit();
}

}
