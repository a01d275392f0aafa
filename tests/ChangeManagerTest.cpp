#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;
using testing::Eq;
using testing::MatchesRegex;

namespace {

/* Runs space-separated steps: "[" opens a group, "]" commits, "<" undoes,
   ">" redoes, "/p" pushes the next of 0, 1, 2... to /p, "=/p" merging */
void run(ChangeManager& changes, const char* script) {
    std::istringstream in{script};
    int value = 0;
    for(std::string step; in >> step; ) {
        if(step == "[") changes.beginGroup();
        else if(step == "]") changes.commit();
        else if(step == "<") changes.undoLast();
        else if(step == ">") changes.redoLastUndo();
        else changes.pushChange(step.data() + (step[0] == '='), rapidjson::Value{value++}, step[0] == '=');
    }
}

/* Paths of the records, oldest first */
std::string paths(const ChangeManager& changes) {
    std::string out;
    for(std::size_t i = 0; i != changes.changeCount(); ++i)
        out += (i ? " " : "") + std::string{changes.change(i).path.data()};
    return out;
}

/* A literal with the zero bytes inside it */
template<std::size_t size> std::string text(const char(&data)[size]) {
    return std::string(data, size - 1);
}

Containers::Array<char> pathArray(const char* text) {
    Containers::Array<char> out{ValueInit, std::strlen(text) + 1};
    std::memcpy(out.data(), text, out.size() - 1);
    return out;
}

struct ChangeManagerTest: testing::Test {
    std::string document() const { return writeJson(*project.document); }

    /* Appends the path of every notification to notified */
    void recordNotifications() {
        changes.addChangeHandler("", [](const Change& change, Containers::ArrayView<const Containers::String>, void* out) {
            *static_cast<std::string*>(out) += std::string{change.path.data()} + " ";
        }, &notified);
    }

    ProjectFile project;
    ChangeManager changes{project};
    std::string notified;
};

using ChangeManagerDeathTest = ChangeManagerTest;

}

TEST_F(ChangeManagerTest, DebugPrint) {
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a":{"name":"A"}}})"));
    changes.pushChange("/objects/a/name", "B", false);
    /* An equal value is still a replacement, a missing path a creation */
    changes.pushChange("/objects/a/name", "B", false);
    changes.pushChange("/objects/b", rapidjson::Value{rapidjson::kObjectType}, false);
    changes.pushRemoval("/objects/a");
    changes.pushRemoval("/nothing");
    std::ostringstream out;
    for(std::size_t i = 0; i != 5; ++i) { Utility::Debug debug{&out}; debug << changes.change(i); }
    EXPECT_EQ(out.str(), "Change /objects/a/name: \"A\" -> \"B\"\nChange /objects/a/name: \"B\" -> \"B\"\nCreate /objects/b: () -> {}\n"
                         "Remove /objects/a: {\"name\":\"B\"} -> ()\nCreate /nothing: () -> ()\n");
}

TEST(ChangeManagerMergeTest, Merge) {
    const struct {
        const char *name, *script, *paths, *document;
    } rows[]{
        {"grouped: the found record takes the value and becomes the newest", "/first [ /x /y =/x ]", "/first /y /x", R"({"first":0,"x":3,"y":2})"},
        {"grouped from index 0: the first record is never a target", "[ /x /y =/x ]", "/x /y /x", R"({"x":2,"y":1})"},
        {"ungrouped run", "/first /x /y =/x", "/first /y /x", R"({"first":0,"x":3,"y":2})"},
        {"ungrouped merge keeps the redo tail", "/first /x /y < =/x", "/first /x /y", R"({"first":0,"x":3})"},
        {"not past the end of the run", "/first [ /x ] /y =/x", "/first /x /y /x", R"({"first":0,"x":3,"y":2})"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        ProjectFile project;
        ChangeManager changes{project};
        run(changes, row.script);
        EXPECT_EQ(paths(changes), row.paths);
        EXPECT_EQ(writeJson(*project.document), row.document);
        /* The merged record keeps its first old value */
        while(changes.canUndo()) changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), "{}");
    }
}

