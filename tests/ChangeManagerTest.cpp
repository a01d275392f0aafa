#include <sstream>
#include <string>
#include <vector>
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

struct Fixture: testing::Test {
    void load(const char* json) { ASSERT_TRUE(project.loadFromString(json)); }
    std::string document() const { return writeJson(*project.document); }

    /* Paths of the records in history order, for checking what merges did */
    std::vector<std::string> paths() const {
        std::vector<std::string> out;
        for(std::size_t i = 0; i != changes.changeCount(); ++i)
            out.push_back(changes.change(i).path.data());
        return out;
    }

    /* Records every notification as "path" */
    void recordNotifications() {
        changes.addChangeHandler("", [](const Change& change, Containers::ArrayView<const Containers::String>, void* userData) {
            static_cast<std::vector<std::string>*>(userData)->push_back(change.path.data());
        }, &notified);
    }

    ProjectFile project;
    ChangeManager changes{project};
    std::vector<std::string> notified;
};

using ChangeManagerTest = Fixture;
using ChangeManagerDeathTest = Fixture;

std::string print(const Change& change) {
    std::ostringstream out;
    {
        Utility::Debug debug{&out};
        debug << change;
    }
    return out.str();
}


}

TEST(ChangeTest, MoveTakesValuesAndAssignmentExchangesThem) {
    JsonAllocator allocator;
    Change a;
    EXPECT_TRUE(a.path.isEmpty());
    EXPECT_EQ(a.group, -1);
    a.path = Containers::Array<char>{ValueInit, 3};
    a.oldValue = Containers::pointer<rapidjson::Value>(1);
    a.group = 7;

    Change b{std::move(a)};
    EXPECT_TRUE(a.path.isEmpty());
    EXPECT_FALSE(a.oldValue);
    EXPECT_EQ(a.group, 7);
    EXPECT_EQ(b.path.size(), 3u);
    EXPECT_EQ(b.oldValue->GetInt(), 1);
    EXPECT_EQ(b.group, 7);

    Change c;
    c.newValue = Containers::pointer<rapidjson::Value>(2);
    c.group = 3;
    b = std::move(c);
    EXPECT_EQ(b.newValue->GetInt(), 2);
    EXPECT_FALSE(b.oldValue);
    EXPECT_EQ(b.group, 3);
    /* The source got the target's parts but kept its group */
    EXPECT_EQ(c.oldValue->GetInt(), 1);
    EXPECT_EQ(c.path.size(), 3u);
    EXPECT_EQ(c.group, 3);
}

TEST_F(ChangeManagerTest, DebugPrint) {
    load(R"({"objects":{"a":{"name":"A"}}})");
    changes.pushChange("/objects/a/name", "B", false);
    EXPECT_EQ(print(changes.lastChange()), "Change /objects/a/name: \"A\" -> \"B\"\n");
    changes.pushChange("/objects/b", rapidjson::Value{rapidjson::kObjectType}, false);
    EXPECT_EQ(print(changes.lastChange()), "Create /objects/b: () -> {}\n");
    changes.pushRemoval("/objects/a");
    EXPECT_EQ(print(changes.lastChange()), "Remove /objects/a: {\"name\":\"B\"} -> ()\n");
    changes.pushRemoval("/nothing");
    EXPECT_EQ(print(changes.lastChange()), "Create /nothing: () -> ()\n");
}

TEST_F(ChangeManagerTest, FreshManager) {
    EXPECT_FALSE(changes.hasUnsavedChanges());
    EXPECT_FALSE(changes.canUndo());
    EXPECT_FALSE(changes.canRedo());
    recordNotifications();
    changes.commit();
    changes.undoLast();
    changes.redoLastUndo();
    EXPECT_TRUE(notified.empty());
    EXPECT_EQ(changes.lastChangeIndex(), -1);
    EXPECT_EQ(document(), "{}");
}

