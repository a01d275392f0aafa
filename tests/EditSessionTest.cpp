/* The edit session: what it refuses, one undo step per action, the saved
   state, and what comes back with a result */
#include <functional>
#include <gmock/gmock.h>
#include <Corrade/Utility/FormatStl.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/EditSession.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;
using testing::Eq;

namespace {

/* a ─ b ─ c, z with a zero scale and c's name, d flagged deleted; b is the
   joint of s */
const char* const Scene = R"({"objects":{"a":{"name":"A"},)"
    R"("b":{"name":"B","parent":"a","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1],"skin":"s"},"c":{"name":"C","parent":"b"},)"
    R"("z":{"name":"C","transformation":[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,1]},"d":{"name":"D","deleted":true}},)"
    R"("skins":{"s":{"joints":["b"]}},"materials":{"m":{"color":1}}})";

Containers::StringView view(const std::string& text) {
    return {text.data(), text.size()};
}

struct EditSessionTest: testing::Test {
    void open(const char* json = Scene) {
        ASSERT_TRUE(session.openText(json));
        generated = 0;
        session.editor().data.project.setIdGenerator([this]{ return Utility::format("n{}", ++generated); });
    }

    EditResult select(std::initializer_list<Containers::StringView> keys) {
        return session.select({keys.begin(), keys.size()});
    }

    std::string json() { return session.editor().data.project.toJson().data(); }

    /* Everything a refused action must leave as it was */
    std::string state() {
        return json() + Utility::format(" | undo {} redo {} records {} | selected {} | {} {}", session.undoCount(), session.redoCount(),
            session.recordCount(), join(session.selection()), session.path(), session.isSaved() ? "saved" : "unsaved").data();
    }


    TemporaryFolder folder;
    EditSession session;
    int generated = 0;
};

using EditSessionDeathTest = EditSessionTest;

}

