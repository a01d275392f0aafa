#include "QuelmarEngine/host/WorldKeepingReparent.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/Placement.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "QuelmarEngine/host/TransformationSnapping.h"

namespace QuelmarEngine {

namespace {

using Magnum::Matrix4d;

/* Where an object or the new parent is in the world, in double precision */
struct World {
    Matrix4d matrix;
    /* The largest world translation on the way there */
    double largestTranslation;
};

World worldOf(QuelmarEditor& editor, const Containers::StringView key) {
    World out;
    out.matrix = worldMatrixOf(editor, key, &out.largestTranslation);
    return out;
}

Matrix4d matrixOfArray(const rapidjson::Value& array) {
    Matrix4d out;
    for(rapidjson::SizeType i = 0; i != 16; ++i) out[i/4][i % 4] = array[i].GetDouble();
    return out;
}

/* The largest number that the computation of each column of the local
   matrix @p local handled, the world matrices divided by the smallest
   scaling of the parent's */
Magnum::Vector4d scalesOf(const Matrix4d& local, const World& object, const World& parent, const double parentScale) {
    Magnum::Vector4d out;
    for(std::size_t column = 0; column != 3; ++column)
        out[column] = std::max(local[column].xyz().length(), object.matrix[column].xyz().length()/parentScale);
    out[3] = std::max(local.translation().length(), (object.largestTranslation + parent.largestTranslation)/parentScale);
    return out;
}

/* @p value as the single-precision number it is, in its shortest form */
rapidjson::Value singlePrecision(const double value) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof(text) - 1, float(value));
    *result.ptr = '\0';
    const double shortest = std::strtod(text, nullptr);
    if(shortest == std::trunc(shortest) && std::abs(shortest) <= 16777216.0) return rapidjson::Value{std::int64_t(shortest)};
    return rapidjson::Value{shortest};
}

}

void reparentSelectionKeepingWorld(QuelmarEditor& editor, const char* const parent) {
    /* Everything is read before the command changes anything */
    const StringArray keys = selectedObjectKeys(editor);
    std::unordered_map<std::string, World> objects;
    for(std::size_t i = 0; i != keys.size(); ++i) objects.emplace(keys.get(i), worldOf(editor, keys.get(i)));
    const World parentWorld = worldOf(editor, parent ? parent : "");
    const Matrix4d toParent = parentWorld.matrix.inverted();
    const Magnum::Matrix3x3d parentColumns = parentWorld.matrix.rotationScaling();
    const double parentScale = std::min({Magnum::Vector3d{parentColumns[0]}.length(), Magnum::Vector3d{parentColumns[1]}.length(), Magnum::Vector3d{parentColumns[2]}.length()});

    ChangeManager& manager = *editor.changeManager;
    const int first = manager.lastChangeIndex() + 1;
    reparentObjectsKeepTransform(editor, editor.data.selection(), parent);
    if(!(parentScale > 0.0)) return;

    const std::string suffix = "/transformation";
    for(int i = first; i <= manager.lastChangeIndex(); ++i) {
        /* The record is the manager's own and nothing has read it yet;
           amending it keeps one change per object, whose undo and redo
           then take the numbers written here */
        Change& change = const_cast<Change&>(manager.change(i));
        const std::string path{change.path.data()};
        if(!change.newValue || path.size() <= suffix.size() || path.compare(path.size() - suffix.size(), suffix.size(), suffix) != 0) continue;
        const auto object = objects.find(path.substr(9, path.size() - 9 - suffix.size()));
        if(object == objects.end()) continue;

        const Matrix4d exact = toParent*object->second.matrix;
        const Matrix4d written = matrixOfArray(*change.newValue);
        const Magnum::Vector4d scales = scalesOf(exact, object->second, parentWorld, parentScale);
        rapidjson::Value numbers = snappedTransformation(exact, scales*(SnappingUlps*DBL_EPSILON), change.oldValue.get(), manager.allocator());
        for(rapidjson::SizeType n = 0; n != 16; ++n)
            if(!(std::abs(written[n/4][n % 4] - exact[n/4][n % 4]) <= scales[n/4]*(WorldKeepingUlps*FLT_EPSILON)))
                numbers[n] = singlePrecision(written[n/4][n % 4]);
        change.newValue = Containers::pointer<rapidjson::Value>(numbers, manager.allocator());
        manager.applyChange(change);
    }
}

}
