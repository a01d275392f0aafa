/* Tests of copying: the clipboard text byte for byte, the maps it is made of
   and the skins it carries along. */

#include <initializer_list>
#include <string>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Clipboard.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

/* Two skins used out of order, a name that needs escaping, a fraction */
const char* const Project = R"({"objects":{)"
    R"("a":{"name":"A"},)"
    R"("b":{"name":"say \"hi\"","parent":"a","skin":"s2"},)"
    R"("c":{"name":"C","parent":"a","skin":"s1"},)"
    R"("d":{"name":"D","skin":"s2","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0.5,0,0,1]},)"
    R"("e":{"name":"E","skin":5}},)"
    R"("skins":{"s1":{"joints":["a"]},"s2":{"joints":["b","c"]}}})";

struct ClipboardTest: testing::Test {
    void SetUp() override { ASSERT_TRUE(editor.loadFromString(Project)); }

    QuelmarEditor editor;
};

using ClipboardDeathTest = ClipboardTest;

StringArray keys(std::initializer_list<const char*> list) {
    StringArray out{list.size()};
    for(const char* key: list) out.add(key, -1);
    return out;
}

std::vector<std::string> strings(const StringArrayView& view) {
    std::vector<std::string> out;
    for(std::size_t i = 0; i != view.size(); ++i) out.push_back(view.get(i));
    return out;
}

std::string sourceDir() {
    const std::string file = __FILE__;
    return file.substr(0, file.rfind('/')) + "/..";
}

}

TEST_F(ClipboardTest, EmptySelectionIsTheEmptyDocument) {
    EXPECT_EQ(copySelected(editor), R"({"objects":{}})");
    EXPECT_EQ(copySelectedTrees(editor), R"({"objects":{}})");

    /* The root is never copied, not even when its bit is set */
    editor.data.selectObject(0, true);
    EXPECT_EQ(copySelected(editor), R"({"objects":{}})");
}

TEST_F(ClipboardTest, DocumentLayout) {
    selectObjects(editor, {"a"});
    EXPECT_EQ(copySelected(editor),
        "{\"objects\":{\n"
        "\"a\": {\"name\":\"A\"}\n"
        "}\n"
        "}");

    /* Tree order whatever the order of selecting; s2 is met first and
       listed once */
    selectObjects(editor, {"d", "c", "b"});
    EXPECT_EQ(copySelected(editor),
        "{\"objects\":{\n"
        "\"b\": {\"name\":\"say \\\"hi\\\"\",\"parent\":\"a\",\"skin\":\"s2\"},\n"
        "\"c\": {\"name\":\"C\",\"parent\":\"a\",\"skin\":\"s1\"},\n"
        "\"d\": {\"name\":\"D\",\"skin\":\"s2\",\"transformation\":[1,0,0,0,0,1,0,0,0,0,1,0,0.5,0,0,1]}\n"
        "}\n"
        ",\"skins\":{\n"
        "\"s2\": {\"joints\":[\"b\",\"c\"]},\n"
        "\"s1\": {\"joints\":[\"a\"]}\n"
        "}\n"
        "}");
}

TEST_F(ClipboardTest, TreesListEveryObjectOnce) {
    /* c lies in a's tree and must not come twice */
    selectObjects(editor, {"c", "a"});
    const std::string text = copySelectedTrees(editor);
    EXPECT_EQ(text,
        "{\"objects\":{\n"
        "\"a\": {\"name\":\"A\"},\n"
        "\"b\": {\"name\":\"say \\\"hi\\\"\",\"parent\":\"a\",\"skin\":\"s2\"},\n"
        "\"c\": {\"name\":\"C\",\"parent\":\"a\",\"skin\":\"s1\"}\n"
        "}\n"
        ",\"skins\":{\n"
        "\"s2\": {\"joints\":[\"b\",\"c\"]},\n"
        "\"s1\": {\"joints\":[\"a\"]}\n"
        "}\n"
        "}");

    /* The plain copy takes only what is selected */
    EXPECT_EQ(copySelected(editor).find("\"b\":"), std::string::npos);
}

