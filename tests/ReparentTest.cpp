/* Reparenting that keeps the world placement: the numbers written, which objects of a set move, refusals, undo, and a
   randomised check that nothing moves in the world */

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <sstream>
#include <tuple>
#include <gmock/gmock.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using Magnum::Matrix3x3;
using Magnum::Matrix4;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

void countCalls(const Change&, Containers::ArrayView<const Containers::String>, void* count) { ++*static_cast<int*>(count); }

struct ReparentTest: testing::Test {
    void load(const std::string& json) {
        ASSERT_TRUE(editor.loadFromString(json.data()));
        out.str("");
    }
    Data::DynamicSceneGraph<unsigned short>& graph() { return *editor.scene->sceneGraph; }
    unsigned short index(const std::string& key) { return editor.objectLookup->keyToIndex()[Containers::String{key.data()}]; }

    /* Rotation columns times scaling, then the translation, of the world placement, computed anew if @p compute */
    Matrix4 world(const std::string& key, const bool compute = true) {
        if(compute) graph().computeAbsoluteTransformations();
        const unsigned short position = graph().indexToPosition()[index(key)];
        const Magnum::Vector3 scaling = graph().absoluteScalings()[position];
        const Matrix3x3 rotation = graph().absoluteTransformations()[position].real().toMatrix();
        return Matrix4::from(Matrix3x3{rotation[0]*scaling.x(), rotation[1]*scaling.y(), rotation[2]*scaling.z()}, graph().absoluteTransformations()[position].translation());
    }

    /* The applied records as "path json" */
    std::vector<std::string> records() {
        std::vector<std::string> records;
        for(int i = 0; i <= editor.changeManager->lastChangeIndex(); ++i)
            records.push_back(std::string{editor.changeManager->change(i).path.data()} + " " + writeJson(*editor.changeManager->change(i).newValue));
        return records;
    }

    /* Loads o0, o1... placed by @p local, each under the earlier object
       @p parent names, if any (-1 for none) */
    std::vector<std::string> loadRandom(const std::size_t count, const std::function<Matrix4()>& local, const std::function<int(std::size_t)>& parent) {
        std::vector<std::string> keys;
        std::ostringstream project;
        project.precision(9);
        project << R"({"objects":{)";
        for(std::size_t i = 0; i != count; ++i) {
            keys.push_back("o" + std::to_string(i));
            const Matrix4 matrix = local();
            project << (i ? "," : "") << '"' << keys[i] << R"(":{)";
            if(const int p = parent(i); p >= 0) project << R"("parent":"o)" << p << R"(",)";
            project << R"("transformation":[)";
            for(std::size_t j = 0; j != 16; ++j) project << (j ? "," : "") << matrix.data()[j];
            project << "]}";
        }
        load(project.str() + "}}");
        return keys;
    }

    /* Whether @p key is @p ancestor or below it, in the graph as it is */
    bool isBelow(const std::string& key, const std::string& ancestor) {
        for(unsigned short current = index(key); current; current = graph().positionToIndex()[graph().hierarchy()[graph().indexToPosition()[current]].parent])
            if(current == index(ancestor)) return true;
        return false;
    }

    /* A bit set over every object index with the bits of @p keys set */
    BitSetView bits(const std::vector<std::string>& keys) {
        words.assign(graph().indexToPosition().size()/32 + 1, 0);
        for(const std::string& key: keys) words[index(key)/32] |= 1u << index(key) % 32;
        return {graph().indexToPosition().size(), words.data()};
    }

    std::ostringstream out, warnings;
    Utility::Debug redirect{&out};
    Utility::Warning redirectWarnings{&warnings};
    QuelmarEditor editor;
    std::vector<std::uint32_t> words;
};

