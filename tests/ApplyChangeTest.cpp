#include <string>
#include <gtest/gtest.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;

/* Each row pushes one change on a document, then undoes it and redoes it.
   A null value pushes a removal. */
TEST(ApplyChangeTest, ApplyUndoRedo) {
    struct Row {
        const char* name;
        const char* document;
        const char* path;
        const char* value;
        const char* applied;
        /* Null when the undo gives back the document exactly */
        const char* undone;
    } rows[]{
        {"removal erases the record it empties",
         R"({"objects":{"a7":{"name":"A"},"b":{"name":"B"}}})", "/objects/a7/name", nullptr,
         R"({"objects":{"b":{"name":"B"}}})", R"({"objects":{"b":{"name":"B"},"a7":{"name":"A"}}})"},
        {"removal never erases a top-level member",
         R"({"skins":{"s":{"joints":[]}}})", "/skins/s", nullptr,
         R"({"skins":{}})", nullptr},
        {"cleanup climbs through arrays and objects",
         R"({"objects":{"a7":{"components":[{"type":"mesh"}]}}})", "/objects/a7/components/0/type", nullptr,
         R"({"objects":{}})", nullptr},
        {"cleanup stops at a container that keeps something",
         R"({"objects":{"a7":{"name":"A","components":[{"type":"mesh"}]}}})", "/objects/a7/components/0", nullptr,
         R"({"objects":{"a7":{"name":"A"}}})", nullptr},
        {"removal of a missing path still cleans up from its parent",
         R"({"t":{"a":{"b":{}},"c":1}})", "/t/a/b/missing", nullptr,
         R"({"t":{"c":1}})", R"({"t":{"c":1}})"},
        {"removal of a top-level member",
         R"({"a":1,"skins":{"s":1}})", "/skins", nullptr,
         R"({"a":1})", nullptr},
        {"array element removal and inverse insertion",
         R"({"list":[10,20,30]})", "/list/1", nullptr,
         R"({"list":[10,30]})", nullptr},
        {"restored member goes last",
         R"({"o":{"a":1,"b":2,"c":3}})", "/o/b", nullptr,
         R"({"o":{"a":1,"c":3}})", R"({"o":{"a":1,"c":3,"b":2}})"},
        {"creation at the end appends",
         R"({"list":[10,20,30]})", "/list/3", "5",
         R"({"list":[10,20,30,5]})", nullptr},
        {"creation past the end pads with nulls, which stay",
         R"({"list":[10,20,30]})", "/list/5", "5",
         R"({"list":[10,20,30,null,null,5]})", R"({"list":[10,20,30,null,null]})"},
        {"creation through - appends, undo takes the last element",
         R"({"list":[10,20,30]})", "/list/-", "5",
         R"({"list":[10,20,30,5]})", nullptr},
        {"- on an object names a member",
         R"({"o":{"x":1}})", "/o/-", "5",
         R"({"o":{"x":1,"-":5}})", nullptr},
        {"negative index inserts at the front",
         R"({"list":[10,20]})", "/list/-3", "5",
         R"({"list":[5,10,20]})", nullptr},
        {"negative index on an object names a member",
         R"({"o":{"x":1}})", "/o/-3", "5",
         R"({"o":{"x":1,"-3":5}})", nullptr},
        {"numeric key on an object is a member",
         R"({"objects":{"a":{}}})", "/objects/12", "{}",
         R"({"objects":{"a":{},"12":{}}})", nullptr},
        {"index key under a missing parent makes an array",
         R"({"o":{"x":1}})", "/o/list/0", "5",
         R"({"o":{"x":1,"list":[5]}})", nullptr},
        {"name under a missing parent makes objects",
         R"({"o":{"x":1}})", "/o/a/b", "5",
         R"({"o":{"x":1,"a":{"b":5}}})", nullptr},
        {"replacement",
         R"({"o":{"x":[1,2]}})", "/o/x", R"({"y":true})",
         R"({"o":{"x":{"y":true}}})", nullptr},
        {"replacement of an array element",
         R"({"list":[10,20,30]})", "/list/1", "[5]",
         R"({"list":[10,[5],30]})", nullptr},
    };
    for(const Row& row: rows) {
        SCOPED_TRACE(row.name);
        ProjectFile project;
        ASSERT_TRUE(project.loadFromString(row.document));
        ChangeManager changes{project};

        if(row.value) {
            rapidjson::Document value;
            value.Parse(row.value);
            changes.pushChange(row.path, value, false);
        } else changes.pushRemoval(row.path);
        EXPECT_EQ(writeJson(*project.document), row.applied);

        changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), row.undone ? row.undone : row.document);

        changes.redoLastUndo();
        EXPECT_EQ(writeJson(*project.document), row.applied);
    }
}

TEST(ApplyChangeTest, AppendThroughDashUndoesAndRedoesAsAppend) {
    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"o":{"list":[1]}})"));
    ChangeManager changes{project};
    changes.pushChange("/o/list/-", rapidjson::Value{2}, false);
    changes.pushChange("/o/list/-", rapidjson::Value{3}, false);
    changes.undoLast();
    changes.undoLast();
    EXPECT_EQ(writeJson(*project.document), R"({"o":{"list":[1]}})");
    changes.redoLastUndo();
    changes.redoLastUndo();
    EXPECT_EQ(writeJson(*project.document), R"({"o":{"list":[1,2,3]}})");

    /* Removing through "-" finds nothing to take back, so it erases
       nothing, and neither does its undo */
    changes.pushRemoval("/o/list/-");
    EXPECT_FALSE(changes.lastChange().oldValue);
    EXPECT_EQ(writeJson(*project.document), R"({"o":{"list":[1,2,3]}})");
    changes.undoLast();
    EXPECT_EQ(writeJson(*project.document), R"({"o":{"list":[1,2,3]}})");
}

TEST(ApplyChangeTest, AppliedValuesAreCopies) {
    ProjectFile project;
    ChangeManager changes{project};
    rapidjson::Value value{rapidjson::kArrayType};
    value.PushBack(1, changes.allocator());
    changes.pushChange("/a", value, false);
    value.PushBack(2, changes.allocator());
    project.getValue("/a", false)->PushBack(3, changes.allocator());
    EXPECT_EQ(writeJson(*changes.lastChange().newValue), "[1]");
    changes.undoLast();
    changes.redoLastUndo();
    EXPECT_EQ(writeJson(*project.document), R"({"a":[1]})");
}
