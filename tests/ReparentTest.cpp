/* Reparenting that keeps the world placement: the exact numbers written,
   which objects of a set move, refusals, undo, and a randomised check that
   nothing moves in the world. */

#include <algorithm>
#include <chrono>
#include <iostream>
#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/DualQuaternion.h>
#include <Magnum/Math/Matrix4.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using Magnum::Matrix3x3;
using Magnum::Matrix4;
using Magnum::Vector3;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;

namespace {

typedef Data::DynamicSceneGraph<unsigned short> SceneGraph;

struct ReparentTest: testing::Test {
    void load(const std::string& json) {
        ASSERT_TRUE(editor.loadFromString(json.data()));
    }

    SceneGraph& graph() { return *editor.scene->sceneGraph; }

    unsigned short index(const char* key) {
        return editor.objectLookup->keyToIndex()[Containers::String{key}];
    }

    /* Rotation columns times scaling, then the translation, of the world
       placement the graph computed last */
    Matrix4 computedWorld(const char* key) {
        const unsigned short position = graph().indexToPosition()[index(key)];
        const Magnum::DualQuaternion transformation = graph().absoluteTransformations()[position];
        const Vector3 scaling = graph().absoluteScalings()[position];
        const Matrix3x3 rotation = transformation.real().toMatrix();
        return Matrix4::from(Matrix3x3{rotation[0]*scaling.x(), rotation[1]*scaling.y(), rotation[2]*scaling.z()}, transformation.translation());
    }
    Matrix4 world(const char* key) {
        graph().computeAbsoluteTransformations();
        return computedWorld(key);
    }

    /* The applied records as "path json" */
    std::vector<std::string> records() {
        std::vector<std::string> out;
        for(int i = 0; i <= editor.changeManager->lastChangeIndex(); ++i) {
            const Change& change = editor.changeManager->change(i);
            out.push_back(std::string{change.path.data()} + " " + (change.newValue ? writeJson(*change.newValue) : "()"));
        }
        return out;
    }

    /* A bit set over every object index with the bits of @p keys set */
    BitSetView bits(std::initializer_list<const char*> keys) {
        words.assign(graph().indexToPosition().size()/32 + 1, 0);
        for(const char* key: keys) words[index(key)/32] |= 1u << index(key) % 32;
        return {graph().indexToPosition().size(), words.data()};
    }

    QuelmarEditor editor;
    std::vector<std::uint32_t> words;
};

using ReparentDeathTest = ReparentTest;

TEST_F(ReparentTest, WritesTheLocalMatrixUnderTheNewParent) {
    struct {
        const char* name;
        const char* object;
        const char* parent;
        std::vector<double> expected;
    } const rows[]{
        {"translated parent", "o", "p", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 2, 3, 1}},
        {"root", "o", nullptr, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}},
        {"parent scaled by 2", "o", "s", {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 0.5, 1, 1.5, 1}},
        /* The float nearest to 0.1, widened, not the double nearest to it */
        {"float precision", "h", "i", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, double(0.1f), 0, 0, 1}},
    };
    /* o sits at (1, 2, 3) under q, which sits at (1, 0, 0); h at (0.1, 0, 0)
       and i at the origin */
    const std::string project = R"({"objects":{
        "p":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1,0,0,1]},
        "s":{"transformation":[2,0,0,0, 0,2,0,0, 0,0,2,0, 0,0,0,1]},
        "q":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1,0,0,1]},
        "o":{"parent":"q","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,2,3,1]},
        "h":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0.1,0,0,1]},
        "i":{}}})";
    ASSERT_NE(0.1, double(0.1f));

    for(const auto& row: rows) for(const bool inCallersGroup: {false, true}) {
        SCOPED_TRACE(row.name + std::string{inCallersGroup ? " in a group" : ""});
        load(project);
        std::ostringstream out;
        {
            Utility::Debug redirect{&out};
            if(inCallersGroup) editor.changeManager->beginGroup();
            reparentObjectKeepTransform(editor, row.object, row.parent);
            if(inCallersGroup) editor.changeManager->commit();
        }
        const std::string object = row.object;
        EXPECT_EQ(out.str(), "Reparenting object " + object + " to " + std::string{row.parent ? row.parent : "root"} + "\n");

        ASSERT_EQ(editor.changeManager->changeCount(), 2u);
        EXPECT_EQ(editor.changeManager->change(0).path.data(), "/objects/" + object + "/parent");
        EXPECT_EQ(editor.changeManager->change(1).path.data(), "/objects/" + object + "/transformation");
        const rapidjson::Value& parent = *editor.changeManager->change(0).newValue;
        if(row.parent) EXPECT_STREQ(parent.GetString(), row.parent);
        else EXPECT_TRUE(parent.IsNull());

        const rapidjson::Value& written = *editor.changeManager->change(1).newValue;
        ASSERT_TRUE(written.IsArray());
        ASSERT_EQ(written.Size(), 16u);
        std::vector<double> numbers;
        for(const rapidjson::Value& number: written.GetArray()) numbers.push_back(number.GetDouble());
        EXPECT_EQ(numbers, row.expected);
    }
}