TEST_F(EditSessionTest, RefusedActionsChangeNothing) {
    const std::string deep = std::string(300, '[') + std::string(300, ']');
    const struct { const char* name; std::function<EditResult(EditSession&)> action; std::string message; } rows[]{
        {"empty name", [](EditSession& s) { return s.addObject("", ""); }, "an object's name can't be empty"},
        {"unknown parent", [](EditSession& s) { return s.addObject("N", "nobody"); }, "there is no object nobody"},
        {"deleted parent", [](EditSession& s) { return s.addObject("N", "d"); }, "object d is not in the scene: it or an ancestor is deleted"},
        {"select an unknown object", [](EditSession& s) { const Containers::StringView keys[]{"a", "nobody"}; return s.select(keys); }, "there is no object nobody"},
        {"select a name of two objects", [](EditSession& s) { const Containers::StringView keys[]{"C"}; return s.select(keys); },
            "the name C is shared by 2 objects: c at /A/B/C, z at /C; use a key to name one"},
        {"rename to nothing", [](EditSession& s) { return s.renameObject("A", ""); }, "an object's name can't be empty"},
        {"a bare word for a value", [](EditSession& s) { return s.set("/objects/a/name", "Knight"); },
            "invalid JSON at line 1, column 1: Invalid value. (a string needs double quotes: \"Knight\")"},
        {"move under a selected object", [](EditSession& s) { return s.reparentSelection("c", ReparentMode::KeepLocal); }, "can't move the selected objects under c, which is selected or lies below a selected object"},
        {"keep world placement under a zero scale", [](EditSession& s) { return s.reparentSelection("z", ReparentMode::KeepWorld); }, "can't keep world placements under z: its world transformation has a zero scale"},
        {"paste NUL", [](EditSession& s) { return s.paste({"{}\0", 3}, PastePlacement::Beside); }, "the clipboard text holds a NUL byte"},
        {"paste array", [](EditSession& s) { return s.paste("[1]", PastePlacement::Beside, "x.clip"); }, "x.clip is not a JSON object"},
        {"paste a record that is no object", [](EditSession& s) { return s.paste(R"({"objects":{"x":5}})", PastePlacement::Under); }, "the clipboard text can't be pasted: record x of objects has to be a JSON object"},
        {"paste a short transformation", [](EditSession& s) { return s.paste(R"({"objects":{"x":{"transformation":[1]}}})", PastePlacement::Beside); },
            "the clipboard text can't be pasted: the \"transformation\" of x has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"parent below the object", [](EditSession& s) { return s.set("/objects/a/parent", "\"c\""); }, "can't make c the parent of a: c lies below a"},
        {"own parent", [](EditSession& s) { return s.set("/objects/a/parent", "\"a\""); }, "can't make a its own parent"},
        {"record whose parent is below it", [](EditSession& s) { return s.set("/objects/a", R"({"parent":"b"})"); }, "can't make b the parent of a: b lies below a"},
        {"map with a cycle", [](EditSession& s) { return s.set("/objects", R"({"p":{"parent":"q"},"q":{"parent":"p"}})"); }, "the parents of p lead back to p"},
        {"transformation element no number", [](EditSession& s) { return s.set("/objects/b/transformation/3", "\"x\""); }, "the \"transformation\" of b has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"transformation of 17", [](EditSession& s) { return s.set("/objects/b/transformation/-", "1"); }, "the \"transformation\" of b has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"transformation of 15", [](EditSession& s) { return s.remove("/objects/b/transformation/0"); }, "the \"transformation\" of b has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"transformation past single precision", [](EditSession& s) { return s.set("/objects/b/transformation/0", "1e39"); }, "the \"transformation\" of b has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"record with a bad transformation", [](EditSession& s) { return s.set("/objects/x", R"({"transformation":5})"); }, "the \"transformation\" of x has to be an array of 16 numbers, each at most 3.4e38 in size"},
        {"record no object", [](EditSession& s) { return s.set("/skins/x", "[]"); }, "a record of skins has to be a JSON object"},
        {"map no object", [](EditSession& s) { return s.set("/objects", "[]"); }, "objects has to be a JSON object"},
        {"record in a new map no object", [](EditSession& s) { return s.set("/skins", R"({"k":1})"); }, "record k of skins has to be a JSON object"},
        {"key with a slash", [](EditSession& s) { return s.set("/materials/a~1b", "{}"); }, "a key can't hold / ~ \" \\ or a control character"},
        {"top-level name with a tilde", [](EditSession& s) { return s.set("/a~0b", "1"); }, "a top-level name can't hold / ~ \" \\ or a control character"},
        {"map with a control character in a key", [](EditSession& s) { return s.set("/materials", R"({"a\u0001":1})"); }, "the key a\x01 in materials holds one of / ~ \" \\ or a control character"},
        {"map with a key twice", [](EditSession& s) { return s.set("/materials", R"({"k":1,"k":2})"); }, "the key k is in materials twice"},
        {"the whole document", [](EditSession& s) { return s.set("", "{}"); }, "set can't replace the whole document; set its members instead"},
        {"invalid pointer", [](EditSession& s) { return s.set("/a~2", "1"); }, "invalid JSON Pointer /a~2 at byte 3: it has to be empty or start with /, and ~ has to be followed by 0 or 1"},
        {"index past the end", [](EditSession& s) { return s.set("/objects/b/transformation/17", "1"); }, "index 17 is past the end of the array at /objects/b/transformation, which has 16 elements"},
        {"name token in an array", [](EditSession& s) { return s.set("/objects/b/transformation/x", "1"); }, "/objects/b/transformation is an array: the last token has to be an index or -"},
        {"member of a string", [](EditSession& s) { return s.set("/objects/b/name/x", "1"); }, "/objects/b/name is a string, which has no members"},
        {"member of nothing", [](EditSession& s) { return s.set("/objects/nobody/name", "1"); }, "there is no value at /objects/nobody to set a member of"},
        {"nested too deep", [&deep](EditSession& s) { return s.set("/materials/m/x", view(deep)); }, "invalid JSON at line 1, column 254: nested deeper than 253 levels"},
        {"remove nothing", [](EditSession& s) { return s.remove("/objects/nobody"); }, "there is no value at /objects/nobody"},
        {"remove the whole document", [](EditSession& s) { return s.remove(""); }, "remove can't remove the whole document"},
        {"duplicate a missing record", [](EditSession& s) { return s.duplicateResource("materials", "nothing"); }, "materials has no record nothing"},
        {"delete from a missing map", [](EditSession& s) { return s.deleteResource("textures", "t"); }, "the project has no textures"},
        {"undo too many", [](EditSession& s) { return s.undo(2); }, "there is only 1 step to undo"},
        {"save to a missing folder", [](EditSession& s) { return s.saveAs("/nonexistent/x.json"); }, "can't save /nonexistent/x.json: No such file or directory"},
        {"open a device", [](EditSession& s) { return s.open("/dev/zero"); }, "can't load /dev/zero: it is a device, not a regular file"},
        {"open in a missing folder", [](EditSession& s) { return s.open("/nonexistent/x.json"); }, "can't load /nonexistent/x.json: No such file or directory"},
        {"open text that is no project", [](EditSession& s) { return s.openText("[]"); }, "can't load the project: the root is not a JSON object"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        open();
        /* A step to undo and one to redo, both of which stay */
        ASSERT_TRUE(session.set("/materials/m/k", "1"));
        ASSERT_TRUE(session.set("/materials/m/l", "2"));
        ASSERT_TRUE(session.undo());
        ASSERT_TRUE(select({"c"}));
        const std::string before = state();
        const EditResult result = row.action(session);
        EXPECT_FALSE(result);
        EXPECT_EQ(result.message(), row.message);
        EXPECT_EQ(state(), before);
    }
}

