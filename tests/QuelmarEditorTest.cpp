#include <sstream>
#include <string>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

/* The live tree as "key(parentKey)" in position order, with descendant counts */
std::string tree(QuelmarEditor& editor) {
    auto& graph = *editor.scene->sceneGraph;
    std::string out;
    for(std::size_t p = 1; p < graph.header().objectCount; ++p) {
        const auto& record = graph.hierarchy()[p];
        out += std::string{graph.objectKeys().get(graph.positionToIndex()[p])} + "(" +
            graph.objectKeys().get(graph.positionToIndex()[record.parent]) + ")" +
            std::to_string(record.descendants) + " ";
    }
    return out;
}

unsigned short indexOf(QuelmarEditor& editor, const char* key) {
    return editor.objectLookup->keyToIndex()[Containers::String{key}];
}

/* The graph a whole rebuild makes; that changes show the same way
   incrementally, the comparison with whole rebuilds checks */
TEST(QuelmarEditorTest, GraphOfADocument) {
    QuelmarEditor editor;
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 1);

    /* Siblings in map order, dangling parents under the root, deleted
       objects left out with everything below them */
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"c":{"parent":"a"},"a":{},"b":{"parent":"a","deleted":true},"d":{"parent":"b"},)"
        R"("e":{"parent":"gone"},"f":{"parent":""},"g":{"parent":"c"}}})"));
    EXPECT_EQ(tree(editor), "a()2 c(a)1 g(c)0 e()0 f()0 ");

    const unsigned short d = indexOf(editor, "d");
    ASSERT_NE(d, 0);
    EXPECT_EQ(editor.scene->sceneGraph->indexToPosition()[d], 0);
}

/* Whether freeing an index also frees its selection bit, and unknown keys
   in the lookup, the comparison with whole rebuilds checks */
TEST(QuelmarEditorTest, IndicesAndSelection) {
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"a":{},"b":{},"c":{}}})"));
    const unsigned short b = indexOf(editor, "b");
    /* The freed index is given to the next new object */
    editor.changeManager->pushRemoval("/objects/b");
    editor.changeManager->pushChange("/objects/n", rapidjson::Value{rapidjson::kObjectType}, false);
    EXPECT_EQ(indexOf(editor, "n"), b);

    /* A deleted object can't stay selected */
    editor.data.selectObject(b, true);
    editor.changeManager->pushChange("/objects/n/deleted", rapidjson::Value{true}, false);
    EXPECT_FALSE(editor.data.isSelected(b));
    EXPECT_EQ(editor.scene->sceneGraph->indexToPosition()[b], 0);
}

TEST(QuelmarEditorTest, CyclesAreBroken) {
    QuelmarEditor editor;
    std::ostringstream out;
    Utility::Warning redirect{&out};
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"x":{"parent":"z"},"self":{"parent":"self"},"y":{"parent":"x"},"z":{"parent":"y"},)"
        R"("hanger":{"parent":"y"}}})"));
    EXPECT_EQ(out.str(),
        "Objects x, z, y are parents of each other, showing x under the root\n"
        "Objects self are parents of each other, showing self under the root\n");
    EXPECT_EQ(tree(editor), "x()3 y(x)2 z(y)0 hanger(y)0 self()0 ");

    /* Said once, not at every refresh */
    out.str({});
    editor.changeManager->pushChange("/objects/x/name", "X", false);
    EXPECT_EQ(tree(editor), "x()3 y(x)2 z(y)0 hanger(y)0 self()0 ");
    EXPECT_EQ(out.str(), "");

    /* A move that closes a cycle is said at once, and the member first in
       the map goes under the root; one that opens it puts it back */
    editor.changeManager->pushChange("/objects/z/parent", "hanger", false);
    EXPECT_EQ(tree(editor), "x()3 y(x)2 hanger(y)1 z(hanger)0 self()0 ");
    editor.changeManager->pushChange("/objects/self/parent", "y", false);
    EXPECT_EQ(tree(editor), "x()4 y(x)3 self(y)0 hanger(y)1 z(hanger)0 ");
    EXPECT_EQ(out.str(), "Objects x, z, hanger, y are parents of each other, showing x under the root\n");
}