TEST_F(ChangeManagerTest, PushRecordsAndDropsRedoTail) {
    load(R"({"objects":{"a":{"name":"A"}}})");
    changes.pushChange("/objects/a/name", "A", false);
    changes.pushChange("/objects/a/parent", "p", false);
    changes.pushChange("/objects/a/name", "C", false);

    /* An equal value is still a replacement, a missing path a creation */
    EXPECT_TRUE(changes.change(0).oldValue && changes.change(0).newValue);
    EXPECT_FALSE(changes.change(1).oldValue);
    EXPECT_EQ(changes.change(0).path.size(), sizeof("/objects/a/name"));

    changes.undoLast();
    changes.undoLast();
    EXPECT_EQ(document(), R"({"objects":{"a":{"name":"A"}}})");
    EXPECT_TRUE(changes.canRedo());
    changes.pushChange("/objects/a/name", "R", false);
    EXPECT_EQ(paths(), (std::vector<std::string>{"/objects/a/name", "/objects/a/name"}));
    EXPECT_FALSE(changes.canRedo());
    changes.redoLastUndo();
    EXPECT_EQ(document(), R"({"objects":{"a":{"name":"R"}}})");
}

TEST_F(ChangeManagerTest, HistoryGrowsPastFirstReservation) {
    for(int i = 0; i != 1000; ++i)
        changes.pushChange("/n", rapidjson::Value{i}, false);
    EXPECT_EQ(changes.changeCount(), 1000u);
    EXPECT_EQ(changes.change(999).newValue->GetInt(), 999);
    EXPECT_EQ(changes.change(0).path.data(), std::string{"/n"});
    for(int i = 0; i != 1000; ++i) changes.undoLast();
    EXPECT_EQ(document(), "{}");
}

TEST_F(ChangeManagerTest, Merge) {
    struct Row {
        const char* name;
        bool group;
        std::vector<const char*> pushes; /* "path" or "=path" for a merging push */
        int undosBeforeLast;
        std::vector<std::string> expectedPaths;
        const char* expectedDocument;
    } rows[]{
        {"grouped, merged record becomes newest", true,
         {"/first", "/x", "/y", "=/x"}, 0,
         {"/first", "/y", "/x"}, R"({"first":0,"x":3,"y":2})"},
        {"grouped, newest record itself", true,
         {"/first", "/x", "=/x"}, 0,
         {"/first", "/x"}, R"({"first":0,"x":2})"},
        {"group starting at index 0 is never a target", true,
         {"/x", "=/x"}, 0,
         {"/x", "/x"}, R"({"x":1})"},
        {"merge flag false gives two records", true,
         {"/first", "/x", "/x"}, 0,
         {"/first", "/x", "/x"}, R"({"first":0,"x":2})"},
        {"ungrouped run merges too", false,
         {"/first", "/x", "/y", "=/x"}, 0,
         {"/first", "/y", "/x"}, R"({"first":0,"x":3,"y":2})"},
        {"ungrouped merge keeps the redo tail", false,
         {"/first", "/x", "/y"}, 1,
         {"/first", "/x", "/y"}, R"({"first":0,"x":3})"},
        {"no match appends", true,
         {"/first", "/x", "=/z"}, 0,
         {"/first", "/x", "/z"}, R"({"first":0,"x":1,"z":2})"},
    };
    for(const Row& row: rows) {
        SCOPED_TRACE(row.name);
        ProjectFile project;
        ChangeManager changes{project};
        int value = 0;
        /* The first push of a row is outside the group, so that the group
           starts at index 1 unless the row says otherwise */
        for(std::size_t i = 0; i != row.pushes.size(); ++i) {
            if(row.group && i == (row.pushes[0] == std::string{"/first"} ? 1 : 0)) changes.beginGroup();
            const bool merge = row.pushes[i][0] == '=';
            changes.pushChange(row.pushes[i] + merge, rapidjson::Value{value++}, merge);
        }
        for(int i = 0; i != row.undosBeforeLast; ++i) changes.undoLast();
        if(row.undosBeforeLast) changes.pushChange("/x", rapidjson::Value{3}, true);
        if(row.group) changes.commit();

        std::vector<std::string> paths;
        for(std::size_t i = 0; i != changes.changeCount(); ++i)
            paths.push_back(changes.change(i).path.data());
        EXPECT_EQ(paths, row.expectedPaths);
        EXPECT_EQ(writeJson(*project.document), row.expectedDocument);

        /* Whatever merged, undoing everything gives the empty document */
        while(changes.canUndo()) changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), "{}");
    }
}

