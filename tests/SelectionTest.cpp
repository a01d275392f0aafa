/* The selection queries against real documents through the host: selecting
   by key, listing keys in tree order, the attach point. */

#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Selection.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Eq;
using testing::IsEmpty;

namespace {

/* Map order differs from tree order: "f" gets the lowest index but comes
   last in the tree. Tree: a ─ b ─ c, a ─ d, e ─ f */
const char* const Tree = R"({"objects":{
    "f":{"parent":"e"},
    "a":{},
    "b":{"parent":"a"},
    "c":{"parent":"b"},
    "d":{"parent":"a"},
    "e":{}
}})";

std::vector<std::string> toVector(const StringArrayView& keys) {
    std::vector<std::string> out;
    for(std::size_t i = 0; i != keys.size(); ++i) out.push_back(keys.get(i));
    return out;
}

/* The attach point with nulls spelled out */
std::pair<std::string, std::string> attachPoint(QuelmarEditor& editor) {
    const std::pair<const char*, const char*> found = Implementation::selectedObjectAndParent(editor);
    return {found.first ? found.first : "(null)", found.second ? found.second : "(null)"};
}

struct SelectionTest: testing::Test {
    void SetUp() override { load(Tree); }

    void load(const char* json) { ASSERT_TRUE(editor.loadFromString(json)); }

    unsigned short index(const char* key) {
        return editor.objectLookup->keyToIndex()[Containers::String{key}];
    }

    QuelmarEditor editor;
};

using SelectionDeathTest = SelectionTest;

}

TEST_F(SelectionTest, SelectObjectsReplacesTheSelection) {
    const struct {
        const char* name;
        std::initializer_list<const char*> keys;
        std::vector<std::string> selected;
        bool rootSelected;
    } rows[]{
        {"listed objects only, not their descendants", {"d", "a"}, {"a", "d"}, false},
        {"duplicates", {"c", "c"}, {"c"}, false},
        {"empty list", {}, {}, false},
        {"unknown key selects the root", {"zz"}, {}, true},
        {"null key selects the root", {nullptr, "e"}, {"e"}, true},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        /* Bits that were set before, beyond the size too, are all cleared */
        for(std::uint32_t& word: editor.data.selectionWords()) word = 0xffffffffu;

        selectObjects(editor, row.keys);
        EXPECT_THAT(toVector(selectedObjectKeys(editor)), ElementsAreArray(row.selected));
        EXPECT_EQ(editor.data.isSelected(0), row.rootSelected);
        std::size_t bits = 0;
        for(const std::uint32_t word: editor.data.selectionWords())
            for(std::uint32_t w = word; w; w &= w - 1) ++bits;
        EXPECT_EQ(bits, row.selected.size() + row.rootSelected);
    }

    /* The view overload with an array made elsewhere */
    StringArray keys;
    keys.add("f", -1);
    keys.add("b", -1);
    selectObjects(editor, keys);
    EXPECT_THAT(toVector(selectedObjectKeys(editor)), ElementsAre("b", "f"));
}

TEST_F(SelectionTest, SelectObjectsEntersUnknownKeysIntoTheMap) {
    const std::size_t size = editor.objectLookup->keyToIndex().size();
    selectObjects(editor, {"zz"});
    EXPECT_EQ(editor.objectLookup->keyToIndex().size(), size + 1);
    EXPECT_EQ(editor.data.selectionWords()[0], 1u);

    /* An empty list reaches no map at all */
    editor.objectLookup = nullptr;
    selectObjects(editor, {});
    EXPECT_EQ(editor.data.selectionWords()[0], 0u);
}

TEST_F(SelectionTest, SelectedKeysInTreeOrder) {
    const struct {
        const char* name;
        std::initializer_list<const char*> selected;
        std::vector<std::string> keys;
        std::vector<std::string> withTrees;
    } rows[]{
        {"nothing", {}, {}, {}},
        {"only the root", {"zz"}, {}, {}},
        {"a leaf", {"c"}, {"c"}, {"c"}},
        {"a subtree", {"a"}, {"a"}, {"a", "b", "c", "d"}},
        {"tree order, not selection or index order", {"f", "d", "b"}, {"b", "d", "f"}, {"b", "c", "d", "f"}},
        {"a child of a selected object is listed where it stands", {"c", "a"}, {"a", "c"}, {"a", "b", "c", "d"}},
        {"parent and child", {"b", "c"}, {"b", "c"}, {"b", "c"}},
        {"everything", {"a", "b", "c", "d", "e", "f"}, {"a", "b", "c", "d", "e", "f"}, {"a", "b", "c", "d", "e", "f"}},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        selectObjects(editor, row.selected);
        EXPECT_THAT(toVector(selectedObjectKeys(editor)), ElementsAreArray(row.keys));
        EXPECT_THAT(toVector(selectedObjectKeysWithTrees(editor)), ElementsAreArray(row.withTrees));
    }
}

TEST_F(SelectionTest, SelectedKeysFollowTheDocument) {
    selectObjects(editor, {"b", "e"});
    /* The lists read the graph as the change left it */
    deleteObject(editor, "b");
    EXPECT_THAT(toVector(selectedObjectKeysWithTrees(editor)), ElementsAre("e", "f"));
    editor.changeManager->undoLast();
    selectObjects(editor, {"b", "e"});
    {
        std::ostringstream out;
        Utility::Debug redirect{&out};
        reparentObject(editor, "e", "c");
    }
    EXPECT_THAT(toVector(selectedObjectKeys(editor)), ElementsAre("b", "e"));
    EXPECT_THAT(toVector(selectedObjectKeysWithTrees(editor)), ElementsAre("b", "c", "e", "f"));
}