TEST_F(ChangeManagerTest, CommitNotifiesNewestFirst) {
    /* Nothing to commit, undo or redo yet */
    recordNotifications();
    run(changes, "] < >");
    EXPECT_EQ(notified, "");
    run(changes, "/before [ /c1 /c2 /c3");
    EXPECT_EQ(notified, "/before ");
    changes.commit();
    EXPECT_EQ(notified, "/before /c3 /c2 /c1 ");
    /* A nested beginGroup() leaves the first group's records unannounced;
       undo and redo notify at once, a group per step */
    notified.clear();
    run(changes, "[ /d1 [ /e1 /e2 ] < < > >");
    EXPECT_EQ(notified, "/e2 /e1 /e2 /e1 /d1 /d1 /e1 /e2 ");
    EXPECT_EQ(changes.lastChangeIndex(), 6);
    /* A commit with no group open announces the newest ungrouped run again */
    run(changes, "/a /b");
    notified.clear();
    changes.commit();
    EXPECT_EQ(notified, "/b /a ");
}

TEST_F(ChangeManagerTest, Handlers) {
    /* Each handler appends "key path [component|...]" to heard; the token
       counts the live ones */
    std::string heard;
    const auto token = std::make_shared<int>();
    static const char* const keys[]{"parent", "objects", "name", "k3", "k4", "k5", "k6", "k7", "k8", "k9", "k10", "k11", "k12", "k13", "k14", "k15", "k16"};
    for(std::size_t i = 0; i != 17; ++i) {
        changes.addChangeHandler(keys[i], [key = keys[i], token](const Change& change, Containers::ArrayView<const Containers::String> path, void* out) {
            std::string& heard = *static_cast<std::string*>(out);
            heard += std::string{key} + " " + change.path.data() + " [";
            for(const Containers::String& component: path) heard += std::string{component.data(), component.size()} + "|";
            heard += "]\n";
        }, &heard);
        /* Room grows by 16 at a time; searching an uncompiled map would abort */
        EXPECT_EQ(changes.handlers().capacity(), i < 16 ? 16u : 32u);
    }
    changes.pushChange("/objects/a1/parent", "p", false);
    changes.pushChange("/skins/s1/joints", "j", false);
    /* A component equal to the key twice calls the handler twice */
    changes.pushChange("/objects/a1/objects", "o", false);
    changes.pushChange("/skins/s1/k16", "k", false);
    /* Components in path order; the last one keeps the zero byte */
    EXPECT_EQ(heard, text("objects /objects/a1/parent [|objects|a1|parent\0|]\n"
                          "parent /objects/a1/parent [|objects|a1|parent\0|]\n"
                          "objects /objects/a1/objects [|objects|a1|objects\0|]\n"
                          "objects /objects/a1/objects [|objects|a1|objects\0|]\n"
                          "k16 /skins/s1/k16 [|skins|s1|k16\0|]\n"));
    /* The empty key hears everything */
    recordNotifications();
    changes.pushChange("/skins/s1/joints", "J", false);
    EXPECT_EQ(notified, "/skins/s1/joints ");

    /* reset() destroys every handler, and none hears anything after */
    heard.clear();
    notified.clear();
    changes.reset(project);
    EXPECT_EQ(token.use_count(), 1);
    changes.pushChange("/objects/a1/name", "M", false);
    EXPECT_EQ(heard + notified, "");
}

