/* The object and resource edits against real documents through the host:
   what each pushes, and that undo and redo bring document and graph back. */

#include <sstream>
#include <string>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Eq;
using testing::IsEmpty;

namespace {

/* a ─ b ─ c, a ─ d, e ─ f, g; tree order is map order here */
const char* const Tree = R"({"objects":{
    "a":{"name":"A"},
    "b":{"name":"B","parent":"a"},
    "c":{"name":"C","parent":"b"},
    "d":{"name":"D","parent":"a"},
    "e":{"name":"E"},
    "f":{"name":"F","parent":"e"},
    "g":{"name":"G"}
}, "skins":{"s":{"joints":["b","c"],"name":"Skin"}}})";

struct ProjectToolsTest: testing::Test {
    void load(const char* json) {
        /* Cycles in some documents are reported while the graph is built */
        std::ostringstream warnings;
        Utility::Warning redirect{&warnings};
        ASSERT_TRUE(editor.loadFromString(json));
        editor.data.project.setIdGenerator([this]{ return Utility::format("n{}", ++generated); });
    }

    /* Every live object as "key" or "key<parent", in tree order */
    std::string tree() {
        const Data::DynamicSceneGraph<unsigned short>& graph = *editor.scene->sceneGraph;
        std::string out;
        for(std::size_t p = 1; p < graph.header().objectCount; ++p) {
            const char* const key = graph.objectKeys().get(graph.positionToIndex()[p]);
            const unsigned short parent = graph.hierarchy()[p].parent;
            out += (out.empty() ? "" : " ") + std::string{key};
            if(parent) out += "<" + std::string{graph.objectKeys().get(graph.positionToIndex()[parent])};
        }
        return out;
    }

    /* The applied records from @p first on as "path old -> new" */
    std::vector<std::string> records(const int first = 0) {
        std::vector<std::string> out;
        for(int i = first; i <= editor.changeManager->lastChangeIndex(); ++i) {
            const Change& change = editor.changeManager->change(i);
            out.push_back(std::string{change.path.data()} + " " +
                (change.oldValue ? writeJson(*change.oldValue) : "()") + " -> " +
                (change.newValue ? writeJson(*change.newValue) : "()"));
        }
        return out;
    }

    /* Which of @p keys can be selected and listed back */
    std::vector<std::string> selectable(std::initializer_list<const char*> keys) {
        selectObjects(editor, keys);
        StringArray selected = selectedObjectKeys(editor);
        std::vector<std::string> out;
        for(std::size_t i = 0; i != selected.size(); ++i) out.push_back(selected.get(i));
        return out;
    }

    std::string document() const { return editor.data.project.toJson().data(); }

    QuelmarEditor editor;
    int generated = 0;
};

using ProjectToolsDeathTest = ProjectToolsTest;

}

