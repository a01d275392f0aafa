#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <gmock/gmock.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;
using testing::Eq;
using testing::MatchesRegex;

namespace {

/* Runs space-separated steps: "[" opens a group, "]" commits, "<" undoes,
   ">" redoes, "/p" pushes the next of 0, 1, 2... to /p, "=/p" merging,
   "/p+" pushes {"a":} that number instead, "/p:json" that JSON value,
   "-/p" removes /p, "/p*text" appends the string text to /p, "s" marks the
   save, "d" drops the oldest record */
void run(ChangeManager& changes, const char* script) {
    std::istringstream in{script};
    int value = 0;
    for(std::string step; in >> step; ) {
        if(step == "[") changes.beginGroup();
        else if(step == "]") changes.commit();
        else if(step == "<") changes.undoLast();
        else if(step == ">") changes.redoLastUndo();
        else if(step == "s") changes.markSave();
        else if(step == "d") changes.dropOldest(1);
        else if(step[0] == '-') changes.pushRemoval(step.data() + 1), ++value;
        else if(const std::size_t star = step.find('*'); star != std::string::npos) changes.pushAppend(step.substr(0, star).data(), step.data() + star + 1), ++value;
        else {
            rapidjson::Document pushed;
            const std::size_t colon = step.find(':');
            if(colon != std::string::npos) {
                pushed.Parse(step.data() + colon + 1);
                step.resize(colon);
            } else pushed.SetInt(value);
            ++value;
            if(step.back() == '+') {
                step.pop_back();
                rapidjson::Value number{pushed.GetInt()};
                pushed.SetObject().AddMember("a", number, pushed.GetAllocator());
            }
            changes.pushChange(step.data() + (step[0] == '='), pushed, step[0] == '=');
        }
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

TEST(ChangeManagerApplyTest, ApplyMergeUndoRedo) {
    const struct { const char *name, *document, *script, *paths, *after; } rows[]{
        {"grouped: the found record takes the value and becomes the newest", R"({"f":0,"x":0,"y":0})", "/f [ /x /y =/x ]", "/f /y /x", R"({"f":0,"x":3,"y":2})"},
        {"grouped from index 0: the first record is never a target", R"({"x":0,"y":0})", "[ /x /y =/x ]", "/x /y /x", R"({"x":2,"y":1})"},
        {"ungrouped run", R"({"f":0,"x":0,"y":0})", "/f /x /y =/x", "/f /y /x", R"({"f":0,"x":3,"y":2})"},
        {"the newest record may be a creation", "{}", "/f /x =/x", "/f /x", R"({"f":0,"x":2})"},
        {"ungrouped merge keeps the redo tail", R"({"f":0,"x":0,"y":0})", "/f /x /y < =/x", "/f /x /y", R"({"f":0,"x":3,"y":0})"},
        {"not past the end of the run", R"({"f":0,"x":0,"y":0})", "/f [ /x ] /y =/x", "/f /x /y /x", R"({"f":0,"x":3,"y":2})"},
        /* Where moving records past each other or keeping old values would
           make undo inexact, the push records a new change */
        {"a record that isn't a replacement doesn't move", R"({"f":0,"x":0})", "/f /x /y =/x", "/f /x /y /x", R"({"f":0,"x":3,"y":2})"},
        {"nor does one past a record above or below it", R"({"f":0,"x":{"a":0}})", "/f /x/a /x+ =/x/a", "/f /x/a /x /x/a", R"({"f":0,"x":{"a":3}})"},
        {"nor one that the newest record would pass with a path below it", R"({"f":0,"x":0,"a":{"b":0}})", "/f /x /a/b /a =/x", "/f /x /a/b /a /x", R"({"f":0,"x":4,"a":3})"},
        {"no merge into a removal", R"({"f":0,"x":0})", "/f -/x =/x", "/f /x /x", R"({"f":0,"x":2})"},
        {"no merge through a path that names nothing", R"({"f":0,"l":[]})", "/f /l/- =/l/-", "/f /l/- /l/-", R"({"f":0,"l":[1,2]})"},
        {"no merge where the redo tail holds the path, so none to redo", R"({"f":0,"x":0})", "/f /x /x < =/x >", "/f /x /x", R"({"f":0,"x":3})"},
        /* From {"s":0,"a":{}}: merging /s past the creation and the removal
           made undoing everything leave "a":{"k":[null,2]} */
        {"a merge that would move past creations and removals", R"({"s":0,"a":{}})", "/pad /s /a/k -/a/k =/s", "/pad /s /a/k /a/k /s", R"({"s":4,"a":{},"pad":0})"},
        /* One change each, a removal for "-", that undo takes back exactly */
        {"deleteObject of an empty record: undo keeps the record", R"({"objects":{"a":{},"b":{"name":"B"}}})", "/objects/a/deleted:true", "/objects/a/deleted", R"({"objects":{"a":{"deleted":true},"b":{"name":"B"}}})"},
        {"a record that is null or any other non-object becomes an object", R"({"objects":{"a":null}})", "/objects/a/deleted:true", "/objects/a/deleted", R"({"objects":{"a":{"deleted":true}}})"},
        {"- appends, undo leaves the array", R"({"materials":{"m":{"tags":[]}}})", R"(/materials/m/tags/-:"x")", "/materials/m/tags/-", R"({"materials":{"m":{"tags":["x"]}}})"},
        {"numeric key on an object is a member", R"({"materials":{"m":{}}})", "/materials/m/5:true", "/materials/m/5", R"({"materials":{"m":{"5":true}}})"},
        {"however large", R"({"materials":{"m":{}}})", "/materials/m/4294967294:true", "/materials/m/4294967294", R"({"materials":{"m":{"4294967294":true}}})"},
        {"index past the end pads with nulls", R"({"list":[10,20,30]})", "/list/5:5", "/list/5", R"({"list":[10,20,30,null,null,5]})"},
        {"negative index inserts at the front", R"({"list":[10,20]})", "/list/-3:5", "/list/-3", R"({"list":[5,10,20]})"},
        {"index key under a missing parent makes an array", R"({"o":{"x":1}})", "/o/list/0:5", "/o/list/0", R"({"o":{"x":1,"list":[5]}})"},
        {"a name on an array makes it an object", R"({"l":[1,2]})", "/l/x:5", "/l/x", R"({"l":{"x":5}})"},
        {"a top-level map made by a creation goes on undo", R"({"skins":{}})", "/objects/k:{}", "/objects/k", R"({"skins":{},"objects":{"k":{}}})"},
        {"replacement", R"({"o":{"x":[1,2]}})", R"(/o/x:{"y":true})", "/o/x", R"({"o":{"x":{"y":true}}})"},
        {"removal from the middle comes back in place", R"({"objects":{"wall":{},"floor":{"name":"F"},"roof":{}}})", "-/objects/floor", "/objects/floor", R"({"objects":{"wall":{},"roof":{}}})"},
        {"removal erases emptied containers below the top level", R"({"objects":{"a7":{"components":[{"type":"mesh"}]},"b":{}}})", "-/objects/a7/components/0/type", "/objects/a7/components/0/type", R"({"objects":{"b":{}}})"},
        {"cleanup stops at a container that keeps something", R"({"objects":{"a7":{"components":[{"type":"mesh"}],"name":"A"}}})", "-/objects/a7/components/0", "/objects/a7/components/0", R"({"objects":{"a7":{"name":"A"}}})"},
        {"removal never erases a top-level member", R"({"skins":{"s":{"joints":[]}}})", "-/skins/s", "/skins/s", R"({"skins":{}})"},
        {"removal of a missing path cleans up from its parent", R"({"t":{"a":{"b":{}},"c":1}})", "-/t/a/b/missing", "/t/a/b/missing", R"({"t":{"c":1}})"},
        {"array element removal", R"({"list":[10,20,30]})", "-/list/1", "/list/1", R"({"list":[10,30]})"},
        {"removal through - erases nothing", R"({"list":[1,2]})", "-/list/-", "/list/-", R"({"list":[1,2]})"},
        {"appending: what is absent or not an array counts as an empty one", R"({"o":{"list":["a"],"text":"t"}})", "/o/list*b /o/text*c /o/missing*{}", "/o/list /o/text /o/missing", R"({"o":{"list":["a","b"],"text":["c"],"missing":["{}"]}})"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        ProjectFile project;
        ASSERT_TRUE(project.loadFromString(row.document));
        ChangeManager changes{project};
        run(changes, row.script);
        EXPECT_EQ(paths(changes), row.paths);
        EXPECT_EQ(writeJson(*project.document), row.after);
        /* Whatever merged, the history undoes and redoes exactly */
        while(changes.canRedo()) changes.redoLastUndo();
        const std::string last = writeJson(*project.document);
        while(changes.canUndo()) changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), row.document);
        while(changes.canRedo()) changes.redoLastUndo();
        EXPECT_EQ(writeJson(*project.document), last);
    }
}

TEST_F(ChangeManagerTest, CommitNotifiesNewestFirst) {
    /* Nothing to commit, undo or redo yet */
    recordNotifications();
    const auto heard = [&](const char* script) {
        notified.clear();
        run(changes, script);
        return notified;
    };
    EXPECT_EQ(heard("] < >"), "");
    EXPECT_EQ(heard("/before [ /c1 /c2 /c3"), "/before ");
    EXPECT_EQ(heard("]"), "/c3 /c2 /c1 ");
    /* A nested beginGroup() leaves the first group's records unannounced;
       undo and redo notify at once, a group per step */
    EXPECT_EQ(heard("[ /d1 [ /e1 /e2 ] < < > >"), "/e2 /e1 /e2 /e1 /d1 /d1 /e1 /e2 ");
    EXPECT_EQ(changes.lastChangeIndex(), 6);
    /* A commit with no group open announces the newest ungrouped run again */
    run(changes, "/a /b");
    EXPECT_EQ(heard("]"), "/b /a ");
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
    /* A component equal to the key twice calls the handler twice */
    run(changes, R"(/objects/a1/parent:"p" /skins/s1/joints:"j" /objects/a1/objects:"o" /skins/s1/k16:"k")");
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
    /* The state after running @p script */
    const auto after = [&](const char* script) {
        run(changes, script);
        return std::to_string(changes.changeCount()) + " records, mark " + std::to_string(changes.savedChangeIndex()) +
            (changes.hasUnsavedChanges() ? " unsaved" : " saved");
    };
    EXPECT_EQ(after("/n /n /n /n s"), "4 records, mark 3 saved");
    /* A push drops the redo tail */
    EXPECT_EQ(after("< < /n"), "3 records, mark 3 unsaved");
    /* A record landing on the saved index: the saved state is gone */
    EXPECT_EQ(after("/n"), "4 records, mark -1 unsaved");
    EXPECT_EQ(after("< < < <"), "4 records, mark -1 saved");
    /* A merge at the mark leaves it alone, although the document changed */
    EXPECT_EQ(after("> > > > s =/n"), "4 records, mark 3 saved");
    /* reset() forgets the history, keeps the mark and the open group */
    changes.beginGroup();
    changes.reset(project);
    EXPECT_EQ(after(""), "0 records, mark 3 unsaved");
    EXPECT_TRUE(changes.isGroupOpen());
    changes.commit();

    /* Dropping the oldest records moves the mark down with them, to the
       state before all for the newest dropped one, out of reach for older */
    EXPECT_EQ(after("/x /y /z < s d"), "2 records, mark 0 saved");
    EXPECT_EQ(paths(changes), "/y /z");
    EXPECT_EQ(after("d"), "1 records, mark -1 saved");
    EXPECT_EQ(after("> d"), "0 records, mark " + std::to_string(ChangeManager::SavedStateDropped) + " unsaved");
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

TEST_F(ChangeManagerTest, UndoAfterADirectEdit) {
    /* What a record's application left is gone: undo applies the inverse
       record instead, or puts back what the removal took at its old
       position, and takes nothing else away */
    ASSERT_TRUE(project.loadFromString(R"({"o":{"a":{},"b":{"x":1},"c":{"y":[1]}}})"));
    run(changes, R"(/o/a/name:"A" -/o/b/x /o/c/y/0:2)");
    rapidjson::Value& o = (*project.document)["o"];
    o.EraseMember("a");
    o.EraseMember("c");
    o.AddMember("z", 5, project.allocator());
    run(changes, "< < <");
    EXPECT_EQ(document(), R"({"o":{"z":5,"b":{"x":1},"c":{"y":[1]}}})");
}

TEST_F(ChangeManagerTest, HugePaddingIsRefused) {
    ASSERT_TRUE(project.loadFromString(R"({"m":[],"o":{}})"));
    std::ostringstream out;
    {
        Utility::Error redirect{&out};
        changes.pushChange("/m/4294967294", "x", false);
        changes.pushChange("/o/a/1000001", "x", false);
    }
    EXPECT_EQ(out.str(), "ChangeManager::pushChange(): refusing /m/4294967294 as it would pad an array with more than 1000000 nulls\n"
                         "ChangeManager::pushChange(): refusing /o/a/1000001 as it would pad an array with more than 1000000 nulls\n");
    EXPECT_EQ(changes.changeCount(), 0u);
    EXPECT_EQ(document(), R"({"m":[],"o":{}})");
    changes.pushChange("/o/a/1000000", "x", false);
    EXPECT_EQ(project.getValue("/o/a", false)->Size(), 1000001u);
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
        {[&]{ none.compactPool(); }, "ChangeManager::compactPool(): no project file\n"},
        {[&]{ changes.beginGroup(); changes.compactPool(); }, "ChangeManager::compactPool(): a group is open\n"},
        {[&]{ changes.beginGroup(); changes.dropOldest(0); }, "ChangeManager::dropOldest(): a group is open\n"},
        {[&]{ changes.pushChange("/a", value, false); changes.undoLast(); changes.dropOldest(1); }, "ChangeManager::dropOldest(): can't drop 1 records with only 0 applied\n"},
        {[&]{ changes.change(0); }, "ChangeManager::change(): index 0 out of range for 0 records\n"},
        {[&]{ changes.pushChange("a/b", value, false); }, "ChangeManager::pushChange(): invalid JSON pointer a/b\n"},
        {[&]{ Change change; change.path = pathArray("a"); changes.applyChange(change); }, "ChangeManager::applyChange(): invalid JSON pointer a\n"},
        {[&]{ changes.beginGroup(); changes.undoLast(); }, "ChangeManager::undoLast(): Can't undo/redo changes in group. Forgot commit()?\n"},
        {[&]{ changes.beginGroup(); changes.redoLastUndo(); }, "ChangeManager::redoLastUndo(): Can't undo/redo changes in group. Forgot commit()?\n"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.second);
        EXPECT_DEATH(row.first(), Eq(row.second));
    }
    EXPECT_DEATH(changes.lastChange(), MatchesRegex("Assertion _lastChange >= 0 && _lastChange < int\\(_changes\\.size\\(\\)\\) failed at .*ChangeManager\\.cpp:[0-9]+\n"));
    /* An index key under a string */
    EXPECT_DEATH(changes.pushChange("/s/0", value, false), MatchesRegex("Assertion value\\.IsArray\\(\\) failed at .*\\.cpp:[0-9]+\n"));
}
