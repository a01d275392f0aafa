/* Tests of pasting clipboard text and of the paste and duplicate commands,
   hostile text and the cost of a big duplicate included. */

#include <algorithm>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

struct Output {
    std::string error, warning;
};

struct PasteTest: testing::Test {
    void load(const std::string& json) {
        ASSERT_TRUE(editor.loadFromString({json.data(), json.size()}));
        counter = 0;
        editor.data.project.setIdGenerator([this]{
            return Containers::String{("K" + std::to_string(++counter)).data()};
        });
    }

    std::string document() const { return editor.data.project.toJson().data(); }

    /* What the paste printed, and the keys it returned */
    Output addText(const std::string& text, const char* parent, std::vector<std::string>* keys = nullptr) {
        std::ostringstream error, warning;
        {
            Utility::Error redirectError{&error};
            Utility::Warning redirectWarning{&warning};
            StringArray result = addFromString(editor, parent, text);
            if(keys) keys->assign({});
            for(std::size_t i = 0; keys && i != result.size(); ++i) keys->push_back(result.get(i));
        }
        return {error.str(), warning.str()};
    }

    /* A paste that went through: one new group of records, no group left
       open, undo giving back @p before exactly and redo the paste */
    void expectOneUndoableGroup(const std::string& before, std::size_t changesBefore) {
        const ChangeManager& changes = *editor.changeManager;
        EXPECT_FALSE(changes.isGroupOpen());
        ASSERT_GT(changes.changeCount(), changesBefore);
        for(std::size_t i = changesBefore; i != changes.changeCount(); ++i)
            EXPECT_EQ(changes.change(i).group, changes.change(changesBefore).group);
        EXPECT_NE(changes.change(changesBefore).group, -1);

        const std::string pasted = document();
        editor.changeManager->undoLast();
        EXPECT_EQ(document(), before);
        EXPECT_EQ(changes.lastChangeIndex(), int(changesBefore) - 1);
        editor.changeManager->redoLastUndo();
        EXPECT_EQ(document(), pasted);
    }

    std::vector<std::string> selected() {
        std::vector<std::string> out;
        StringArray keys = selectedObjectKeys(editor);
        for(std::size_t i = 0; i != keys.size(); ++i) out.push_back(keys.get(i));
        return out;
    }

    const char* parentOf(const std::string& key) {
        return editor.data.project["objects"]->subValue(key.data())->subValue("parent").asString();
    }

    QuelmarEditor editor;
    int counter{};
};

using PasteDeathTest = PasteTest;

std::string sourceDir() {
    const std::string file = __FILE__;
    return file.substr(0, file.rfind('/')) + "/..";
}

std::string sorted(std::vector<std::string> keys) {
    std::sort(keys.begin(), keys.end());
    std::string out;
    for(const std::string& key: keys) out += key + " ";
    return out;
}

}