TEST_F(ProjectToolsTest, IsObjectDeletedWalksUpTheParents) {
    const struct {
        const char* name;
        const char* json;
        const char* key;
        bool expected;
    } rows[]{
        {"flagged itself", R"({"objects":{"a":{"deleted":true}}})", "a", true},
        {"explicitly not flagged", R"({"objects":{"a":{"deleted":false}}})", "a", false},
        {"flag that is not a boolean", R"({"objects":{"a":{"deleted":"yes"}}})", "a", false},
        {"grandparent flagged, parent not", R"({"objects":{"g":{"deleted":true},"p":{"parent":"g"},"c":{"parent":"p"}}})", "c", true},
        {"child of a flagged object is not an ancestor", R"({"objects":{"p":{},"c":{"parent":"p","deleted":true}}})", "p", false},
        {"live chain", R"({"objects":{"g":{},"p":{"parent":"g"},"c":{"parent":"p"}}})", "c", false},
        {"null parent", R"({"objects":{"c":{"parent":null}}})", "c", false},
        {"empty parent", R"({"objects":{"c":{"parent":""},"x":{"deleted":true}}})", "c", false},
        {"parent that is not a string", R"({"objects":{"p":{"deleted":true},"c":{"parent":1}}})", "c", false},
        {"dangling parent ends the walk", R"({"objects":{"p":{"parent":"gone"},"gone2":{"deleted":true}}})", "p", false},
        {"dangling parent above a flag", R"({"objects":{"p":{"parent":"gone","deleted":true},"c":{"parent":"p"}}})", "c", true},
        {"key that names no record", R"({"objects":{"a":{"deleted":true}}})", "zz", false},
        {"no objects at all", R"({})", "a", false},
        {"self-parent", R"({"objects":{"a":{"parent":"a"}}})", "a", false},
        {"flagged self-parent", R"({"objects":{"a":{"parent":"a","deleted":true}}})", "a", true},
        {"cycle without a flag", R"({"objects":{"a":{"parent":"c"},"b":{"parent":"a"},"c":{"parent":"b"}}})", "a", false},
        {"cycle with a flag further round", R"({"objects":{"a":{"parent":"c"},"b":{"parent":"a","deleted":true},"c":{"parent":"b"}}})", "a", true},
        {"chain into a cycle with the flag on the cycle's far side", R"({"objects":{"x":{"parent":"a"},"a":{"parent":"b"},"b":{"parent":"c"},"c":{"parent":"a","deleted":true}}})", "x", true},
        {"chain into a cycle without a flag", R"({"objects":{"x":{"parent":"a"},"a":{"parent":"b"},"b":{"parent":"a"},"y":{"deleted":true}}})", "x", false},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(row.json);
        const std::string before = document();
        EXPECT_EQ(isObjectDeleted(editor.data, row.key), row.expected);
        EXPECT_EQ(document(), before);
        EXPECT_EQ(editor.changeManager->changeCount(), 0u);
    }
}

TEST_F(ProjectToolsTest, IsObjectDeletedEndsOnLongChainsAndCycles) {
    /* o0 under o1 under ... under o1499, optionally closed into a ring */
    const auto chain = [](bool ring, const char* flagged) {
        std::string json = R"({"objects":{)";
        for(int i = 0; i != 1500; ++i) {
            const bool isFlagged = flagged && std::string{flagged} == Utility::format("o{}", i).data();
            json += Utility::format(R"({}"o{}":{{"deleted":{})", i ? "," : "", i, isFlagged ? "true" : "false").data();
            if(i != 1499 || ring) json += Utility::format(R"(,"parent":"o{}")", (i + 1) % 1500).data();
            json += "}";
        }
        return json + "}}";
    };
    load(chain(false, "o1499").data());
    EXPECT_TRUE(isObjectDeleted(editor.data, "o0"));
    load(chain(false, nullptr).data());
    EXPECT_FALSE(isObjectDeleted(editor.data, "o0"));
    load(chain(true, nullptr).data());
    EXPECT_FALSE(isObjectDeleted(editor.data, "o0"));
    load(chain(true, "o1499").data());
    EXPECT_TRUE(isObjectDeleted(editor.data, "o0"));
}

