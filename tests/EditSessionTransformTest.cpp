/* Transformations as translation, rotation and scaling, and world-keeping
   reparents that give back the numbers that were there */
#include <string>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/EditSession.h"
#include "QuelmarEngine/JsonWriter.h"

using namespace QuelmarEngine;
using Magnum::Vector3d;

namespace {

std::string transformationOf(EditSession& session, const char* const key) {
    const rapidjson::Value* const value = session.value(("/objects/" + std::string{key} + "/transformation").data());
    return value ? writeJson(*value) : "none";
}

void expectNear(const Vector3d& actual, const Vector3d& expected) {
    for(std::size_t i = 0; i != 3; ++i) EXPECT_NEAR(actual[i], expected[i], 1.0e-9) << i;
}

}

/* What an edit was given reads back from the placement, in its space */
TEST(EditSessionTransformTest, EditsReadBackAsGiven) {
    /* p is turned, moved and scaled by 2; o has no transformation */
    const char* const project = R"({"objects":{"p":{"transformation":[0,0,-2,0,0,2,0,0,2,0,0,0,1,2,3,1]},"o":{"parent":"p"}}})";
    enum Part { Translation, Rotation, Scaling };
    const struct { const char* name; Part part; TransformSpace space; Vector3d first, by, expected; } rows[]{
        {"move", Translation, TransformSpace::Local, {1.5, -2.0, 0.3}, {}, {1.5, -2.0, 0.3}},
        {"move by", Translation, TransformSpace::Local, {1.0, 1.0, 1.0}, {0.5, -2.0, 0.25}, {1.5, -1.0, 1.25}},
        {"move in the world", Translation, TransformSpace::World, {-4.0, 0.5, 7.0}, {}, {-4.0, 0.5, 7.0}},
        {"move by in the world", Translation, TransformSpace::World, {1.0, 2.0, 3.0}, {1.0, 0.0, 0.0}, {2.0, 2.0, 3.0}},
        {"rotate", Rotation, TransformSpace::Local, {10.0, 20.0, 30.0}, {}, {10.0, 20.0, 30.0}},
        {"rotate in the world", Rotation, TransformSpace::World, {30.0, -45.0, 60.0}, {}, {30.0, -45.0, 60.0}},
        /* About the space's axes: Z after X */
        {"rotate by", Rotation, TransformSpace::Local, {90.0, 0.0, 0.0}, {0.0, 0.0, 90.0}, {90.0, 0.0, 90.0}},
        {"scale", Scaling, TransformSpace::Local, {2.0, 3.0, 0.5}, {}, {2.0, 3.0, 0.5}},
        {"scale by", Scaling, TransformSpace::Local, {2.0, 3.0, 0.5}, {2.0, 2.0, 3.0}, {4.0, 6.0, 1.5}},
        {"scale in the world", Scaling, TransformSpace::World, {3.0, 3.0, 3.0}, {}, {3.0, 3.0, 3.0}},
    };
    EditResult(EditSession::*const edits[])(Containers::StringView, const Vector3d&, TransformSpace, TransformAmount){&EditSession::move, &EditSession::rotate, &EditSession::scale};
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        EditSession session;
        ASSERT_TRUE(session.openText(project));
        ASSERT_TRUE((session.*edits[row.part])("o", row.first, row.space, TransformAmount::To));
        ASSERT_TRUE(row.by == Vector3d{} || (session.*edits[row.part])("o", row.by, row.space, TransformAmount::By));
        EXPECT_EQ(session.undoCount(), row.by == Vector3d{} ? 1u : 2u);

        ObjectPlacement placement;
        ASSERT_TRUE(session.findPlacement("o", placement));
        const Placement& read = row.space == TransformSpace::Local ? placement.local : placement.world;
        if(row.part == Translation) expectNear(read.translation, row.expected);
        else if(row.part == Rotation) expectNear(eulerDegrees(read.rotation), row.expected);
        else expectNear(read.scaling, row.expected);
    }

    /* Numbers that stand for whole ones and the given ones are written so */
    EditSession session;
    ASSERT_TRUE(session.openText(project));
    ASSERT_TRUE(session.rotate("o", {0.0, 90.0, 0.0}, TransformSpace::Local, TransformAmount::To));
    ASSERT_TRUE(session.move("o", {0.1, 0.2, 0.3}, TransformSpace::Local, TransformAmount::By));
    EXPECT_EQ(transformationOf(session, "o"), "[0,0,-1,0,0,1,0,0,1,0,0,0,0.1,0.2,0.3,1]");

    /* Refusals change nothing */
    EXPECT_EQ(session.scale("o", {1.0e39, 1.0, 1.0}, TransformSpace::Local, TransformAmount::To).message(),
        "can't scale o so: the \"transformation\" of o has to be an array of 16 numbers, each at most 3.4e38 in size");
    EXPECT_EQ(session.move("o", {0.0, 0.0, 1.0/0.0}, TransformSpace::Local, TransformAmount::To).message(), "move takes finite numbers");
    ASSERT_TRUE(session.set("/objects/p/transformation/2", "0"));
    EXPECT_EQ(session.rotate("o", {}, TransformSpace::World, TransformAmount::To).message(),
        "can't rotate o in the world's space: the world transformation of its parent p has a zero scale");
    EXPECT_EQ(session.undoCount(), 3u);
}