TEST_F(EditSessionTest, ObjectLimit) {
    std::string json = R"({"objects":{"k0":{"name":"0"})";
    for(std::size_t i = 1; i != ProjectFile::MaxObjects - 1; ++i) json += Utility::format(R"(,"k{}":{{}})", i).data();
    open((json + "}}").data());
    ASSERT_TRUE(session.addObject("Last", ""));
    ASSERT_TRUE(select({"k0"}));
    const std::string full = Utility::format("the project has {} objects and can have at most {}", ProjectFile::MaxObjects, ProjectFile::MaxObjects).data();
    for(const EditResult& result: {session.addObject("More", ""), session.duplicate(SelectionExtent::Objects), session.paste(R"({"objects":{"x":{}}})", PastePlacement::Beside),
                                   session.set("/objects/x", "{}"), session.duplicateResource("objects", "k0")})
        EXPECT_EQ(result.message(), full);
    EXPECT_EQ(session.undoCount(), 1u);
}

TEST_F(EditSessionTest, EachActionIsOneLabelledUndoStep) {
    const struct { const char* name; std::function<EditResult(EditSession&)> action; const char* label; } rows[]{
        {"add under a parent", [](EditSession& s) { return s.addObject("N", "B"); }, "add N b"},
        {"delete an object", [](EditSession& s) { return s.deleteObject("b"); }, "delete b"},
        {"delete the selection", [](EditSession& s) { return s.deleteSelection(); }, "delete"},
        {"reparent keeping local placements", [](EditSession& s) { return s.reparentSelection("", ReparentMode::KeepLocal); }, "reparent root"},
        {"reparent keeping world placements", [](EditSession& s) { return s.reparentSelection("", ReparentMode::KeepWorld); }, "reparent root --keep-transform"},
        {"paste under", [](EditSession& s) { return s.paste(view(s.copy(SelectionExtent::Trees).text()), PastePlacement::Under); }, "paste --child"},
        {"duplicate trees", [](EditSession& s) { return s.duplicate(SelectionExtent::Trees); }, "duplicate --trees"},
        {"duplicate a resource", [](EditSession& s) { return s.duplicateResource("skins", "s"); }, "duplicate-resource skins s"},
        {"delete a resource", [](EditSession& s) { return s.deleteResource("objects", "a", DanglingReferences::Leave); }, "delete-resource objects a"},
        {"remove", [](EditSession& s) { return s.remove("/objects/b/transformation"); }, "remove /objects/b/transformation"},
        {"rename to a taken name", [](EditSession& s) { return s.renameObject("b", "A"); }, "rename b A.000"},
        {"set a long value", [](EditSession& s) { return s.set("/objects/b/name", R"("Big crate, far too long to be shown whole in a label")"); },
            R"(set /objects/b/name "Big crate, far too long to be shown who...)"},
        /* Ungrouped pushes, a command that opens its own group, and a nested action */
        {"a host's step", [](EditSession& s) { return s.step("mixed", [&s] {
            s.editor().changeManager->pushChange("/materials/m/a", "x", false);
            deleteSelectedObjects(s.editor());
            s.editor().changeManager->pushChange("/materials/m/b", "y", false);
            return s.addObject("N", "");
        }); }, "mixed"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        open();
        ASSERT_TRUE(select({"b", "c"}));
        /* A step right before, which the action must not join */
        ASSERT_TRUE(session.set("/materials/m/k", "1"));
        const std::string before = json();
        ASSERT_TRUE(row.action(session));
        EXPECT_EQ(session.undoCount(), 2u);
        EXPECT_EQ(session.history().steps()[1].label, row.label);
        const std::string after = json();
        EXPECT_NE(after, before);
        ASSERT_TRUE(session.undo());
        EXPECT_EQ(json(), before);
        ASSERT_TRUE(session.redo());
        EXPECT_EQ(json(), after);
    }
}

/* Names follow every change: one record, a paste's group, undo and redo, a
   whole map */
TEST_F(EditSessionTest, ObjectsByKeyNameAndPattern) {
    open();
    /* An object called like another's key, which wins */
    ASSERT_TRUE(session.addObject("a", ""));
    ASSERT_EQ(session.renameObject("b", "A").text(), "A.000");
    ASSERT_TRUE(select({"a"}));
    ASSERT_TRUE(session.duplicate(SelectionExtent::Objects));
    /* A row looks its reference up after its action, if it has one */
    const struct { std::function<EditResult()> before; const char* reference; const char* found; } rows[]{
        {{}, "a", "a"},
        {{}, "A.000", "b"},
        {{}, "B", "there is no object B"},
        {{}, "A", "the name A is shared by 2 objects: a at /A, n2 at /A; use a key to name one"},
        {{}, "D", "there is no object D"},
        {{}, "d", "object d is not in the scene: it or an ancestor is deleted"},
        {{}, "[AC]", "a c z n2"},
        {{}, "?.*", "b"},
        {{}, "Q*", "no object's name matches Q*"},
        {[this] { return session.undo(2); }, "A", "a"},
        {{}, "B", "b"},
        {[this] { return session.redo(); }, "A.000", "b"},
        {[this] { return session.set("/objects", R"({"x":{"name":"B"}})"); }, "B", "x"},
        {{}, "A.000", "there is no object A.000"},
    };
    EXPECT_EQ(join(session.findByName("Q*").keys()), "");
    for(const auto& row: rows) {
        SCOPED_TRACE(row.reference);
        ASSERT_TRUE(!row.before || row.before());
        const EditResult result = session.findObjects(row.reference);
        EXPECT_EQ(result ? join(result.keys()) : result.message(), row.found);
    }
}

TEST_F(EditSessionTest, FailedStepTakesBackWhatItPushed) {
    open();
    ASSERT_TRUE(session.set("/materials/m/k", "1"));
    ASSERT_TRUE(session.undo());
    const std::string before = json();
    EXPECT_EQ(session.step("half", [this] {
        deleteSelectedObjects(session.editor());
        EXPECT_TRUE(session.addObject("N", "a"));
        return EditResult::failure("no");
    }).message(), "no");
    EXPECT_EQ(json(), before);
    /* Pushing dropped the step that could be redone, and the failed one can't take its place */
    EXPECT_EQ(session.undoCount() + session.redoCount() + session.recordCount(), 0u);
    EXPECT_EQ(session.redo().message(), "there is nothing to redo");
    /* An action that changes nothing leaves no step */
    EXPECT_TRUE(session.step("nothing", [] { return EditResult{}; }));
    EXPECT_EQ(session.undoCount(), 0u);
}

TEST_F(EditSessionTest, SavedStateFollowsTheHistory) {
    const std::string file = folder/"saved.json";
    /* Not there yet: an empty project, saved until changed */
    ASSERT_TRUE(session.open(file.data()));
    const auto add = [this] { return session.addObject("N", ""); };
    const struct { const char* name; std::function<EditResult()> action; bool saved; std::size_t savedPosition; } steps[]{
        {"add", add, false, 0},
        {"undo to the opened state", [this] { return session.undo(); }, true, 0},
        {"add again", add, false, 0},
        {"save", [this] { return session.save(); }, true, 1},
        {"undo", [this] { return session.undo(); }, false, 1},
        {"redo", [this] { return session.redo(); }, true, 1},
        {"undo and add: the saved step is gone", [&] { EXPECT_TRUE(session.undo()); return add(); }, false, EditHistory::NotInHistory},
        {"undo to where the two parted", [this] { return session.undo(); }, false, EditHistory::NotInHistory},
        {"save again", [this] { return session.save(); }, true, 0},
    };
    for(const auto& step: steps) {
        SCOPED_TRACE(step.name);
        ASSERT_TRUE(step.action());
        EXPECT_EQ(session.isSaved(), step.saved);
        EXPECT_EQ(session.history().savedPosition(), step.savedPosition);
    }
    EditSession reopened;
    ASSERT_TRUE(reopened.open(file.data()));
    EXPECT_EQ(reopened.editor().data.project.toJson().data(), json());
}

TEST_F(EditSessionTest, ResultsCarryWarningsAndKeys) {
    EXPECT_THAT(session.openText(R"({"objects":{"a":{"parent":"b"},"b":{"parent":"a"}}})").warnings(), testing::ElementsAre("Objects a, b are parents of each other, showing a under the root"));
    open();
    ASSERT_TRUE(select({"b"}));
    const EditResult copied = session.copy(SelectionExtent::Trees);
    EXPECT_THAT(copied.keys(), testing::ElementsAre("b", "c"));
    EXPECT_THAT(copied.skinKeys(), testing::ElementsAre("s"));
    ASSERT_TRUE(select({"c"}));
    EXPECT_THAT(session.paste(view(session.copy(SelectionExtent::Objects).text()), PastePlacement::Beside).keys(), testing::ElementsAre("n1"));
    EXPECT_THAT(session.deleteObject("a").keys(), testing::ElementsAre("a", "b", "c", "n1"));
    EXPECT_THAT(session.paste(R"({"objects":{"x":{}},"skins":{"t":{"joints":["y"]}}})", PastePlacement::Beside).warnings(),
        testing::ElementsAre("Broken joint reference y found while pasting, make sure to copy all joints."));
}

TEST_F(EditSessionDeathTest, MisusedHistoryIsFatal) {
    open();
    EXPECT_DEATH({
        session.editor().changeManager->pushChange("/materials/m/k", "1", false);
        static_cast<void>(session.undo());
    }, Eq("EditSession::undo(): the change history was changed outside the session\n"));
    EXPECT_DEATH(static_cast<void>(session.step("open", [this] {
        session.editor().changeManager->beginGroup();
        return EditResult{};
    })), Eq("EditSession::step(): the action left a change group open\n"));
    EXPECT_DEATH(static_cast<void>(session.step("compact", [this] {
        session.compact();
        return EditResult{};
    })), Eq("EditSession::compact(): can't run inside a step\n"));
}

/* Past the budget the oldest steps go whole, the newest always stays, and
   undo gives back exactly the states of the steps left */
TEST_F(EditSessionTest, HistoryBudgetDropsTheOldestSteps) {
    const std::string file = folder/"budget.json";
    const std::string big = "\"" + std::string(4000, 'x') + "\"";
    /* Saved after the second step, dropped with it; after the third, the
       newest dropped, which becomes the oldest state; after the fifth */
    for(const std::size_t savedAfter: {2, 3, 5}) {
        SCOPED_TRACE(savedAfter);
        open();
        session.setHistoryBudget(1024);
        std::vector<std::string> states{json()};
        for(std::size_t i = 0; i != 6; ++i) {
            ASSERT_TRUE(session.set(view("/materials/m/k" + std::to_string(i)), i < 3 ? view(big) : "1"));
            EXPECT_GE(session.undoCount(), 1u);
            states.push_back(json());
            ASSERT_TRUE(i + 1 != savedAfter || session.saveAs(view(file)));
        }
        ASSERT_EQ(session.undoCount(), 3u);
        EXPECT_EQ(session.history().steps()[0].label, "set /materials/m/k3 1");
        EXPECT_EQ(session.history().savedPosition(), savedAfter == 2 ? EditHistory::NotInHistory : savedAfter - 3);
        for(std::size_t i = 6; i != 2; --i) {
            EXPECT_EQ(json(), states[i]);
            EXPECT_EQ(session.isSaved(), i == savedAfter);
            EXPECT_EQ(session.undo().message(), i == 3 ? "there is nothing to undo" : "");
        }
        ASSERT_TRUE(session.redo(3));
        EXPECT_EQ(json(), states[6]);
    }
}

/* Compaction leaves the document, the history both ways, the indices and
   the scene as they were, in a smaller pool */
TEST_F(EditSessionTest, CompactionKeepsEverything) {
    open();
    std::vector<std::string> states{json()};
    const auto record = [&](const EditResult& result) {
        ASSERT_TRUE(result);
        states.push_back(json());
    };
    ASSERT_TRUE(select({"b"}));
    record(session.duplicate(SelectionExtent::Trees));
    record(session.renameObject("c", "Q"));
    record(session.deleteResource("materials", "m"));
    record(session.remove("/objects/a"));
    /* An undone step replaced: its values are waste */
    ASSERT_TRUE(session.set("/objects/z/name", view("\"" + std::string(20000, 'z') + "\"")));
    ASSERT_TRUE(session.undo());
    record(session.set("/skins/s/joints/-", "\"c\""));
    ASSERT_TRUE(session.undo());

    const std::string names = join(session.findByName("*").keys()), selected = join(session.selection());
    const std::size_t pool = session.poolSize();
    EXPECT_TRUE(session.compactIfWasteful(FreedMemory::Release));
    EXPECT_LT(session.poolSize() + 40000, pool);
    EXPECT_FALSE(session.compactIfWasteful());
    EXPECT_EQ(json(), states[4]);
    EXPECT_EQ(join(session.findByName("*").keys()), names);
    EXPECT_EQ(join(session.selection()), selected);
    EXPECT_EQ(join(session.findObjects("Q").keys()), "c");
    EXPECT_EQ(join(session.findObjects("n2").keys()), "n2");
    EXPECT_EQ(session.editor().data.project.resourceByName("objects", "Q"), session.value("/objects/c"));
    ASSERT_TRUE(session.redo());
    EXPECT_EQ(json(), states[5]);
    for(std::size_t i = 5; i != 0; --i) {
        ASSERT_TRUE(session.undo());
        EXPECT_EQ(json(), states[i - 1]);
    }
    EXPECT_EQ(session.findObjects("Q").message(), "there is no object Q");
}