TEST_F(ProjectToolsTest, AddObjectPushesRecordNameThenParent) {
    load(Tree);
    const std::string before = document();
    const std::string treeBefore = tree();

    EXPECT_EQ(addObject(editor, "New", "b"), "n1");
    EXPECT_THAT(records(), ElementsAre(
        "/objects/n1 () -> {}",
        "/objects/n1/name () -> \"New\"",
        "/objects/n1/parent () -> \"b\""));
    for(int i = 0; i != 3; ++i) EXPECT_EQ(editor.changeManager->change(i).group, -1);
    const std::string after = document();
    EXPECT_EQ(tree(), "a b<a c<b n1<b d<a e f<e g");
    EXPECT_THAT(selectable({"n1"}), ElementsAre("n1"));

    /* No parent, no third change */
    EXPECT_EQ(addObject(editor, "Top", ""), "n2");
    EXPECT_THAT(records(3), ElementsAre(
        "/objects/n2 () -> {}",
        "/objects/n2/name () -> \"Top\""));
    EXPECT_EQ(tree(), "a b<a c<b n1<b d<a e f<e g n2");

    /* Every push is its own step when the caller opens no group */
    for(int i = 0; i != 5; ++i) editor.changeManager->undoLast();
    EXPECT_EQ(document(), before);
    EXPECT_EQ(tree(), treeBefore);
    EXPECT_THAT(selectable({"n1"}), IsEmpty());
    for(int i = 0; i != 3; ++i) editor.changeManager->redoLastUndo();
    EXPECT_EQ(document(), after);
    EXPECT_EQ(tree(), "a b<a c<b n1<b d<a e f<e g");
    EXPECT_THAT(selectable({"n1"}), ElementsAre("n1"));
}