TEST_F(ChangeManagerTest, SaveMark) {
    run(changes, "/n /n /n /n");
    changes.markSave();
    EXPECT_FALSE(changes.hasUnsavedChanges());
    /* A push drops the redo tail */
    run(changes, "< < /n");
    EXPECT_EQ(changes.changeCount(), 3u);
    EXPECT_EQ(changes.savedChangeIndex(), 3);
    EXPECT_TRUE(changes.hasUnsavedChanges());
    /* A record landing on the saved index: the saved state is gone */
    run(changes, "/n");
    EXPECT_EQ(changes.savedChangeIndex(), -1);
    run(changes, "< < < <");
    EXPECT_FALSE(changes.hasUnsavedChanges());
    /* A merge at the mark leaves it alone, although the document changed */
    run(changes, "> >");
    changes.markSave();
    run(changes, "=/n");
    EXPECT_EQ(changes.savedChangeIndex(), 1);
    EXPECT_FALSE(changes.hasUnsavedChanges());
    /* reset() forgets the history, keeps the mark and the open group */
    changes.beginGroup();
    changes.reset(project);
    EXPECT_EQ(changes.changeCount(), 0u);
    EXPECT_EQ(changes.savedChangeIndex(), 1);
    EXPECT_TRUE(changes.hasUnsavedChanges());
    EXPECT_TRUE(changes.isGroupOpen());
}

TEST_F(ChangeManagerTest, PushAppend) {
    /* What is absent or not an array counts as an empty array */
    ASSERT_TRUE(project.loadFromString(R"({"o":{"list":["a"],"text":"t"}})"));
    changes.pushAppend("/o/list", "b");
    changes.pushAppend("/o/text", "c");
    changes.pushAppend("/o/missing", "{}");
    EXPECT_EQ(document(), R"({"o":{"list":["a","b"],"text":["c"],"missing":["{}"]}})");
    run(changes, "< < <");
    EXPECT_EQ(document(), R"({"o":{"list":["a"],"text":"t"}})");
}

TEST_F(ChangeManagerTest, PathArrays) {
    /* The string form leaves the caller's array alone, the others exchange
       it with what the slot held: nothing when new, the path of the dropped
       redo record when reused */
    Containers::Array<char> a = pathArray("/a"), removal = pathArray("/a"), b = pathArray("/b");
    changes.pushChange(std::move(a), "text", false);
    EXPECT_EQ(a.size(), 3u);
    changes.pushRemoval(std::move(removal));
    EXPECT_TRUE(removal.isEmpty());
    changes.undoLast();
    const rapidjson::Value value{5};
    changes.pushChange(std::move(b), &value, false);
    EXPECT_STREQ(b.data(), "/a");
    EXPECT_EQ(document(), R"({"a":"text","b":5})");
}

/* Each row pushes one change, a removal for a null value, then undoes and
   redoes it */