TEST_F(ChangeManagerTest, MergedRecordKeepsFirstOldValue) {
    load(R"({"x":"old","y":0})");
    changes.pushChange("/y", rapidjson::Value{1}, false);
    changes.beginGroup();
    changes.pushChange("/x", "a", false);
    changes.pushChange("/y", rapidjson::Value{2}, false);
    changes.pushChange("/x", "b", true);
    changes.commit();
    EXPECT_EQ(changes.lastChange().oldValue->GetString(), std::string{"old"});
    EXPECT_EQ(changes.lastChange().newValue->GetString(), std::string{"b"});
    EXPECT_EQ(changes.changeCount(), 3u);
    changes.undoLast();
    EXPECT_EQ(document(), R"({"x":"old","y":1})");
    changes.redoLastUndo();
    EXPECT_EQ(document(), R"({"x":"b","y":2})");
}

TEST_F(ChangeManagerTest, CommitNotifiesGroupNewestFirst) {
    recordNotifications();
    changes.pushChange("/before", "", false);
    EXPECT_EQ(notified, (std::vector<std::string>{"/before"}));

    notified.clear();
    changes.beginGroup();
    changes.pushChange("/c1", "", false);
    changes.pushChange("/c2", "", false);
    changes.pushChange("/c3", "", false);
    EXPECT_TRUE(changes.isGroupOpen());
    EXPECT_TRUE(notified.empty());
    changes.commit();
    EXPECT_FALSE(changes.isGroupOpen());
    EXPECT_EQ(notified, (std::vector<std::string>{"/c3", "/c2", "/c1"}));

    /* Nested beginGroup(): the first group's records are never announced */
    notified.clear();
    changes.beginGroup();
    changes.pushChange("/d1", "", false);
    changes.beginGroup();
    changes.pushChange("/e1", "", false);
    changes.pushChange("/e2", "", false);
    changes.commit();
    EXPECT_EQ(notified, (std::vector<std::string>{"/e2", "/e1"}));

    /* Undo and redo notify at once, one group per step */
    notified.clear();
    changes.undoLast();
    changes.undoLast();
    changes.redoLastUndo();
    EXPECT_EQ(notified, (std::vector<std::string>{"/e2", "/e1", "/d1", "/d1"}));
}

TEST_F(ChangeManagerTest, CommitWithoutGroupAnnouncesUngroupedRunAgain) {
    recordNotifications();
    changes.beginGroup();
    changes.pushChange("/g", "", false);
    changes.commit();
    changes.pushChange("/a", "", false);
    changes.pushChange("/b", "", false);
    changes.pushChange("/c", "", false);
    notified.clear();
    changes.commit();
    EXPECT_EQ(notified, (std::vector<std::string>{"/c", "/b", "/a"}));
}

TEST_F(ChangeManagerTest, SaveMark) {
    for(int i = 0; i != 4; ++i) changes.pushChange("/n", rapidjson::Value{i}, false);
    changes.markSave();
    EXPECT_EQ(changes.savedChangeIndex(), 3);
    EXPECT_FALSE(changes.hasUnsavedChanges());

    changes.undoLast();
    changes.undoLast();
    EXPECT_TRUE(changes.hasUnsavedChanges());
    changes.pushChange("/n", rapidjson::Value{10}, false);
    EXPECT_EQ(changes.lastChangeIndex(), 2);
    EXPECT_EQ(changes.savedChangeIndex(), 3);
    EXPECT_TRUE(changes.hasUnsavedChanges());

    /* The new record lands on the saved index: the saved state is gone */
    changes.pushChange("/n", rapidjson::Value{11}, false);
    EXPECT_EQ(changes.lastChangeIndex(), 3);
    EXPECT_EQ(changes.savedChangeIndex(), -1);
    EXPECT_TRUE(changes.hasUnsavedChanges());

    while(changes.canUndo()) changes.undoLast();
    EXPECT_FALSE(changes.hasUnsavedChanges());

    /* A merge at the mark leaves it alone, although the document changed */
    changes.redoLastUndo();
    changes.redoLastUndo();
    changes.markSave();
    changes.pushChange("/n", rapidjson::Value{12}, true);
    EXPECT_EQ(changes.savedChangeIndex(), 1);
    EXPECT_FALSE(changes.hasUnsavedChanges());

    /* reset keeps the mark */
    while(changes.canRedo()) changes.redoLastUndo();
    changes.markSave();
    changes.reset(project);
    EXPECT_EQ(changes.changeCount(), 0u);
    EXPECT_EQ(changes.lastChangeIndex(), -1);
    EXPECT_EQ(changes.savedChangeIndex(), 3);
    EXPECT_TRUE(changes.hasUnsavedChanges());
}