TEST_F(ReparentTest, WritesTheLocalMatrixUnderTheNewParent) {
    /* o sits at (1, 2, 3) under q, which sits at (1, 0, 0); h at (0.1, 0, 0), i at the origin */
    const std::string project = R"({"objects":{"p":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1,0,0,1]},"s":{"transformation":[2,0,0,0, 0,2,0,0, 0,0,2,0, 0,0,0,1]},)"
        R"("q":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1,0,0,1]},"o":{"parent":"q","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,2,3,1]},)"
        R"("h":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0.1,0,0,1]},"i":{}}})";
    struct { const char* name; const char* object; const char* parent; const char* expected; } const rows[]{
        {"translated parent", "o", "p", "[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,2.0,3.0,1.0]"},
        {"root", "o", nullptr, "[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,1.0,2.0,3.0,1.0]"},
        {"parent scaled by 2", "o", "s", "[0.5,0.0,0.0,0.0,0.0,0.5,0.0,0.0,0.0,0.0,0.5,0.0,0.5,1.0,1.5,1.0]"},
        /* The float nearest to 0.1, widened, not the double nearest to it */
        {"float precision", "h", "i", "[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.10000000149011612,0.0,0.0,1.0]"},
    };
    for(const auto& row: rows) for(const bool inCallersGroup: {false, true}) {
        SCOPED_TRACE(row.name + std::string{inCallersGroup ? " in a group" : ""});
        load(project);
        if(inCallersGroup) editor.changeManager->beginGroup();
        reparentObjectKeepTransform(editor, row.object, row.parent);
        if(inCallersGroup) editor.changeManager->commit();
        const std::string object = row.object, parent = row.parent ? row.parent : "root";
        EXPECT_EQ(out.str(), "Reparenting object " + object + " to " + parent + "\n");
        EXPECT_THAT(records(), ElementsAre("/objects/" + object + "/parent " + (row.parent ? "\"" + parent + "\"" : "null"),
            "/objects/" + object + "/transformation " + row.expected));
    }
}

TEST_F(ReparentTest, SetMovesTopmostObjectsButNotRootOrParentAsOneStep) {
    /* a ─ b, c, d ─ e; bits of a, b, c and the new parent d */
    load(R"({"objects":{"a":{"transformation":[0,1,0,0, -1,0,0,0, 0,0,1,0, 1,2,3,1]},"b":{"parent":"a","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,5,0,1]},)"
        R"("c":{"transformation":[2,0,0,0, 0,2,0,0, 0,0,2,0, -1,0,0,1]},"d":{"transformation":[1,0,0,0, 0,0,1,0, 0,-1,0,0, 4,4,4,1]},"e":{"parent":"d"}}})");
    const std::string before = editor.data.project.toJson().data();
    int notified = 0;
    editor.changeManager->addChangeHandler("objects", countCalls, &notified);
    reparentObjectsKeepTransform(editor, bits({"a", "b", "c", "d"}), "d");
    EXPECT_EQ(out.str(), "Reparenting object a to d\nReparenting object c to d\n");
    EXPECT_EQ(std::make_tuple(editor.changeManager->isGroupOpen(), notified), std::make_tuple(false, 4));
    EXPECT_THAT(records(), ElementsAre("/objects/a/parent \"d\"", StartsWith("/objects/a/transformation "), "/objects/c/parent \"d\"", StartsWith("/objects/c/transformation ")));
    const std::string after = editor.data.project.toJson().data();
    editor.changeManager->undoLast();
    EXPECT_EQ(std::make_tuple(std::string{editor.data.project.toJson().data()}, editor.changeManager->canUndo()), std::make_tuple(before, false));
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(editor.data.project.toJson().data(), after);

    /* With a deleted the graph has three positions, but c has index 3; the
       root's bit holds back nothing below it, and neither it nor the new
       parent moves */
    load(R"({"objects":{"a":{"deleted":true},"b":{},"c":{}}})");
    reparentObjectsKeepTransform(editor, bits({"", "b", "c"}), "b");
    EXPECT_THAT(records(), ElementsAre("/objects/c/parent \"b\"", StartsWith("/objects/c/transformation [")));
}

TEST_F(ReparentTest, RefusesWhatCantBeWritten) {
    /* z is flat in Z; t is so small that o's place under it overflows */
    load(R"({"objects":{"z":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,0,0, 0,0,0,1]},"t":{"transformation":[1e-10,0,0,0, 0,1e-10,0,0, 0,0,1e-10,0, 0,0,0,1]},)"
        R"("o":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1e30,0,0,1]},"k":{}}})");
    /* The one that can move still does */
    reparentObjectsKeepTransform(editor, bits({"o", "k"}), "z");
    reparentObjectsKeepTransform(editor, bits({"o", "k"}), "t");
    EXPECT_EQ(warnings.str(),
        "Object o is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object k is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object o is not moved under t as its transformation there would not be finite\n");
    EXPECT_EQ(out.str(), "Reparenting object k to t\n");
    EXPECT_THAT(records(), ElementsAre("/objects/k/parent \"t\"", StartsWith("/objects/k/transformation [")));
    EXPECT_EQ(world("k"), Matrix4{});
}