/* Moving an object away, keeping its world placement, and back gives back
   the numbers it had; so does a move under the same world placement */
TEST(EditSessionTransformTest, KeepingWorldPlacementsAwayAndBack) {
    const char* const parents[]{
        "[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]",
        "[1,0,0,0,0,1,0,0,0,0,1,0,1000,-250,75.5,1]",
        "[1,0,0,0,0,0,1,0,0,-1,0,0,1,2,3,1]",
        /* 30 and 45 degrees, as seven digits give them */
        "[0.8660254,0.5,0,0,-0.5,0.8660254,0,0,0,0,1,0,2,0,-1,1]",
        "[0.7071068,0,-0.7071068,0,0,1,0,0,0.7071068,0,0.7071068,0,0,0,0,1]",
        "[2,0,0,0,0,2,0,0,0,0,2,0,0,0,0,1]",
        "[0,3,0,0,-3,0,0,0,0,0,3,0,1,1,1,1]",
    };
    const char* const objects[]{
        "[0,0,-1,0,0,1,0,0,1,0,0,0,0,0,3,1]",
        "[1,0,0,0,0,0,1,0,0,-1,0,0,0.3,0,0.1,1]",
        "[1,0,0,0,0,0.9701425,0.2425356,0,0,-0.2425356,0.9701425,0,0,2,8,1]",
        "[0.75,1.299038,0,0,-1.299038,0.75,0,0,0,0,1.5,0,-2.25,0.5,4,1]",
    };
    for(const char* const parent: parents) for(const char* const object: objects) for(const bool startUnder: {false, true}) {
        SCOPED_TRACE(std::string{parent} + " " + object + (startUnder ? " under" : " at the root"));
        EditSession session;
        const std::string project = std::string{R"({"objects":{"p":{"transformation":)"} + parent +
            R"(},"q":{"transformation":)" + parent + R"(},"o":{)" + (startUnder ? R"("parent":"p",)" : "") + R"("transformation":)" + object + "}}}";
        ASSERT_TRUE(session.openText({project.data(), project.size()}));
        const Containers::StringView o[]{"o"};
        ASSERT_TRUE(session.select(o));
        ASSERT_TRUE(session.reparentSelection(startUnder ? "" : "p", ReparentMode::KeepWorld));
        ASSERT_TRUE(session.reparentSelection(startUnder ? "p" : "", ReparentMode::KeepWorld));
        EXPECT_EQ(transformationOf(session, "o"), object);
        /* One change per object and step */
        EXPECT_EQ(session.recordCount(), 4u);
        if(!startUnder) continue;
        ASSERT_TRUE(session.reparentSelection("q", ReparentMode::KeepWorld));
        EXPECT_EQ(transformationOf(session, "o"), object);
    }
}

/* Where the library can't keep a world placement exactly, as under a
   parent that shears, its single-precision numbers stay, in their shortest
   form */
TEST(EditSessionTransformTest, KeepingWorldPlacementsUnderShear) {
    EditSession session;
    ASSERT_TRUE(session.openText(R"({"objects":{"p":{"transformation":[2,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},)"
        R"("r":{"parent":"p","transformation":[0.6,0.8,0,0,-0.8,0.6,0,0,0,0,1,0,0,0,0,1]},"o":{"parent":"r"}}})"));
    const Containers::StringView o[]{"o"};
    ASSERT_TRUE(session.select(o));
    ASSERT_TRUE(session.reparentSelection("", ReparentMode::KeepWorld));
    EXPECT_EQ(transformationOf(session, "o"), "[1.2,0.8,0,0,-0.9478722,1.4218081,0,0,0,0,1,0,0,0,0,1]");
}