TEST_F(ChangeManagerTest, UndoRedoSteps) {
    load(R"({"objects":{}})");
    changes.pushChange("/objects/u", "1", false);
    changes.beginGroup();
    changes.pushChange("/objects/a", rapidjson::Value{rapidjson::kObjectType}, false);
    changes.pushChange("/objects/a/name", "A", false);
    changes.pushChange("/objects/a/parent", "u", false);
    changes.commit();
    changes.pushChange("/objects/v", "2", false);
    changes.pushChange("/objects/w", "3", false);

    const char* states[]{
        R"({"objects":{}})",
        R"({"objects":{"u":"1"}})",
        R"({"objects":{"u":"1","a":{"name":"A","parent":"u"}}})",
        R"({"objects":{"u":"1","a":{"name":"A","parent":"u"},"v":"2"}})",
        R"({"objects":{"u":"1","a":{"name":"A","parent":"u"},"v":"2","w":"3"}})",
    };
    const int positions[]{-1, 0, 3, 4, 5};
    for(int step = 4; step != 0; --step) {
        SCOPED_TRACE(step);
        EXPECT_EQ(document(), states[step]);
        EXPECT_EQ(changes.lastChangeIndex(), positions[step]);
        changes.undoLast();
    }
    EXPECT_EQ(document(), states[0]);
    EXPECT_FALSE(changes.canUndo());
    for(int step = 1; step != 5; ++step) {
        SCOPED_TRACE(step);
        changes.redoLastUndo();
        EXPECT_EQ(document(), states[step]);
        EXPECT_EQ(changes.lastChangeIndex(), positions[step]);
    }
    EXPECT_FALSE(changes.canRedo());
    changes.redoLastUndo();
    EXPECT_EQ(changes.lastChangeIndex(), 5);
}

TEST_F(ChangeManagerTest, PushAppend) {
    load(R"({"o":{"list":["a"],"text":"t","number":1}})");
    changes.pushAppend("/o/list", "b");
    changes.pushAppend("/o/text", "c");
    changes.pushAppend("/o/missing", "d");
    changes.pushAppend("/o/number", "{}");
    EXPECT_EQ(document(), R"({"o":{"list":["a","b"],"text":["c"],"number":["{}"],"missing":["d"]}})");
    EXPECT_FALSE(changes.lastChange().oldValue == nullptr);
    while(changes.canUndo()) changes.undoLast();
    EXPECT_EQ(document(), R"({"o":{"list":["a"],"text":"t","number":1}})");
}

TEST_F(ChangeManagerTest, PathArrayForms) {
    Containers::Array<char> path{ValueInit, 3};
    path[0] = '/';
    path[1] = 'a';
    changes.pushChange(std::move(path), "text", false);
    /* Not taken: the caller keeps its array */
    EXPECT_EQ(path.size(), 3u);
    EXPECT_EQ(document(), R"({"a":"text"})");

    Containers::Array<char> removal{ValueInit, 3};
    removal[0] = '/';
    removal[1] = 'a';
    changes.pushRemoval(std::move(removal));
    /* Exchanged with the empty new slot */
    EXPECT_TRUE(removal.isEmpty());
    EXPECT_EQ(document(), "{}");

    /* A reused redo-tail slot hands back the path it held */
    changes.undoLast();
    Containers::Array<char> other{ValueInit, 3};
    other[0] = '/';
    other[1] = 'b';
    rapidjson::Value value{5};
    changes.pushChange(std::move(other), &value, false);
    EXPECT_EQ(std::string{other.data()}, "/a");
    EXPECT_EQ(document(), R"({"a":"text","b":5})");
}