TEST_F(PasteTest, WorkedExample) {
    load(R"({"objects":{"target":{"name":"Target"}},"skins":{}})");
    /* Each key is asked for after the previous record was pushed */
    std::vector<std::size_t> changesAtId;
    editor.data.project.setIdGenerator([&]{
        changesAtId.push_back(editor.changeManager->changeCount());
        return Containers::String{("K" + std::to_string(++counter)).data()};
    });
    const std::string before = document();

    std::vector<std::string> keys;
    const Output output = addText(
        "{\"objects\":{\n"
        "\"obj1\": {\"name\":\"One\",\"parent\":\"obj0\",\"skin\":\"skin1\"},\n"
        "\"obj2\": {\"name\":\"Two\",\"parent\":\"obj1\",\"components\":[{\"type\":\"mesh\",\"mesh\":{\"skin\":\"skin1\"}}]},\n"
        "\"obj3\": {\"name\":\"Three\",\"parent\":\"obj2\",\"skin\":\"skin2\"}\n"
        "}\n"
        ",\"skins\":{\n"
        "\"skin1\": {\"joints\":[\"obj1\",\"obj9\"]}\n"
        "}\n"
        "}", "target", &keys);

    EXPECT_EQ(keys, (std::vector<std::string>{"K1", "K2", "K3"}));
    EXPECT_EQ(changesAtId, (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_EQ(output.error, "");
    EXPECT_EQ(output.warning,
        "Broken joint reference obj9 found while pasting, make sure to copy all joints.\n"
        "Skin skin2 referenced by object K3 was not part of pasted content.\n");

    const std::vector<std::string> paths{"/objects/K1", "/objects/K2", "/objects/K3", "/skins/K4", "/objects/K1/skin", "/objects/K2/components/0/mesh/skin"};
    ASSERT_EQ(editor.changeManager->changeCount(), paths.size());
    for(std::size_t i = 0; i != paths.size(); ++i)
        EXPECT_EQ(editor.changeManager->change(i).path.data(), paths[i]);
    EXPECT_EQ(document(), R"({"objects":{"target":{"name":"Target"},)"
        R"("K1":{"name":"One","parent":"target","skin":"K4"},)"
        R"("K2":{"name":"Two","parent":"K1","components":[{"type":"mesh","mesh":{"skin":"K4"}}]},)"
        R"("K3":{"name":"Three","parent":"K2","skin":"skin2"}},)"
        R"("skins":{"K4":{"joints":["K1","obj9"]}}})");

    expectOneUndoableGroup(before, 0);
}

TEST_F(PasteTest, Rewiring) {
    const struct {
        const char* name;
        const char* text;
        const char* parent;
        const char* objects;
        const char* skins;
        std::vector<std::string> keys;
        const char* warning;
    } data[]{
        {"parent before its child", R"({"objects":{"a":{"parent":"x"},"b":{"parent":"a"}}})", "t",
            R"({"t":{},"K1":{"parent":"t"},"K2":{"parent":"K1"}})", "{}", {"K1", "K2"}, ""},
        {"child before its parent", R"({"objects":{"b":{"parent":"a"},"a":{}}})", "t",
            R"({"t":{},"K1":{"parent":"t"},"K2":{"parent":"t"}})", "{}", {"K1", "K2"}, ""},
        {"no parent given", R"({"objects":{"a":{"parent":"gone"},"b":{"parent":"a"}}})", nullptr,
            R"({"t":{},"K1":{"parent":null},"K2":{"parent":"K1"}})", "{}", {"K1", "K2"}, ""},
        {"parent not a string", R"({"objects":{"a":{"parent":5}}})", "t",
            R"({"t":{},"K1":{"parent":"t"}})", "{}", {"K1"}, ""},
        {"keys with pointer and JSON characters", R"({"objects":{"a/b~0\"c":{},"d":{"parent":"a/b~0\"c"}}})", "t",
            R"({"t":{},"K1":{"parent":"t"},"K2":{"parent":"K1"}})", "{}", {"K1", "K2"}, ""},
        {"keys apart after an escaped NUL", R"({"objects":{"a\u0000b":{},"a":{},"c":{"parent":"a\u0000b"},"d":{"parent":"a"}}})", "t",
            R"({"t":{},"K1":{"parent":"t"},"K2":{"parent":"t"},"K3":{"parent":"K1"},"K4":{"parent":"K2"}})", "{}", {"K1", "K2", "K3", "K4"}, ""},
        {"the same key twice", R"({"objects":{"a":{"n":1},"a":{"n":2},"b":{"parent":"a"}}})", "t",
            R"({"t":{},"K1":{"n":2,"parent":"t"},"K2":{"parent":"K1"}})", "{}", {"K1", "K2"}, ""},
        {"records that are not objects", R"({"objects":{"a":5,"b":[{}],"c":{"parent":"a"}}})", "t",
            R"({"t":{},"K1":{"parent":"t"}})", "{}", {"K1"}, ""},
        {"objects not a map", R"({"objects":[{"a":{}}],"skins":{"s":{"joints":["a"]}}})", "t",
            R"({"t":{}})", R"({"K1":{"joints":["a"]}})", {}, "Broken joint reference a found while pasting, make sure to copy all joints.\n"},
        {"no skins: references kept silently", R"({"objects":{"a":{"skin":"s","components":[{"type":"mesh","mesh":{"skin":"s"}}]}}})", "t",
            R"({"t":{},"K1":{"skin":"s","components":[{"type":"mesh","mesh":{"skin":"s"}}],"parent":"t"}})", "{}", {"K1"}, ""},
        {"empty skins: every own reference warned", R"({"objects":{"a":{"skin":"s"},"b":{"skin":"s"}},"skins":{}})", "t",
            R"({"t":{},"K1":{"skin":"s","parent":"t"},"K2":{"skin":"s","parent":"t"}})", "{}", {"K1", "K2"},
            "Skin s referenced by object K1 was not part of pasted content.\nSkin s referenced by object K2 was not part of pasted content.\n"},
        {"skins not a map", R"({"objects":{"a":{"skin":"s"}},"skins":["s"]})", "t",
            R"({"t":{},"K1":{"skin":"s","parent":"t"}})", "{}", {"K1"}, "Skin s referenced by object K1 was not part of pasted content.\n"},
        {"joints: pasted, broken, not strings", R"({"objects":{"a":{},"b":{}},"skins":{"s":{"joints":["a",7,"zz","b",null]}}})", "t",
            R"({"t":{},"K1":{"parent":"t"},"K2":{"parent":"t"}})", R"({"K3":{"joints":["K1",7,"zz","K2",null]}})", {"K1", "K2"},
            "Broken joint reference zz found while pasting, make sure to copy all joints.\n"},
        {"joints not an array, skin not an object", R"({"skins":{"s":{"joints":"a"},"r":"x"}})", "t",
            R"({"t":{}})", R"({"K1":{"joints":"a"}})", {}, ""},
        {"only mesh components", R"({"objects":{"o":{"components":[{"type":"light","mesh":{"skin":"s"}},{"mesh":{"skin":"s"}},)"
            R"({"type":"mesh","mesh":{"skin":"s"}},{"type":"mesh","mesh":{"skin":"other"}},{"type":"mesh"},5]}},"skins":{"s":{}}})", "t",
            R"({"t":{},"K1":{"components":[{"type":"light","mesh":{"skin":"s"}},{"mesh":{"skin":"s"}},)"
            R"({"type":"mesh","mesh":{"skin":"K2"}},{"type":"mesh","mesh":{"skin":"other"}},{"type":"mesh"},5],"parent":"t"}})",
            R"({"K2":{}})", {"K1"}, ""},
        {"nothing at all", "{}", "t", R"({"t":{}})", "{}", {}, ""},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        load(R"({"objects":{"t":{}},"skins":{}})");
        const std::string before = document();

        std::vector<std::string> keys;
        const Output output = addText(row.text, row.parent, &keys);
        EXPECT_EQ(output.error, "");
        EXPECT_EQ(output.warning, row.warning);
        EXPECT_EQ(keys, row.keys);
        EXPECT_EQ(document(), std::string{R"({"objects":)"} + row.objects + R"(,"skins":)" + row.skins + "}");
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        if(editor.changeManager->changeCount()) expectOneUndoableGroup(before, 0);
    }
}