TEST_F(ReparentTest, RandomMovesKeepEveryWorldPlacement) {
    constexpr std::size_t ObjectCount = 24;
    std::mt19937 random{20240611};
    std::uniform_real_distribution<float> coordinate{-5.0f, 5.0f}, scale{0.6f, 1.6f};
    std::normal_distribution<float> normal;
    auto pick = [&](const std::size_t count) { return std::size_t(random() % count); };
    /* Earlier objects only, so there is no cycle */
    const std::vector<std::string> keys = loadRandom(ObjectCount, [&]{
        const Magnum::Quaternion rotation = Magnum::Quaternion{{normal(random), normal(random), normal(random)}, normal(random)}.normalized();
        return Matrix4::from(rotation.toMatrix(), {coordinate(random), coordinate(random), coordinate(random)})*Matrix4::scaling(Magnum::Vector3{scale(random)});
    }, [&](std::size_t i) { return i && pick(4) ? int(pick(i)) : -1; });
    /* Largest difference between two matrices relative to their size, entries below 1 compared absolutely */
    auto relativeDifference = [](const Matrix4& a, const Matrix4& b) {
        float size = 1.0f, difference = 0.0f;
        for(std::size_t i = 0; i != 16; ++i) {
            size = std::max({size, std::abs(a.data()[i]), std::abs(b.data()[i])});
            difference = std::max(difference, std::abs(a.data()[i] - b.data()[i]));
        }
        return difference/size;
    };

    std::size_t movedObjects = 0;
    for(std::size_t move = 0; move != 1200; ++move) {
        std::vector<std::string> set;
        const bool single = pick(2);
        for(std::size_t i = 0, count = single ? 1 : 1 + pick(5); i != count; ++i) set.push_back(keys[pick(ObjectCount)]);
        /* A few moves to the root; otherwise never under a moved object's own subtree, except the new parent itself in a set, which stays */
        std::string parent;
        do parent = pick(8) ? keys[pick(ObjectCount)] : std::string{};
        while(!parent.empty() && std::any_of(set.begin(), set.end(), [&](const std::string& key) { return isBelow(parent, key) && (single || parent != key); }));
        SCOPED_TRACE("move " + std::to_string(move) + " under " + parent);

        std::vector<Matrix4> before;
        for(const std::string& key: keys) before.push_back(world(key, before.empty()));
        const std::size_t changesBefore = editor.changeManager->changeCount();
        const bool inGroup = single && pick(2);
        if(inGroup) editor.changeManager->beginGroup();
        if(single) reparentObjectKeepTransform(editor, set[0].data(), parent.empty() ? nullptr : parent.data());
        else reparentObjectsKeepTransform(editor, bits(set), parent.empty() ? nullptr : parent.data());
        if(inGroup) editor.changeManager->commit();
        movedObjects += (editor.changeManager->changeCount() - changesBefore)/2;
        /* Everything stays, the moved objects and what is below them too */
        for(std::size_t i = 0; i != ObjectCount; ++i) ASSERT_LE(relativeDifference(before[i], world(keys[i], i == 0)), 1.0e-4f) << keys[i];
    }
    EXPECT_GE(movedObjects, 1000u);
}

}

TEST_F(ReparentTest, NearDegenerateMovesThenRebuild) {
    /* Columns almost parallel, almost vanishing or mirrored: the rotation
       taken out of every world matrix after the moves still has to be one,
       to the few ulps quaternion conversion allows */
    constexpr std::size_t ObjectCount = 16;
    std::mt19937 random{20261123};
    std::normal_distribution<float> normal;
    auto vector = [&] { return Magnum::Vector3{normal(random), normal(random), normal(random)}; };
    auto small = [&] { return std::pow(10.0f, -2.0f - float(random() % 4)); };
    const std::vector<std::string> keys = loadRandom(ObjectCount, [&]{
        const Magnum::Vector3 a = vector();
        const Matrix3x3 columns{a, a + vector()*small(), random() % 2 ? vector()*small() : -vector()};
        return Matrix4::from(columns, vector());
    }, [&](std::size_t i) { return i ? int(random() % i) : -1; });
    for(std::size_t move = 0; move != 300; ++move) {
        const std::string& key = keys[random() % ObjectCount];
        const std::string& parent = keys[random() % ObjectCount];
        if(!isBelow(parent, key)) reparentObjectKeepTransform(editor, key.data(), parent.data());
        graph().computeAbsoluteTransformations();
    }
    std::vector<Matrix4> before;
    for(const std::string& key: keys) before.push_back(world(key));
    editor.rebuildScene();
    for(std::size_t i = 0; i != ObjectCount; ++i) EXPECT_EQ(world(keys[i]), before[i]) << keys[i];
}