TEST_F(ChangeManagerTest, ReverseOfEmptyRecordIsEmptyRemoval) {
    load(R"({"a":{"b":{}}})");
    Change change;
    change.path = Containers::Array<char>{ValueInit, 3};
    change.path[0] = '/';
    change.path[1] = 'a';
    change.group = 4;
    const Change reversed = changes.reverse(change);
    EXPECT_FALSE(reversed.oldValue);
    EXPECT_FALSE(reversed.newValue);
    EXPECT_EQ(reversed.group, -1);
    EXPECT_EQ(reversed.path.size(), 3u);
    changes.applyChange(reversed);
    EXPECT_EQ(document(), "{}");
}

TEST_F(ChangeManagerTest, ResetForgetsHistoryAndHandlers) {
    recordNotifications();
    changes.beginGroup();
    changes.pushChange("/a", "", false);
    changes.reset(project);
    EXPECT_EQ(changes.changeCount(), 0u);
    EXPECT_EQ(changes.handlers().count(), 0u);
    /* The group stays open */
    EXPECT_TRUE(changes.isGroupOpen());
    changes.commit();
    changes.pushChange("/b", "", false);
    EXPECT_EQ(notified, std::vector<std::string>{});

    /* A default-constructed manager works once it has a project */
    ChangeManager other;
    other.reset(project);
    other.pushChange("/c", "", false);
    EXPECT_EQ(document(), R"({"a":"","b":"","c":""})");
}

TEST_F(ChangeManagerDeathTest, FatalErrors) {
    load(R"({"s":"text"})");
    ChangeManager noProject;
    const rapidjson::Value value{1};
    struct Row {
        const char* name;
        std::function<void()> call;
        const char* message;
    } rows[]{
        {"push", [&]{ noProject.pushChange("/a", value, false); }, "ChangeManager::pushChange(): no project file\n"},
        {"push string", [&]{ noProject.pushChange("/a", "x", false); }, "ChangeManager::pushChange(): no project file\n"},
        {"removal", [&]{ noProject.pushRemoval("/a"); }, "ChangeManager::pushRemoval(): no project file\n"},
        {"append", [&]{ noProject.pushAppend("/a", "x"); }, "ChangeManager::pushAppend(): no project file\n"},
        {"apply", [&]{ noProject.applyChange(Change{}); }, "ChangeManager::applyChange(): no project file\n"},
        {"undo", [&]{ noProject.undoLast(); }, "ChangeManager::undoLast(): no project file\n"},
        {"redo", [&]{ noProject.redoLastUndo(); }, "ChangeManager::redoLastUndo(): no project file\n"},
        {"invalid pointer", [&]{ changes.pushChange("a/b", value, false); }, "ChangeManager::pushChange(): invalid JSON pointer a/b\n"},
        {"invalid escape", [&]{ changes.pushRemoval("/a~2"); }, "ChangeManager::pushChange(): invalid JSON pointer /a~2\n"},
        {"undo in group", [&]{ changes.beginGroup(); changes.undoLast(); }, "ChangeManager::undoLast(): Can't undo/redo changes in group. Forgot commit()?\n"},
        {"redo in group", [&]{ changes.beginGroup(); changes.redoLastUndo(); }, "ChangeManager::redoLastUndo(): Can't undo/redo changes in group. Forgot commit()?\n"},
        {"no document", [&]{ project.document = nullptr; changes.pushChange("/a", value, false); }, "Containers::Pointer: the pointer is null\n"},
        {"no document on apply", [&]{ changes.pushChange("/a", value, false); changes.undoLast(); project.document = nullptr; changes.redoLastUndo(); }, "Containers::Pointer: the pointer is null\n"},
    };
    for(const Row& row: rows) {
        SCOPED_TRACE(row.name);
        EXPECT_DEATH(row.call(), Eq(row.message));
    }

    EXPECT_DEATH(changes.lastChange(), MatchesRegex("Assertion _lastChange >= 0 && _lastChange < int\\(_changes\\.size\\(\\)\\) failed at .*ChangeManager\\.cpp:[0-9]+\n"));
    /* An index key under a string */
    EXPECT_DEATH(changes.pushChange("/s/0", value, false), MatchesRegex("Assertion value\\.IsArray\\(\\) failed at .*ChangeManager\\.cpp:[0-9]+\n"));
}