TEST_F(PasteTest, UnreadableText) {
    const std::string deep(1000000, '[');
    std::string deepObjects = R"({"objects":{"a":{"x":)";
    for(int i = 0; i != 300; ++i) deepObjects += R"({"x":)";
    deepObjects += "1" + std::string(300, '}') + "}}}";
    const struct {
        const char* name;
        std::string text;
    } data[]{
        {"empty", ""},
        {"whitespace", " \n\t"},
        {"array", R"([{"objects":{}}])"},
        {"string", R"("objects")"},
        {"null", "null"},
        {"unclosed brace", R"({"objects":{"a":{})"},
        {"trailing garbage", R"({"objects":{}} x)"},
        {"two documents", "{}{}"},
        {"trailing comma", R"({"objects":{},})"},
        {"single quotes", "{'objects':{}}"},
        {"comment", "{} // copied"},
        {"NaN", R"({"objects":{"a":{"x":NaN}}})"},
        {"number out of range", R"({"objects":{"a":{"x":1e400}}})"},
        {"unfinished escape", R"({"objects":{"a\u12":{}}})"},
        {"a million brackets", deep},
        {"too deep inside a record", deepObjects},
        {"nothing before a NUL", std::string{"\0{\"objects\":{}}", 15}},
    };
    load(R"({"objects":{"t":{}},"skins":{}})");
    editor.changeManager->pushChange("/objects/t/name", "T", false);
    const std::string before = document();
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> keys{"stale"};
        const Output output = addText(row.text, "t", &keys);
        EXPECT_EQ(output.error, "Pasted JSON is not a JSON object\n");
        EXPECT_EQ(output.warning, "");
        EXPECT_TRUE(keys.empty());
        EXPECT_EQ(document(), before);
        EXPECT_EQ(editor.changeManager->changeCount(), 1u);
        EXPECT_EQ(editor.changeManager->lastChangeIndex(), 0);
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
    }
}