TEST_F(ReparentTest, SetMovesTopmostObjectsAsOneStep) {
    /* a ─ b, c, d ─ e; bits of a, b, c and the new parent d */
    load(R"({"objects":{
        "a":{"transformation":[0,1,0,0, -1,0,0,0, 0,0,1,0, 1,2,3,1]},
        "b":{"parent":"a","transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,5,0,1]},
        "c":{"transformation":[2,0,0,0, 0,2,0,0, 0,0,2,0, -1,0,0,1]},
        "d":{"transformation":[1,0,0,0, 0,0,1,0, 0,-1,0,0, 4,4,4,1]},
        "e":{"parent":"d"}}})");
    const std::string before = editor.data.project.toJson().data();
    const Matrix4 worldA = world("a"), worldB = world("b"), worldC = world("c");
    int notified = 0;
    editor.changeManager->addChangeHandler("objects", [](const Change&, Containers::ArrayView<const Containers::String>, void* count) {
        ++*static_cast<int*>(count);
    }, &notified);

    std::ostringstream out;
    {
        Utility::Debug redirect{&out};
        reparentObjectsKeepTransform(editor, bits({"a", "b", "c", "d"}), "d");
    }
    EXPECT_EQ(out.str(), "Reparenting object a to d\nReparenting object c to d\n");
    EXPECT_FALSE(editor.changeManager->isGroupOpen());
    EXPECT_EQ(notified, 4);
    const std::vector<std::string> moved = records();
    ASSERT_THAT(moved, ElementsAre(
        "/objects/a/parent \"d\"", testing::StartsWith("/objects/a/transformation "),
        "/objects/c/parent \"d\"", testing::StartsWith("/objects/c/transformation ")));
    for(int i = 1; i != 4; ++i)
        EXPECT_EQ(editor.changeManager->change(i).group, editor.changeManager->change(0).group);
    EXPECT_EQ(world("a"), worldA);
    EXPECT_EQ(world("b"), worldB);
    EXPECT_EQ(world("c"), worldC);
    const std::string after = editor.data.project.toJson().data();

    editor.changeManager->undoLast();
    EXPECT_EQ(editor.data.project.toJson().data(), before);
    EXPECT_FALSE(editor.changeManager->canUndo());
    EXPECT_EQ(world("a"), worldA);
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(editor.data.project.toJson().data(), after);
}

