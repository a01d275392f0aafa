/* Copying: the clipboard text byte for byte, the maps it is made of and the skins it carries along */

#include <tuple>
#include <gtest/gtest.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

/* Two skins used out of order, a skin that is no key, a name that needs escaping, a fraction, the empty key */
const char* const Project = R"({"objects":{"":{"name":"Empty"},"a":{"name":"A"},"b":{"name":"say \"hi\"","parent":"a","skin":"s2"},"c":{"name":"C","parent":"a","skin":"s1"},)"
    R"("d":{"name":"D","skin":"s2","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0.5,0,0,1]},"e":{"name":"E","skin":5}},)"
    R"("skins":{"s1":{"joints":["a"]},"s2":{"joints":["b","c"]}}})";

struct ClipboardTest: testing::Test {
    void SetUp() override { ASSERT_TRUE(editor.loadFromString(Project)); }
    QuelmarEditor editor;
};

}

TEST_F(ClipboardTest, ClipboardText) {
    EXPECT_EQ(copySelected(editor), R"({"objects":{}})");
    /* The root is never copied, not even when its bit is set; a null key
       is the root, the empty one a key like any other */
    selectObjects(editor, {nullptr});
    EXPECT_EQ(copySelected(editor), R"({"objects":{}})");
    selectObjects(editor, {""});
    EXPECT_EQ(copySelected(editor), "{\"objects\":{\n\"\": {\"name\":\"Empty\"}\n}\n}");

    /* Tree order whatever the order of selecting; skins in order of first reference, s2 once, 5 none */
    const std::string bAndC = "\"b\": {\"name\":\"say \\\"hi\\\"\",\"parent\":\"a\",\"skin\":\"s2\"},\n\"c\": {\"name\":\"C\",\"parent\":\"a\",\"skin\":\"s1\"}",
        skins = "\n}\n,\"skins\":{\n\"s2\": {\"joints\":[\"b\",\"c\"]},\n\"s1\": {\"joints\":[\"a\"]}\n}\n}";
    selectObjects(editor, {"e", "d", "c", "b"});
    EXPECT_EQ(copySelected(editor), "{\"objects\":{\n" + bAndC + ",\n\"d\": {\"name\":\"D\",\"skin\":\"s2\",\"transformation\":[1,0,0,0,0,1,0,0,0,0,1,0,0.5,0,0,1]},\n"
        "\"e\": {\"name\":\"E\",\"skin\":5}" + skins);

    /* c lies in a's tree and must not come twice; the copy leaves document, history and selection, and its redirection ends */
    selectObjects(editor, {"c", "a"});
    const std::string before = editor.data.project.toJson().data();
    std::ostream* const debugOutput = Utility::Debug::output();
    EXPECT_EQ(copySelectedTrees(editor), "{\"objects\":{\n\"a\": {\"name\":\"A\"},\n" + bAndC + skins);
    EXPECT_EQ(std::make_tuple(std::string{editor.data.project.toJson().data()}, editor.changeManager->changeCount(), selectedObjectKeys(editor).size(),
        Utility::Debug::output()), std::make_tuple(before, 0u, 2u, debugOutput));
}

TEST_F(ClipboardTest, MapOfKeys) {
    const auto map = [this](std::initializer_list<const char*> keys) {
        StringArray list{keys.size()};
        for(const char* key: keys) list.add(key);
        return toString(editor, "objects", list);
    };
    EXPECT_EQ(map({}), "{}");
    /* Keys that name nothing give null; keys are escaped as strings are,
       which leaves all others byte for byte */
    EXPECT_EQ(map({"", "a", "zz"}), "{\n\"\": {\"name\":\"Empty\"},\n\"a\": {\"name\":\"A\"},\n\"zz\": null\n}\n");
    EXPECT_EQ(map({"q\"\\\t\x01/\xc3\xa9\x7f"}), "{\n\"q\\\"\\\\\\t\\u0001/\xc3\xa9\x7f\": null\n}\n");
}