TEST_F(SelectionTest, AttachPointIsTheLowestSelectedIndex) {
    ASSERT_LT(index("f"), index("a"));
    const struct {
        const char* name;
        std::initializer_list<const char*> selected;
        std::pair<std::string, std::string> expected;
    } rows[]{
        {"object under the root", {"a"}, {"a", "(null)"}},
        {"object under another", {"c"}, {"c", "b"}},
        {"lowest index, not first in the tree", {"a", "f"}, {"f", "e"}},
        {"root and another", {"zz", "c"}, {"(null)", "(null)"}},
        {"nothing", {}, {"(null)", "(null)"}},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        selectObjects(editor, row.selected);
        EXPECT_EQ(attachPoint(editor), row.expected);
    }
}

TEST_F(SelectionTest, AttachPointScansWordsUpToTheSize) {
    /* Forty objects under the root, k39 down to k0 in tree order */
    std::string json = R"({"objects":{)";
    for(int i = 0; i != 40; ++i)
        json += Utility::format(R"({}"k{}":{{}})", i ? "," : "", 39 - i).data();
    load((json + "}}").data());
    ASSERT_EQ(editor.data.selectionSize(), 41u);
    ASSERT_EQ(editor.data.selectionWords().size(), 2u);

    /* The first word empty, the lowest bit in the second */
    selectObjects(editor, {"k0", "k3"});
    ASSERT_GE(index("k3"), 32);
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"k3"}, std::string{"(null)"}));

    /* Bits at or beyond the size are never selected, whatever else is */
    editor.data.selectionWords()[0] = 0;
    editor.data.selectionWords()[1] = 0xffffffffu << (41 % 32);
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"(null)"}, std::string{"(null)"}));
    EXPECT_THAT(toVector(selectedObjectKeys(editor)), IsEmpty());
    editor.data.selectionWords()[1] |= 1u << (index("k1") % 32);
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"k1"}, std::string{"(null)"}));
}

TEST_F(SelectionTest, AttachPointReachesTheSceneOnlyForAnObject) {
    selectObjects(editor, {"zz", "a"});
    editor.scene = nullptr;
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"(null)"}, std::string{"(null)"}));
    selectObjects(editor, {});
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"(null)"}, std::string{"(null)"}));

    /* A selection of no bits, as a host has it before its first rebuild */
    editor.data.resizeSelection(0);
    ASSERT_EQ(editor.data.selectionSize(), 0u);
    EXPECT_EQ(attachPoint(editor), std::make_pair(std::string{"(null)"}, std::string{"(null)"}));
}

TEST_F(SelectionDeathTest, NullPointersAndBrokenGraphsAreFatal) {
    const char* const Null = "Containers::Pointer: the pointer is null\n";
    const char* const NoHeader = "DynamicSceneGraph::header(): Header not initilized.\n";

    EXPECT_DEATH({
        editor.objectLookup = nullptr;
        selectObjects(editor, {"a"});
    }, Eq(Null));

    selectObjects(editor, {"a"});
    for(StringArray(*query)(QuelmarEditor&): {selectedObjectKeys, selectedObjectKeysWithTrees}) {
        EXPECT_DEATH({
            editor.scene = nullptr;
            query(editor);
        }, Eq(Null));
        EXPECT_DEATH({
            editor.scene->sceneGraph = nullptr;
            query(editor);
        }, Eq(Null));
        EXPECT_DEATH({
            editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
            query(editor);
        }, Eq(NoHeader));
    }
    EXPECT_DEATH({
        editor.scene = nullptr;
        Implementation::selectedObjectAndParent(editor);
    }, Eq(Null));
    EXPECT_DEATH({
        editor.scene->sceneGraph = nullptr;
        Implementation::selectedObjectAndParent(editor);
    }, Eq(Null));
    /* The attach point reads no header; a graph without one has no keys */
    EXPECT_DEATH({
        editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
        Implementation::selectedObjectAndParent(editor);
    }, Eq(std::string{Utility::format("StringArrayView::get(): invalid index {} for size 0\n", index("a")).data()}));

    /* A graph whose position 1 holds an object index beyond its keys */
    const auto brokenGraph = [](unsigned short objectIndex) {
        Containers::Pointer<Data::DynamicSceneGraph<unsigned short>> graph{Containers::pointer<Data::DynamicSceneGraph<unsigned short>>()};
        Containers::Array<Data::DynamicSceneGraph<unsigned short>::Hierarchy> hierarchy{2};
        hierarchy[0].descendants = 1;
        Containers::Array<unsigned short> positionToIndex{2};
        positionToIndex[1] = objectIndex;
        StringArray keys;
        keys.add("");
        keys.add("x");
        graph->setup(std::move(hierarchy), std::move(positionToIndex), Containers::Array<unsigned short>{2}, std::move(keys), Containers::Array<Magnum::Math::Matrix4<Magnum::Float>>{2});
        return graph;
    };
    selectObjects(editor, {"d"});
    const std::string BeyondKeys = Utility::format("StringArrayView::get(): invalid index {} for size 2\n", index("d")).data();
    for(StringArray(*query)(QuelmarEditor&): {selectedObjectKeys, selectedObjectKeysWithTrees}) {
        EXPECT_DEATH({
            editor.scene->sceneGraph = brokenGraph(index("d"));
            query(editor);
        }, Eq(BeyondKeys));
    }
}