TEST_F(PasteTest, OddButReadableText) {
    const std::string deepest = [] {
        /* Root, map and record take three of the 256 levels */
        std::string out = R"({"objects":{"a":{"x":)";
        out += std::string(253, '[') + std::string(253, ']') + "}}}";
        return out;
    }();
    const struct {
        const char* name;
        std::string text;
        const char* record;
    } data[]{
        {"text after a NUL is not read", std::string{"{\"objects\":{\"a\":{}}}\0junk", 25}, R"({"parent":"t"})"},
        {"invalid UTF-8", "{\"objects\":{\"\xff\":{\"name\":\"\xc3\x28\"}}}", "{\"name\":\"\xc3\x28\",\"parent\":\"t\"}"},
        {"big numbers", R"({"objects":{"a":{"n":[123456789012345678901234567890,1e308,-0,-9223372036854775808]}}})",
            R"({"n":[1.2345678901234568e+29,1e+308,0,-9223372036854775808],"parent":"t"})"},
        {"as deep as allowed", deepest, nullptr},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        load(R"({"objects":{"t":{}},"skins":{}})");
        const std::string before = document();
        const Output output = addText(row.text, "t");
        EXPECT_EQ(output.error, "");
        if(row.record) {
            EXPECT_EQ(writeJson(*editor.data.project.getValue("/objects/K1", false)), row.record);
        }
        expectOneUndoableGroup(before, 0);
    }
}

/* Random damage to a real clipboard text: each paste either goes through as
   one group that undo takes back exactly, or is refused leaving everything
   as it was */
TEST_F(PasteTest, MutatedClipboardText) {
    ASSERT_TRUE(editor.loadFromFile((sourceDir() + "/examples/scene.json").data()));
    selectObjects(editor, {"hero", "lamp"});
    const std::string original = copySelectedTrees(editor);
    const std::string before = document();

    std::mt19937 random{20240611};
    const std::string interesting = "{}[]\":,\\/~0a-e\x01\xff";
    std::size_t refused = 0, pasted = 0;
    for(int iteration = 0; iteration != 3000; ++iteration) {
        std::string text = original;
        for(int m = 0, count = 1 + int(random() % 4); m != count && !text.empty(); ++m) {
            const std::size_t at = random() % text.size();
            const std::size_t length = std::min<std::size_t>(1 + random() % 8, text.size() - at);
            switch(random() % 4) {
                case 0: text[at] = interesting[random() % interesting.size()]; break;
                case 1: text[at] = char(random()); break;
                case 2: text.erase(at, length); break;
                case 3: text.insert(at, text.substr(random() % text.size(), length)); break;
            }
        }
        SCOPED_TRACE(text);

        const std::size_t changes = editor.changeManager->changeCount();
        const int last = editor.changeManager->lastChangeIndex();
        const Output output = addText(text, "stage");
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        if(!output.error.empty()) {
            ++refused;
            EXPECT_EQ(output.error, "Pasted JSON is not a JSON object\n");
            EXPECT_EQ(editor.changeManager->lastChangeIndex(), last);
            EXPECT_EQ(editor.changeManager->changeCount(), changes);
            EXPECT_EQ(document(), before);
        } else if(editor.changeManager->lastChangeIndex() != last) {
            ++pasted;
            expectOneUndoableGroup(before, std::size_t(last + 1));
            editor.changeManager->undoLast();
        }
        ASSERT_EQ(document(), before);
        if(testing::Test::HasFailure()) break;
    }
    EXPECT_GT(refused, 100u);
    EXPECT_GT(pasted, 100u);
}