TEST(ChangeManagerApplyTest, ApplyUndoRedo) {
    const struct {
        const char *name, *document, *path, *value, *applied;
        const char* undone; /* null when it is the document */
    } rows[]{
        {"removal erases the record it empties, undo restores it last", R"({"objects":{"a7":{"name":"A"},"b":{"name":"B"}}})", "/objects/a7/name", nullptr,
         R"({"objects":{"b":{"name":"B"}}})", R"({"objects":{"b":{"name":"B"},"a7":{"name":"A"}}})"},
        {"removal never erases a top-level member", R"({"skins":{"s":{"joints":[]}}})", "/skins/s", nullptr, R"({"skins":{}})", nullptr},
        {"cleanup climbs through arrays and objects", R"({"objects":{"a7":{"components":[{"type":"mesh"}]}}})", "/objects/a7/components/0/type", nullptr, R"({"objects":{}})", nullptr},
        {"cleanup stops at a container that keeps something", R"({"objects":{"a7":{"name":"A","components":[{"type":"mesh"}]}}})", "/objects/a7/components/0", nullptr, R"({"objects":{"a7":{"name":"A"}}})", nullptr},
        {"removal of a missing path cleans up from its parent", R"({"t":{"a":{"b":{}},"c":1}})", "/t/a/b/missing", nullptr, R"({"t":{"c":1}})", R"({"t":{"c":1}})"},
        {"removal through - without an old value erases nothing", R"({"list":[1,2]})", "/list/-", nullptr, R"({"list":[1,2]})", nullptr},
        {"array element removal, undo inserts it back", R"({"list":[10,20,30]})", "/list/1", nullptr, R"({"list":[10,30]})", nullptr},
        {"creation past the end pads with nulls, which stay", R"({"list":[10,20,30]})", "/list/5", "5", R"({"list":[10,20,30,null,null,5]})", R"({"list":[10,20,30,null,null]})"},
        {"creation through - appends, undo takes the last element", R"({"list":[10,20,30]})", "/list/-", "5", R"({"list":[10,20,30,5]})", nullptr},
        {"- on an object names a member", R"({"o":{"x":1}})", "/o/-", "5", R"({"o":{"x":1,"-":5}})", nullptr},
        {"negative index inserts at the front, undo takes the first", R"({"list":[10,20]})", "/list/-3", "5", R"({"list":[5,10,20]})", nullptr},
        {"numeric key on an object is a member", R"({"objects":{"a":{}}})", "/objects/12", "{}", R"({"objects":{"a":{},"12":{}}})", nullptr},
        {"index key under a missing parent makes an array", R"({"o":{"x":1}})", "/o/list/0", "5", R"({"o":{"x":1,"list":[5]}})", nullptr},
        {"name under a missing parent makes objects", R"({"o":{"x":1}})", "/o/a/b", "5", R"({"o":{"x":1,"a":{"b":5}}})", nullptr},
        {"replacement", R"({"o":{"x":[1,2]}})", "/o/x", R"({"y":true})", R"({"o":{"x":{"y":true}}})", nullptr},
    };
    for(const auto& row: rows) {
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

TEST_F(ChangeManagerDeathTest, FatalErrors) {
    ASSERT_TRUE(project.loadFromString(R"({"s":"text"})"));
    ChangeManager none;
    const rapidjson::Value value{1};
    const std::pair<std::function<void()>, const char*> rows[]{
        {[&]{ none.pushChange("/a", value, false); }, "ChangeManager::pushChange(): no project file\n"},
        {[&]{ none.pushRemoval("/a"); }, "ChangeManager::pushRemoval(): no project file\n"},
        {[&]{ none.pushAppend("/a", "x"); }, "ChangeManager::pushAppend(): no project file\n"},
        {[&]{ none.applyChange(Change{}); }, "ChangeManager::applyChange(): no project file\n"},
        {[&]{ none.undoLast(); }, "ChangeManager::undoLast(): no project file\n"},
        {[&]{ none.redoLastUndo(); }, "ChangeManager::redoLastUndo(): no project file\n"},
        {[&]{ none.allocator(); }, "ChangeManager::allocator(): no project file\n"},
        {[&]{ changes.change(0); }, "ChangeManager::change(): index 0 out of range for 0 records\n"},
        {[&]{ changes.pushChange("a/b", value, false); }, "ChangeManager::pushChange(): invalid JSON pointer a/b\n"},
        {[&]{ Change change; change.path = pathArray("a"); changes.applyChange(change); }, "ChangeManager::applyChange(): invalid JSON pointer a\n"},
        {[&]{ changes.beginGroup(); changes.undoLast(); }, "ChangeManager::undoLast(): Can't undo/redo changes in group. Forgot commit()?\n"},
        {[&]{ changes.beginGroup(); changes.redoLastUndo(); }, "ChangeManager::redoLastUndo(): Can't undo/redo changes in group. Forgot commit()?\n"},
        {[&]{ project.document = nullptr; changes.pushChange("/a", value, false); }, "Containers::Pointer: the pointer is null\n"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.second);
        EXPECT_DEATH(row.first(), Eq(row.second));
    }
    EXPECT_DEATH(changes.lastChange(), MatchesRegex("Assertion _lastChange >= 0 && _lastChange < int\\(_changes\\.size\\(\\)\\) failed at .*ChangeManager\\.cpp:[0-9]+\n"));
    /* An index key under a string */
    EXPECT_DEATH(changes.pushChange("/s/0", value, false), MatchesRegex("Assertion value\\.IsArray\\(\\) failed at .*ChangeManager\\.cpp:[0-9]+\n"));
}
