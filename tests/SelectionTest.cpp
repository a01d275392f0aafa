/* The selection queries through the host: selecting by key, listing keys in tree order, the attach point */

#include <tuple>
#include <gtest/gtest.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Selection.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;
using testing::Eq;

namespace {

struct SelectionTest: testing::Test {
    /* Map order differs from tree order: "f" gets the lowest index but comes last. a ─ b ─ c, a ─ d, e ─ f */
    void SetUp() override { ASSERT_TRUE(editor.loadFromString(R"({"objects":{"f":{"parent":"e"},"a":{},"b":{"parent":"a"},"c":{"parent":"b"},"d":{"parent":"a"},"e":{}}})")); }

    unsigned short index(const char* key) { return editor.objectLookup->keyToIndex()[Containers::String{key}]; }

    /* The attach point as "object<parent", "-" for a null */
    std::string attachPoint() {
        const std::pair<const char*, const char*> found = Implementation::selectedObjectAndParent(editor);
        return std::string{found.first ? found.first : "-"} + "<" + (found.second ? found.second : "-");
    }

    QuelmarEditor editor;
};

using SelectionDeathTest = SelectionTest;

}

TEST_F(SelectionTest, SelectListAndAttachPoint) {
    ASSERT_LT(index("f"), index("a"));
    /* Bits set in the end, the root's included; the attach point is the object of the lowest selected index */
    const struct { const char* name; std::initializer_list<const char*> selected; const char* keys; const char* withTrees; std::size_t bits; const char* attach; } rows[]{
        {"nothing", {}, "", "", 0, "-<-"},
        {"unknown key selects the root", {"zz"}, "", "", 1, "-<-"},
        {"null key selects the root, which attaches at the root", {nullptr, "e"}, "e", "e f", 2, "-<-"},
        {"a subtree", {"a"}, "a", "a b c d", 1, "a<-"},
        {"tree order, not selection or index order; lowest index, not first in the tree", {"f", "d", "b"}, "b d f", "b c d f", 3, "f<e"},
        {"a child of a selected object listed where it stands", {"c", "a"}, "a c", "a b c d", 2, "a<-"},
        {"object under another", {"c"}, "c", "c", 1, "c<b"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        /* Bits that were set before, beyond the size too, are all cleared */
        for(std::uint32_t& word: editor.data.selectionWords()) word = 0xffffffffu;
        selectObjects(editor, row.selected);
        std::size_t bits = 0;
        for(const std::uint32_t word: editor.data.selectionWords()) bits += __builtin_popcount(word);
        EXPECT_EQ(std::make_tuple(join(selectedObjectKeys(editor)), join(selectedObjectKeysWithTrees(editor)), bits, attachPoint()),
            std::make_tuple(row.keys, row.withTrees, row.bits, row.attach));
    }
    /* With the root selected the scene isn't reached at all */
    selectObjects(editor, {"zz", "a"});
    editor.scene = nullptr;
    EXPECT_EQ(attachPoint(), "-<-");
}

TEST_F(SelectionTest, AttachPointScansWordsUpToTheSize) {
    /* Forty objects under the root, k39 down to k0 in tree order, 41 bits with the root's */
    std::string json = R"({"objects":{)";
    for(int i = 0; i != 40; ++i) json += Utility::format(R"({}"k{}":{{}})", i ? "," : "", 39 - i).data();
    ASSERT_TRUE(editor.loadFromString((json + "}}").data()));
    ASSERT_EQ(editor.data.selectionSize(), 41u);
    /* The first word empty, the lowest bit in the second */
    selectObjects(editor, {"k0", "k3"});
    ASSERT_GE(index("k3"), 32);
    EXPECT_EQ(attachPoint(), "k3<-");
    /* Bits at or beyond the size are never selected, whatever else is */
    editor.data.selectionWords()[0] = 0;
    editor.data.selectionWords()[1] = 0xffffffffu << (41 % 32);
    EXPECT_EQ(attachPoint() + join(selectedObjectKeys(editor)), "-<-");
    editor.data.selectionWords()[1] |= 1u << (index("k1") % 32);
    EXPECT_EQ(attachPoint(), "k1<-");
}

/* The attach point reads no header; a graph without one has no keys */
TEST_F(SelectionDeathTest, KeyOfAGraphWithoutKeysIsFatal) {
    selectObjects(editor, {"d"});
    EXPECT_DEATH({
        editor.scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
        Implementation::selectedObjectAndParent(editor);
    }, Eq(std::string{Utility::format("StringArrayView::get(): invalid index {} for size 0\n", index("d")).data()}));
}