TEST_F(PasteTest, NothingSelected) {
    load(R"({"objects":{"a":{},"b":{"parent":"a"}},"skins":{}})");
    const std::string text = R"({"objects":{"x":{"parent":"a"}}})";

    paste(editor, text);
    EXPECT_EQ(parentOf("K1"), nullptr);
    EXPECT_EQ(selected(), (std::vector<std::string>{"K1"}));
    selectObjects(editor, {});
    pasteChild(editor, text);
    EXPECT_EQ(parentOf("K2"), nullptr);
    EXPECT_EQ(selected(), (std::vector<std::string>{"K2"}));

    selectObjects(editor, {});
    const std::size_t changes = editor.changeManager->changeCount();
    duplicate(editor);
    EXPECT_TRUE(duplicateTrees(editor).isEmpty());
    EXPECT_EQ(editor.changeManager->changeCount(), changes);
    EXPECT_TRUE(selected().empty());
}

TEST_F(PasteTest, WhereCopiesGo) {
    load(R"({"objects":{"s":{},"l":{"parent":"s"},"h":{"parent":"s"},"c":{"parent":"h"},"g":{"parent":"c"},"r":{}},"skins":{}})");
    const std::string text = R"({"objects":{"x":{}}})";

    /* Beside, or under, an object at the root */
    selectObjects(editor, {"r"});
    paste(editor, text);
    EXPECT_EQ(parentOf("K1"), nullptr);
    EXPECT_EQ(selected(), (std::vector<std::string>{"K1"}));
    selectObjects(editor, {"r"});
    pasteChild(editor, text);
    EXPECT_STREQ(parentOf("K2"), "r");
    selectObjects(editor, {"r"});
    duplicate(editor);
    EXPECT_EQ(parentOf("K3"), nullptr);

    /* Beside the selected object with the lowest index, l, not each beside
       its own */
    selectObjects(editor, {"c", "l"});
    duplicate(editor);
    EXPECT_STREQ(parentOf("K4"), "s");
    EXPECT_STREQ(parentOf("K5"), "s");
    EXPECT_EQ(sorted(selected()), "K4 K5 ");

    /* A tree keeps its inner links and goes beside its root */
    selectObjects(editor, {"c"});
    const std::size_t changes = editor.changeManager->changeCount();
    StringArray keys = duplicateTrees(editor);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_STREQ(keys.get(0), "K6");
    EXPECT_STREQ(keys.get(1), "K7");
    EXPECT_STREQ(parentOf("K6"), "h");
    EXPECT_STREQ(parentOf("K7"), "K6");
    EXPECT_EQ(sorted(selected()), "K6 K7 ");
    /* One undo takes the whole duplicate back */
    editor.changeManager->undoLast();
    EXPECT_EQ(editor.changeManager->lastChangeIndex(), int(changes) - 1);
}

