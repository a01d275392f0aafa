/* The session's transformation edits: where an object is, and moving,
   rotating and scaling it in its parent's space or in the world's. */
#include "QuelmarEngine/host/EditSession.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/host/TransformationSnapping.h"
#include "QuelmarEngine/host/Implementation/DocumentPaths.h"

namespace QuelmarEngine {

namespace {

using Implementation::objectPath;
using Magnum::Matrix4d;
using Magnum::Vector3d;

/* The key of the parent of the live object @p key in the scene; empty for the root */
std::string parentOf(QuelmarEditor& editor, const std::string& key) {
    const auto& graph = *editor.scene->sceneGraph;
    const unsigned short index = editor.objectLookup->keyToIndex().find(Containers::String{key.data(), key.size()})->second;
    const unsigned short parent = graph.hierarchy()[graph.indexToPosition()[index]].parent;
    return parent ? graph.objectKeys().get(graph.positionToIndex()[parent]) : "";
}

double smallestScale(const Matrix4d& matrix) {
    const Magnum::Matrix3x3d columns = matrix.rotationScaling();
    return std::min({Vector3d{columns[0]}.length(), Vector3d{columns[1]}.length(), Vector3d{columns[2]}.length()});
}

/* What a transformation edit works with: the object's local matrix and the
   frame of the space it works in, the parent's world matrix or none */
struct Frame {
    Matrix4d local;
    Matrix4d frame;
    /* The largest world translation on the way to the frame */
    double largestTranslation;
};

/* Changes @p local, in the space @p frame */
typedef std::function<void(Matrix4d& local, const Matrix4d& frame, std::vector<std::string>& warnings)> Edit;

/* The largest number that the computation of each column of @p local
   handled, working in the space of @p frame */
Magnum::Vector4d scalesOf(const Matrix4d& local, const Frame& frame) {
    const double frameScale = smallestScale(frame.frame);
    const Matrix4d placed = frame.frame*local;
    Magnum::Vector4d out;
    for(std::size_t column = 0; column != 3; ++column)
        out[column] = std::max(local[column].xyz().length(), placed[column].xyz().length()/frameScale);
    out[3] = std::max(local.translation().length(), (placed.translation().length() + frame.largestTranslation)/frameScale);
    return out;
}

/* A placement edit in the space of @p frame: @p change changes the placement there */
Edit placementEdit(const std::string& key, const std::function<void(Placement&)>& change) {
    return [key, change](Matrix4d& local, const Matrix4d& frame, std::vector<std::string>& warnings) {
        const Matrix4d placed = frame*local;
        Placement placement = placementOf(placed);
        if(placement.shears) warnings.push_back("the transformation of " + key + " shears, which a translation, a rotation and a scaling leave out; the shear is dropped");
        change(placement);
        /* The translation stays as it was, not as the placement rounds it */
        Matrix4d changed = matrixOf(placement);
        changed[3] = placed[3];
        local = frame.inverted()*changed;
    };
}

bool isFinite(const Vector3d& vector) {
    return std::isfinite(vector.x()) && std::isfinite(vector.y()) && std::isfinite(vector.z());
}

EditResult editTransformation(EditSession& session, const Containers::StringView reference, const char* const verb, const Vector3d& values,
    const TransformSpace space, const std::function<Edit(const std::string&)>& makeEdit)
{
    const EditResult found = session.findObject(reference);
    if(!found) return found;
    if(!isFinite(values)) return EditResult::failure(std::string{verb} + " takes finite numbers");
    const std::string key = found.keys()[0];
    QuelmarEditor& editor = session.editor();

    Frame frame{localMatrixOf(*session.value(objectPath({key.data(), key.size()}).data())), Matrix4d{}, 0.0};
    if(space == TransformSpace::World) {
        const std::string parent = parentOf(editor, key);
        frame.frame = worldMatrixOf(editor, {parent.data(), parent.size()}, &frame.largestTranslation);
        if(!(smallestScale(frame.frame) > 0.0))
            return EditResult::failure("can't " + std::string{verb} + " " + key + " in the world's space: the world transformation of its parent " + parent + " has a zero scale");
    }

    Matrix4d local = frame.local;
    std::vector<std::string> warnings;
    makeEdit(key)(local, frame.frame, warnings);

    const std::string path = objectPath({key.data(), key.size()}, "transformation");
    JsonAllocator& allocator = editor.data.project.allocator();
    rapidjson::Value numbers = snappedTransformation(local, scalesOf(local, frame)*(SnappingUlps*DBL_EPSILON), session.value(path.data()), allocator);
    if(std::string problem = transformationProblem({key.data(), key.size()}, numbers); !problem.empty())
        return EditResult::failure("can't " + std::string{verb} + " " + key + " so: " + problem);

    return session.step(verb + (" " + key), [&]{
        editor.changeManager->beginGroup();
        editor.changeManager->pushChange(path.data(), numbers, false);
        editor.changeManager->commit();
        EditResult result;
        for(std::string& warning: warnings) result.addWarning(std::move(warning));
        return result.addKey(key);
    });
}

}

EditResult EditSession::findPlacement(const Containers::StringView reference, ObjectPlacement& placement) {
    EditResult found = findObject(reference);
    if(!found) return found;
    const std::string& key = found.keys()[0];
    const Matrix4d local = localMatrixOf(*value(objectPath({key.data(), key.size()}).data()));
    placement.local = placementOf(local);
    placement.world = placementOf(worldMatrixOf(_editor, {key.data(), key.size()}));
    return found;
}

EditResult EditSession::move(const Containers::StringView reference, const Vector3d& translation, const TransformSpace space, const TransformAmount amount) {
    return editTransformation(*this, reference, "move", translation, space, [&](const std::string&) -> Edit {
        return [&](Matrix4d& local, const Matrix4d& frame, std::vector<std::string>&) {
            /* Only the translation column changes, whatever else the matrix holds */
            const Matrix4d toFrame = frame.inverted();
            if(amount == TransformAmount::By) local[3] += toFrame*Magnum::Vector4d{translation, 0.0};
            else local[3] = (toFrame*Magnum::Vector4d{translation, 1.0});
        };
    });
}

EditResult EditSession::rotate(const Containers::StringView reference, const Vector3d& degrees, const TransformSpace space, const TransformAmount amount) {
    return editTransformation(*this, reference, "rotate", degrees, space, [&](const std::string& key) {
        return placementEdit(key, [&](Placement& placement) {
            const Magnum::Quaterniond rotation = rotationOfEulerDegrees(degrees);
            placement.rotation = amount == TransformAmount::By ? (rotation*placement.rotation).normalized() : rotation;
        });
    });
}

EditResult EditSession::scale(const Containers::StringView reference, const Vector3d& scaling, const TransformSpace space, const TransformAmount amount) {
    return editTransformation(*this, reference, "scale", scaling, space, [&](const std::string& key) {
        return placementEdit(key, [&](Placement& placement) {
            for(std::size_t i = 0; i != 3; ++i)
                placement.scaling[i] = amount == TransformAmount::By ? placement.scaling[i]*scaling[i] : scaling[i];
        });
    });
}

}