TEST_F(ReparentTest, SetWithNothingToMove) {
    load(R"({"objects":{"a":{},"b":{"parent":"a"}}})");
    int notified = 0;
    editor.changeManager->addChangeHandler("", [](const Change&, Containers::ArrayView<const Containers::String>, void* count) {
        ++*static_cast<int*>(count);
    }, &notified);
    struct {
        const char* name;
        std::initializer_list<const char*> keys;
        const char* parent;
    } const rows[]{
        {"no bits", {}, "a"},
        {"only the new parent", {"a"}, "a"},
        /* The root has no record to move */
        {"only the root", {""}, "a"},
        {"the root and the new parent", {"", "a"}, "a"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        std::ostringstream out;
        {
            Utility::Debug redirect{&out};
            reparentObjectsKeepTransform(editor, bits(row.keys), row.parent);
        }
        EXPECT_THAT(out.str(), IsEmpty());
        EXPECT_EQ(editor.changeManager->changeCount(), 0u);
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        EXPECT_EQ(notified, 0);
    }
}

TEST_F(ReparentTest, SetCoversEveryObjectIndexButTheRoot) {
    /* With a deleted, the graph has three positions, but c has index 3; the
       root's bit doesn't hold back what is below it */
    load(R"({"objects":{"a":{"deleted":true},"b":{},"c":{}}})");
    ASSERT_EQ(graph().header().objectCount, 3);
    ASSERT_EQ(index("c"), 3);
    std::ostringstream out;
    {
        Utility::Debug redirect{&out};
        reparentObjectsKeepTransform(editor, bits({"", "c"}), "b");
    }
    EXPECT_THAT(records(), ElementsAre("/objects/c/parent \"b\"", testing::StartsWith("/objects/c/transformation ")));
}

TEST_F(ReparentTest, RefusesWhatCantBeWritten) {
    /* z is flat in Z; t is so small that o's place under it overflows */
    load(R"({"objects":{
        "z":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,0,0, 0,0,0,1]},
        "t":{"transformation":[1e-10,0,0,0, 0,1e-10,0,0, 0,0,1e-10,0, 0,0,0,1]},
        "o":{"transformation":[1,0,0,0, 0,1,0,0, 0,0,1,0, 1e30,0,0,1]},
        "k":{}}})");
    std::ostringstream out, warnings;
    {
        Utility::Debug redirect{&out};
        Utility::Warning redirectWarnings{&warnings};
        reparentObjectKeepTransform(editor, "o", "z");
        reparentObjectKeepTransform(editor, "o", "t");
        editor.changeManager->beginGroup();
        reparentObjectKeepTransform(editor, "k", "z");
        editor.changeManager->commit();
        /* The one that can move still does */
        reparentObjectsKeepTransform(editor, bits({"o", "k"}), "z");
        reparentObjectsKeepTransform(editor, bits({"o", "k"}), "t");
    }
    EXPECT_EQ(warnings.str(),
        "Object o is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object o is not moved under t as its transformation there would not be finite\n"
        "Object k is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object o is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object k is not moved under z as the world transformation of the parent can't be inverted\n"
        "Object o is not moved under t as its transformation there would not be finite\n");
    EXPECT_EQ(out.str(), "Reparenting object k to t\n");
    EXPECT_THAT(records(), ElementsAre("/objects/k/parent \"t\"", testing::StartsWith("/objects/k/transformation [")));
    EXPECT_EQ(world("k"), Matrix4{});
}

/* Largest difference between two matrices relative to their size, with
   entries below 1 compared absolutely */
float relativeDifference(const Matrix4& a, const Matrix4& b) {
    float size = 1.0f, difference = 0.0f;
    for(std::size_t i = 0; i != 16; ++i) {
        size = std::max({size, std::abs(a.data()[i]), std::abs(b.data()[i])});
        difference = std::max(difference, std::abs(a.data()[i] - b.data()[i]));
    }
    return difference/size;
}