TEST_F(PasteTest, CopyThenPasteRoundTrips) {
    ASSERT_TRUE(editor.loadFromFile((sourceDir() + "/examples/scene.json").data()));
    selectObjects(editor, {"hero", "camera"});
    const std::string before = document();
    StringArray copied = selectedObjectKeysWithTrees(editor);
    StringArray keys = duplicateTrees(editor);
    ASSERT_EQ(keys.size(), copied.size());

    /* The copies, with their references turned back into the originals'
       keys, are the originals */
    const auto original = [&](const char* key) -> std::string {
        for(std::size_t i = 0; i != keys.size(); ++i) if(std::string{keys.get(i)} == key) return copied.get(i);
        return key;
    };
    const rapidjson::Value& objects = *editor.data.project.getValue("/objects", false);
    const rapidjson::Value& skins = *editor.data.project.getValue("/skins", false);
    std::string newSkin;
    for(std::size_t i = 0; i != keys.size(); ++i) {
        SCOPED_TRACE(copied.get(i));
        rapidjson::Document copy;
        copy.CopyFrom(*findMember(objects, keys.get(i)), copy.GetAllocator());
        rapidjson::Value& parent = *findMember(copy, "parent");
        /* The copies of the two selected roots of trees go beside hero, which
           is the one with the lower index */
        if(original(parent.GetString()) == parent.GetString()) {
            EXPECT_STREQ(parent.GetString(), "stage");
            /* A member the paste had to create comes last */
            if(!findMember(*findMember(objects, copied.get(i)), "parent")) copy.EraseMember(copy.MemberEnd() - 1);
        } else parent.SetString(original(parent.GetString()).data(), copy.GetAllocator());
        if(rapidjson::Value* skin = findMember(copy, "skin")) {
            newSkin = skin->GetString();
            skin->SetString("heroSkin");
            findMember(*findMember((*findMember(copy, "components"))[0], "mesh"), "skin")->SetString("heroSkin");
        }
        EXPECT_TRUE(copy == *findMember(objects, copied.get(i))) << writeJson(copy);
    }
    ASSERT_NE(newSkin, "");
    rapidjson::Document skin;
    skin.CopyFrom(*findMember(skins, newSkin.data()), skin.GetAllocator());
    for(rapidjson::Value& joint: findMember(skin, "joints")->GetArray())
        joint.SetString(original(joint.GetString()).data(), skin.GetAllocator());
    EXPECT_TRUE(skin == *findMember(skins, "heroSkin")) << writeJson(skin);

    expectOneUndoableGroup(before, 0);
}

/* Rebuilding the scene after every record would make a big duplicate
   quadratic; once per commit or undo step keeps it linear */
TEST_F(PasteTest, OneRebuildPerStep) {
    constexpr int Pairs = 10000;
    std::string json = R"({"skins":{},"objects":{)";
    StringArray roots{Pairs};
    for(int i = 0; i != Pairs; ++i) {
        const std::string root = "r" + std::to_string(i);
        roots.add(root.data(), -1);
        json += (i ? ",\"" : "\"") + root + R"(":{"name":"Root","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},)"
            R"("c)" + std::to_string(i) + R"(":{"name":"Child","parent":")" + root + R"(","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]})";
    }
    json += "}}";
    ASSERT_TRUE(editor.loadFromString({json.data(), json.size()}));
    selectObjects(editor, roots);
    ASSERT_EQ(editor.scene->sceneGraph->header().objectCount, 2*Pairs + 1);

    const std::size_t rebuilds = editor.rebuildCount();
    duplicate(editor);
    EXPECT_EQ(editor.rebuildCount(), rebuilds + 1);
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 3*Pairs + 1);
    EXPECT_EQ(selected().size(), std::size_t(Pairs));

    editor.changeManager->undoLast();
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 2*Pairs + 1);
    EXPECT_EQ(editor.rebuildCount(), rebuilds + 2);

    editor.changeManager->redoLastUndo();
    EXPECT_EQ(editor.scene->sceneGraph->header().objectCount, 3*Pairs + 1);
    EXPECT_EQ(editor.rebuildCount(), rebuilds + 3);
}

TEST_F(PasteDeathTest, NoChangeManager) {
    load(R"({"objects":{},"skins":{}})");
    editor.changeManager = nullptr;
    /* Text is checked before the manager is reached */
    EXPECT_EQ(addText("[]", nullptr).error, "Pasted JSON is not a JSON object\n");
    EXPECT_DEATH(addFromString(editor, nullptr, "{}"), testing::Eq("Containers::Pointer: the pointer is null\n"));
}