TEST_F(ClipboardTest, MapOfKeys) {
    const struct {
        const char* name;
        const char* map;
        std::initializer_list<const char*> keys;
        const char* expected;
    } data[]{
        {"no keys", "objects", {}, "{}"},
        {"only the empty key", "objects", {""}, "{}"},
        {"empty first key skipped", "objects", {"", "a"}, "{\n\"a\": {\"name\":\"A\"}\n}\n"},
        {"empty later key written", "objects", {"a", ""}, "{\n\"a\": {\"name\":\"A\"},\n\"\": null\n}\n"},
        {"key naming nothing", "objects", {"zz"}, "{\n\"zz\": null\n}\n"},
        {"skins", "skins", {"s1", "s2"}, "{\n\"s1\": {\"joints\":[\"a\"]},\n\"s2\": {\"joints\":[\"b\",\"c\"]}\n}\n"},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        StringArray list = keys(row.keys);
        EXPECT_EQ(toString(editor, row.map, list), row.expected);
    }
}

TEST_F(ClipboardTest, ReferencedSkins) {
    const struct {
        const char* name;
        std::initializer_list<const char*> objects;
        std::vector<std::string> expected;
    } data[]{
        {"none", {}, {}},
        {"object without skin", {"a"}, {}},
        {"order of first reference", {"b", "c", "d"}, {"s2", "s1"}},
        {"empty first key read too", {"", "c"}, {"s1"}},
        {"skin that is not a string", {"e", "b"}, {"s2"}},
        {"object that doesn't exist", {"zz", "c"}, {"s1"}},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        StringArray list = keys(row.objects);
        EXPECT_EQ(strings(Implementation::referencedSkins(editor, list)), row.expected);
    }
}

TEST_F(ClipboardTest, CopyChangesNothing) {
    selectObjects(editor, {"b", "d"});
    const std::string before = editor.data.project.toJson().data();
    std::ostream* const debugOutput = Utility::Debug::output();

    copySelected(editor);
    copySelectedTrees(editor);

    EXPECT_EQ(editor.data.project.toJson().data(), before);
    EXPECT_EQ(editor.changeManager->changeCount(), 0u);
    EXPECT_FALSE(editor.changeManager->isGroupOpen());
    EXPECT_EQ(strings(selectedObjectKeys(editor)), (std::vector<std::string>{"b", "d"}));
    /* The redirection into the text ends with the copy */
    EXPECT_EQ(Utility::Debug::output(), debugOutput);
}

TEST(ClipboardSceneTest, RecordsReadBackAsTheyStand) {
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromFile((sourceDir() + "/examples/scene.json").data()));
    selectObjects(editor, {"hero", "camera"});
    const std::string text = copySelectedTrees(editor);

    rapidjson::Document copied;
    JsonParseError error;
    ASSERT_TRUE(parseJson(copied, {text.data(), text.size()}, error)) << error.reason.data();

    const rapidjson::Document& project = *editor.data.project.document;
    const std::vector<std::string> objects{"hero", "hips", "spine", "head", "sword", "camera"};
    const std::vector<std::string> skins{"heroSkin"};
    for(const char* map: {"objects", "skins"}) {
        SCOPED_TRACE(map);
        std::vector<std::string> copiedKeys;
        const rapidjson::Value& records = *findMember(copied, map);
        for(auto it = records.MemberBegin(); it != records.MemberEnd(); ++it) {
            copiedKeys.push_back(it->name.GetString());
            SCOPED_TRACE(copiedKeys.back());
            EXPECT_TRUE(it->value == *findMember(*findMember(project, map), it->name.GetString()));
        }
        EXPECT_EQ(copiedKeys, std::string{map} == "skins" ? skins : objects);
    }
}

TEST_F(ClipboardDeathTest, NoScene) {
    selectObjects(editor, {"a"});
    editor.scene = nullptr;
    EXPECT_DEATH(copySelected(editor), testing::Eq("Containers::Pointer: the pointer is null\n"));
}