TEST_F(ProjectToolsTest, AddObjectSuffixesTakenNames) {
    /* Names in the map, each a record {"name": ...} */
    const auto withNames = [](std::vector<std::string> names) {
        std::string json = R"({"objects":{)";
        for(std::size_t i = 0; i != names.size(); ++i)
            json += Utility::format(R"({}"k{}":{{"name":"{}"}})", i ? "," : "", i, names[i].data()).data();
        return json + "}}";
    };
    std::vector<std::string> elevenTaken{"Cube"}, thousandAndOneTaken{"Cube"};
    for(int i = 0; i != 1000; ++i) {
        if(i < 10) elevenTaken.push_back(Utility::format("Cube.{:.3d}", i).data());
        thousandAndOneTaken.push_back(Utility::format("Cube.{:.3d}", i).data());
    }

    const struct {
        const char* name;
        std::vector<std::string> taken;
        const char* expected;
    } rows[]{
        {"free name", {"Sphere"}, "Cube"},
        {"only a suffixed one taken", {"Cube.000"}, "Cube"},
        {"name taken", {"Cube"}, "Cube.000"},
        {"name and .000 taken", {"Cube", "Cube.000"}, "Cube.001"},
        {"gap in the suffixes", {"Cube", "Cube.001"}, "Cube.000"},
        {"suffix goes on the name, not the candidate", {"Cube", "Cube.000", "Cube.000.000"}, "Cube.001"},
        {"eleventh retry", elevenTaken, "Cube.010"},
        {"thousand-and-first retry", thousandAndOneTaken, "Cube.1000"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(withNames(row.taken).data());
        const Containers::String key = addObject(editor, "Cube", "");
        EXPECT_EQ(editor.data.project["objects"]->subValue(key.data())->subValue("name").asString(), std::string{row.expected});
        EXPECT_EQ(editor.changeManager->changeCount(), 2u);
    }

    /* Each call sees the names the previous ones pushed */
    load("{}");
    for(const char* expected: {"Cube", "Cube.000", "Cube.001"}) {
        const Containers::String key = addObject(editor, "Cube", "");
        EXPECT_EQ(editor.data.project["objects"]->subValue(key.data())->subValue("name").asString(), std::string{expected});
    }
}

TEST_F(ProjectToolsTest, DeleteObjectFlagsOnlyTheObject) {
    load(Tree);
    const std::string before = document();

    deleteObject(editor, "b");
    EXPECT_THAT(records(), ElementsAre("/objects/b/deleted () -> true"));
    EXPECT_EQ(editor.changeManager->change(0).group, -1);
    /* The descendants keep their records as they were and count as deleted */
    EXPECT_FALSE(editor.data.project["objects"]->subValue("c")->subValue("deleted").exists());
    EXPECT_TRUE(isObjectDeleted(editor.data, "c"));
    EXPECT_EQ(tree(), "a d<a e f<e g");
    EXPECT_THAT(selectable({"b", "c", "d"}), ElementsAre("d"));
    const std::string after = document();

    editor.changeManager->undoLast();
    EXPECT_EQ(document(), before);
    EXPECT_EQ(tree(), "a b<a c<b d<a e f<e g");
    EXPECT_THAT(selectable({"b", "c", "d"}), ElementsAre("b", "c", "d"));
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(document(), after);
    EXPECT_EQ(tree(), "a d<a e f<e g");

    /* No test is made: a flagged object is flagged again, a missing one still gets its change */
    deleteObject(editor, "b");
    deleteObject(editor, "zz");
    EXPECT_THAT(records(1), ElementsAre(
        "/objects/b/deleted true -> true",
        "/objects/zz/deleted () -> true"));
}

TEST_F(ProjectToolsTest, DuplicateResourceCopiesTheRecordVerbatim) {
    load(Tree);
    const std::string before = document();

    EXPECT_EQ(duplicateResource(editor, "skins", "s"), "n1");
    EXPECT_THAT(records(), ElementsAre(R"(/skins/n1 () -> {"joints":["b","c"],"name":"Skin"})"));
    EXPECT_EQ(editor.data.project["skins"]->subValue("n1").readValue(), editor.data.project["skins"]->subValue("s").readValue());

    /* An object copy keeps its name and its parent */
    EXPECT_EQ(duplicateResource(editor, "objects", "c"), "n2");
    EXPECT_THAT(records(1), ElementsAre(R"(/objects/n2 () -> {"name":"C","parent":"b"})"));
    EXPECT_EQ(tree(), "a b<a c<b n2<b d<a e f<e g");
    EXPECT_THAT(selectable({"n2"}), ElementsAre("n2"));
    const std::string after = document();

    /* What the host reads for a missing record is what gets pushed */
    EXPECT_EQ(duplicateResource(editor, "skins", "none"), "n3");
    EXPECT_THAT(records(2), ElementsAre("/skins/n3 () -> null"));

    editor.changeManager->undoLast();
    editor.changeManager->undoLast();
    editor.changeManager->undoLast();
    EXPECT_EQ(document(), before);
    EXPECT_EQ(tree(), "a b<a c<b d<a e f<e g");
    EXPECT_THAT(selectable({"n2"}), IsEmpty());
    editor.changeManager->redoLastUndo();
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(document(), after);
    EXPECT_EQ(tree(), "a b<a c<b n2<b d<a e f<e g");
}

TEST_F(ProjectToolsTest, DeleteResourceRemovesTheRecord) {
    load(Tree);
    const rapidjson::Document& document = *editor.data.project.document;
    rapidjson::Document before;
    before.CopyFrom(document, before.GetAllocator());

    deleteResource(editor, "skins", "s");
    EXPECT_THAT(records(), ElementsAre(R"(/skins/s {"joints":["b","c"],"name":"Skin"} -> ())"));
    EXPECT_FALSE(editor.data.project["skins"]->subValue("s").exists());

    /* An object's children are left with a dangling parent and show under the root */
    deleteResource(editor, "objects", "b");
    EXPECT_THAT(records(1), ElementsAre(R"(/objects/b {"name":"B","parent":"a"} -> ())"));
    EXPECT_EQ(tree(), "a d<a c e f<e g");
    EXPECT_THAT(selectable({"b", "c"}), ElementsAre("c"));
    rapidjson::Document after;
    after.CopyFrom(document, after.GetAllocator());

    /* An undone removal may bring the member back in another place, so the
       documents are compared as values, the graph by its members */
    editor.changeManager->undoLast();
    editor.changeManager->undoLast();
    EXPECT_TRUE(static_cast<const rapidjson::Value&>(document) == before);
    EXPECT_THAT(selectable({"a", "b", "c", "d", "e", "f", "g"}), testing::UnorderedElementsAre("a", "b", "c", "d", "e", "f", "g"));
    editor.changeManager->redoLastUndo();
    editor.changeManager->redoLastUndo();
    EXPECT_TRUE(static_cast<const rapidjson::Value&>(document) == after);
    EXPECT_EQ(tree(), "a d<a c e f<e g");

    /* A missing record is no error */
    deleteResource(editor, "meshes", "none");
    EXPECT_THAT(records(2), ElementsAre("/meshes/none () -> ()"));
}

TEST_F(ProjectToolsTest, DeleteSelectedObjectsFlagsSubtreesInOneGroup) {
    const struct {
        const char* name;
        std::initializer_list<const char*> selected;
        std::vector<std::string> flagged;
        const char* treeAfter;
    } rows[]{
        {"a subtree: descendants last first, the object last", {"a"}, {"d", "c", "b", "a"}, "e f<e g"},
        {"parent and child: the child once, before its parent", {"c", "b"}, {"c", "b"}, "a d<a e f<e g"},
        {"a selected object inside a handled subtree is skipped", {"b", "a", "c"}, {"d", "c", "b", "a"}, "e f<e g"},
        {"leaves in tree order", {"g", "c", "d"}, {"c", "d", "g"}, "a b<a e f<e"},
        {"three roots, whole trees", {"g", "e", "a"}, {"d", "c", "b", "a", "f", "e", "g"}, ""},
        {"nothing selected", {}, {}, "a b<a c<b d<a e f<e g"},
        {"only the root selected", {"unknown"}, {}, "a b<a c<b d<a e f<e g"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(Tree);
        /* A step already in the history, which the command must not join */
        deleteObject(editor, "zz");
        const std::string before = document();
        const std::string treeBefore = tree();
        selectObjects(editor, row.selected);

        deleteSelectedObjects(editor);
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        std::vector<std::string> expected;
        for(const std::string& key: row.flagged)
            expected.push_back("/objects/" + key + "/deleted () -> true");
        EXPECT_THAT(records(1), ElementsAreArray(expected));
        for(int i = 1; i <= editor.changeManager->lastChangeIndex(); ++i)
            EXPECT_EQ(editor.changeManager->change(i).group, editor.changeManager->change(1).group);
        if(!row.flagged.empty()) {
            EXPECT_NE(editor.changeManager->change(1).group, -1);
        }
        EXPECT_EQ(tree(), row.treeAfter);
        const std::string after = document();

        /* One undo takes the whole group back, the earlier step stays */
        if(row.flagged.empty()) continue;
        editor.changeManager->undoLast();
        EXPECT_EQ(document(), before);
        EXPECT_EQ(tree(), treeBefore);
        EXPECT_THAT(selectable(row.selected), testing::SizeIs(row.selected.size()));
        EXPECT_EQ(editor.changeManager->lastChangeIndex(), 0);
        editor.changeManager->redoLastUndo();
        EXPECT_EQ(document(), after);
        EXPECT_EQ(tree(), row.treeAfter);
        EXPECT_THAT(selectable(row.selected), IsEmpty());
    }
}

TEST_F(ProjectToolsTest, ReparentObjectPrintsAndSetsTheParent) {
    load(Tree);
    const std::string before = document();
    std::ostringstream out;
    {
        Utility::Debug redirect{&out};
        reparentObject(editor, "b", "e");
        reparentObject(editor, "f", nullptr);
    }
    EXPECT_EQ(out.str(), "Reparenting object b to e\nReparenting object f to root\n");
    EXPECT_THAT(records(), ElementsAre(
        "/objects/b/parent \"a\" -> \"e\"",
        "/objects/f/parent \"e\" -> null"));
    EXPECT_EQ(tree(), "a d<a e b<e c<b f g");
    const std::string after = document();

    editor.changeManager->undoLast();
    editor.changeManager->undoLast();
    EXPECT_EQ(document(), before);
    EXPECT_EQ(tree(), "a b<a c<b d<a e f<e g");
    editor.changeManager->redoLastUndo();
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(document(), after);
    EXPECT_EQ(tree(), "a d<a e b<e c<b f g");

    /* No test is made: a parent absent before, a missing object, a parent
       inside the object's own subtree */
    {
        Utility::Debug redirect{&out};
        std::ostringstream warnings;
        Utility::Warning redirectWarnings{&warnings};
        reparentObject(editor, "g", "zz");
        reparentObject(editor, "e", "c");
        /* Brings the host's cycle warning out while it is redirected */
        tree();
    }
    EXPECT_THAT(records(2), ElementsAre(
        "/objects/g/parent () -> \"zz\"",
        "/objects/e/parent () -> \"c\""));
    EXPECT_FALSE(isObjectDeleted(editor.data, "e"));
}

TEST_F(ProjectToolsDeathTest, NullPointersAndBrokenGraphsAreFatal) {
    load(Tree);
    selectObjects(editor, {"a"});
    /* Announces each key generation, so the messages show that the check
       comes after it */
    editor.data.project.setIdGenerator([]{
        Utility::Error{} << "generated";
        return Containers::String{"n1"};
    });
    const char* const Null = "Containers::Pointer: the pointer is null\n";
    const char* const NoHeader = "DynamicSceneGraph::header(): Header not initilized.\n";

    const std::string GeneratedThenNull = std::string{"generated\n"} + Null;
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        addObject(editor, "New", "");
    }, Eq(GeneratedThenNull));
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        duplicateResource(editor, "skins", "s");
    }, Eq(GeneratedThenNull));
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        deleteObject(editor, "a");
    }, Eq(Null));
    EXPECT_DEATH({
        editor.changeManager = nullptr;
        deleteResource(editor, "skins", "s");
    }, Eq(Null));
    EXPECT_DEATH({
        std::ostringstream out;
        Utility::Debug redirect{&out};
        editor.changeManager = nullptr;
        reparentObject(editor, "a", nullptr);
    }, Eq(Null));

    /* Scene, graph and change manager are reached before the header is read */
    EXPECT_DEATH({
        editor.scene = nullptr;
        deleteSelectedObjects(editor);
    }, Eq(Null));
    EXPECT_DEATH({
        editor.scene->sceneGraph = nullptr;
        deleteSelectedObjects(editor);
    }, Eq(Null));
    EXPECT_DEATH({
        editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
        editor.changeManager = nullptr;
        deleteSelectedObjects(editor);
    }, Eq(Null));
    EXPECT_DEATH({
        editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
        deleteSelectedObjects(editor);
    }, Eq(NoHeader));

    /* A graph whose selected object has an index beyond its keys: position 1
       holds index 5, the keys are those of the root and one object */
    EXPECT_DEATH({
        selectObjects(editor, {"e"});
        ASSERT_EQ(editor.objectLookup->keyToIndex()[Containers::String{"e"}], 5);
        Containers::Pointer<Data::DynamicSceneGraph<unsigned short>> graph{Containers::pointer<Data::DynamicSceneGraph<unsigned short>>()};
        Containers::Array<Data::DynamicSceneGraph<unsigned short>::Hierarchy> hierarchy{2};
        hierarchy[0].descendants = 1;
        Containers::Array<unsigned short> positionToIndex{2};
        positionToIndex[1] = 5;
        Containers::Array<unsigned short> indexToPosition{2};
        StringArray keys;
        keys.add("");
        keys.add("x");
        graph->setup(std::move(hierarchy), std::move(positionToIndex), std::move(indexToPosition), std::move(keys), Containers::Array<Magnum::Math::Matrix4<Magnum::Float>>{2});
        editor.scene->sceneGraph = std::move(graph);
        deleteSelectedObjects(editor);
    }, Eq("StringArrayView::get(): invalid index 5 for size 2\n"));
}