/* Changes outside "objects", and names, don't change the graph; a
   transformation number changes one local matrix. One refresh per step of
   many changes the paste tests check */
TEST(QuelmarEditorTest, SmallChangesRefreshLittle) {
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"o7":{}}})"));
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 2);
    const std::size_t before = editor.rebuildCount();
    editor.changeManager->pushChange("/skins/s", rapidjson::Value{rapidjson::kObjectType}, false);
    editor.changeManager->pushChange("/objects/o7/name", "seven", false);
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 2);
    EXPECT_EQ(editor.rebuildCount(), before);
    rapidjson::Value matrix{rapidjson::kArrayType};
    for(int i = 0; i != 16; ++i) matrix.PushBack(i % 5 ? 0 : 1, editor.data.project.allocator());
    editor.changeManager->pushChange("/objects/o7/transformation", matrix, false);
    editor.changeManager->pushChange("/objects/o7/transformation/12", rapidjson::Value{3}, false);
    const auto& graph = *editor.scene->sceneGraph;
    EXPECT_EQ(graph.localTransformations()[graph.indexToPosition()[indexOf(editor, "o7")]], Magnum::Matrix4::translation({3.0f, 0.0f, 0.0f}));
    EXPECT_EQ(editor.rebuildCount(), before + 1);
}

TEST(QuelmarEditorTest, ObjectLimit) {
    std::string json = "{\"objects\":{";
    for(std::size_t i = 0; i != QuelmarEditor::MaxObjects; ++i) json += (i ? ",\"o" : "\"o") + std::to_string(i) + "\":{}";
    json += "}}";
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString({json.data(), json.size()}));
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 65535);

    /* Objects past the limit stay out of the graph, which stays whole */
    std::ostringstream out;
    Utility::Warning redirect{&out};
    editor.changeManager->beginGroup();
    for(int i = 0; i != 3; ++i)
        editor.changeManager->pushChange(Utility::format("/objects/extra{}", i).data(), rapidjson::Value{rapidjson::kObjectType}, false);
    editor.changeManager->commit();
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 65535);
    EXPECT_EQ(out.str(), "Objects past the 65534th are left out of the scene, as a project can't have more\n");
    EXPECT_EQ(indexOf(editor, "extra0"), 0);
    EXPECT_EQ(editor.scene->sceneGraph->hierarchy()[0].descendants, 65534);

    /* Removing one makes room for the first that was left out */
    editor.changeManager->pushRemoval("/objects/o0");
    EXPECT_NE(indexOf(editor, "extra0"), 0);
    EXPECT_EQ(indexOf(editor, "extra1"), 0);
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 65535);
}

/* A load starts afresh; what a refused text keeps, and that the scene
   follows changes after a load, the edit session's tests check */
TEST(QuelmarEditorTest, LoadResets) {
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"a":{}}})"));
    editor.data.selectObject(indexOf(editor, "a"), true);
    editor.changeManager->pushChange("/objects/a/name", "A", false);
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"b":{}}})"));
    EXPECT_FALSE(editor.changeManager->hasUnsavedChanges());
    EXPECT_FALSE(editor.changeManager->canUndo());
    EXPECT_EQ(editor.data.selectionSize(), 2);
    EXPECT_FALSE(editor.data.isSelected(1));
    EXPECT_EQ(tree(editor), "b()0 ");
}

TEST(QuelmarEditorTest, FatalErrors) {
    EXPECT_DEATH({
        QuelmarEditor editor;
        editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
        editor.scene->sceneGraph->header();
    }, "^DynamicSceneGraph::header\\(\\): Header not initilized.\n$");
}

}