TEST_F(ReparentTest, RandomMovesKeepEveryWorldPlacement) {
    constexpr std::size_t ObjectCount = 24;
    constexpr std::size_t MoveCount = 1200;
    std::mt19937 random{20240611};
    std::uniform_real_distribution<float> coordinate{-5.0f, 5.0f}, scale{0.6f, 1.6f};
    std::normal_distribution<float> normal;
    auto pick = [&](const std::size_t count) { return std::size_t(random() % count); };

    std::vector<std::string> keys;
    std::ostringstream project;
    project.precision(9);
    project << R"({"objects":{)";
    for(std::size_t i = 0; i != ObjectCount; ++i) {
        keys.push_back("o" + std::to_string(i));
        const Magnum::Quaternion rotation = Magnum::Quaternion{{normal(random), normal(random), normal(random)}, normal(random)}.normalized();
        const Matrix4 local = Matrix4::from(rotation.toMatrix(), {coordinate(random), coordinate(random), coordinate(random)})*Matrix4::scaling(Vector3{scale(random)});
        project << (i ? "," : "") << '"' << keys[i] << R"(":{)";
        /* Earlier objects only, so there is no cycle */
        if(i && pick(4)) project << R"("parent":")" << keys[pick(i)] << R"(",)";
        project << R"("transformation":[)";
        for(std::size_t j = 0; j != 16; ++j) project << (j ? "," : "") << local.data()[j];
        project << "]}";
    }
    project << "}}";
    load(project.str());

    auto worlds = [&]{
        graph().computeAbsoluteTransformations();
        std::vector<Matrix4> out;
        for(const std::string& key: keys) out.push_back(computedWorld(key.data()));
        return out;
    };
    /* Whether @p key is @p ancestor or below it, in the graph as it is */
    auto isBelow = [&](const std::string& key, const std::string& ancestor) {
        const unsigned short target = index(ancestor.data());
        for(unsigned short current = index(key.data()); current; )  {
            if(current == target) return true;
            current = graph().positionToIndex()[graph().hierarchy()[graph().indexToPosition()[current]].parent];
        }
        return false;
    };

    const auto start = std::chrono::steady_clock::now();
    std::size_t movedObjects = 0;
    std::ostringstream out;
    Utility::Debug redirect{&out};
    for(std::size_t move = 0; move != MoveCount; ++move) {
        std::vector<std::string> set;
        const bool single = pick(2);
        for(std::size_t i = 0, count = single ? 1 : 1 + pick(5); i != count; ++i)
            set.push_back(keys[pick(ObjectCount)]);
        /* A few moves to the root; otherwise never under a moved object's
           own subtree, except the new parent itself in a set, which stays */
        std::string parent;
        do parent = pick(8) ? keys[pick(ObjectCount)] : std::string{};
        while(!parent.empty() && [&]{
            for(const std::string& key: set)
                if(isBelow(parent, key) && (single || parent != key)) return true;
            return false;
        }());
        SCOPED_TRACE("move " + std::to_string(move) + " under " + parent);
        const char* const newParent = parent.empty() ? nullptr : parent.data();

        const std::vector<Matrix4> before = worlds();
        const std::size_t changesBefore = editor.changeManager->changeCount();
        if(single) {
            const bool inGroup = pick(2);
            if(inGroup) editor.changeManager->beginGroup();
            reparentObjectKeepTransform(editor, set[0].data(), newParent);
            if(inGroup) editor.changeManager->commit();
        } else {
            std::vector<const char*> pointers;
            for(const std::string& key: set) pointers.push_back(key.data());
            std::vector<std::uint32_t> setWords(graph().indexToPosition().size()/32 + 1);
            for(const std::string& key: set) setWords[index(key.data())/32] |= 1u << index(key.data()) % 32;
            reparentObjectsKeepTransform(editor, {graph().indexToPosition().size(), setWords.data()}, newParent);
        }
        movedObjects += (editor.changeManager->changeCount() - changesBefore)/2;

        /* Everything stays, the moved objects and what is below them too */
        const std::vector<Matrix4> after = worlds();
        for(std::size_t i = 0; i != ObjectCount; ++i) {
            ASSERT_LE(relativeDifference(before[i], after[i]), 1.0e-4f) << keys[i];
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cerr << "[   INFO   ] " << MoveCount << " reparent calls moved " << movedObjects << " objects in " << seconds << " s" << std::endl;
    EXPECT_GE(movedObjects, 1000u);
}

TEST_F(ReparentDeathTest, MissingHostPartsAreFatal) {
    load(R"({"objects":{"a":{},"b":{}}})");
    const BitSetView a = bits({"a"});
    const char* const Null = "Containers::Pointer: the pointer is null\n";
    EXPECT_DEATH({
        editor.scene->sceneGraph = nullptr;
        reparentObjectKeepTransform(editor, "a", "b");
    }, Eq(Null));
    EXPECT_DEATH({
        editor.objectLookup = nullptr;
        reparentObjectKeepTransform(editor, "a", "b");
    }, Eq(Null));
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        std::ostringstream out;
        Utility::Debug redirect{&out};
        reparentObjectKeepTransform(editor, "a", "b");
    }, Eq(Null));
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        reparentObjectsKeepTransform(editor, a, "b");
    }, Eq(Null));
    EXPECT_DEATH({
        editor.scene->sceneGraph = Containers::pointer<SceneGraph>();
        reparentObjectsKeepTransform(editor, a, "b");
    }, Eq("DynamicSceneGraph::header(): Header not initilized.\n"));
}

}
