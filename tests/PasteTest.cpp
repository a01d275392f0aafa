/* Pasting clipboard text and the paste and duplicate commands, hostile text and the cost of a big duplicate included */

#include <functional>
#include <random>
#include <sstream>
#include <tuple>
#include <gtest/gtest.h>
#include <Corrade/Utility/Format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;

namespace {

const std::string SceneFile = std::string{__FILE__}.substr(0, std::string{__FILE__}.rfind('/')) + "/../examples/scene.json";

struct PasteTest: testing::Test {
    /* Opens @p json, or the file it names, with keys K1, K2... */
    void load(const std::string& json, const bool isFile = false) {
        ASSERT_TRUE(isFile ? editor.loadFromFile(json.data()) : editor.loadFromString({json.data(), json.size()}));
        changesAtId.clear();
        editor.data.project.setIdGenerator([this]{
            changesAtId.push_back(editor.changeManager->changeCount());
            return Containers::String{("K" + std::to_string(changesAtId.size())).data()};
        });
    }
    std::string document() const { return editor.data.project.toJson().data(); }

    /* Pastes and keeps the error and warning output and the returned keys */
    void addText(const std::string& text, const char* parent) {
        error.str("");
        warning.str("");
        keys = join(addFromString(editor, parent, text));
    }

    /* A paste that went through: records that one undo takes back exactly, giving @p before, and redo brings back */
    void expectOneUndoableGroup(const std::string& before, std::size_t changesBefore) {
        const ChangeManager& changes = *editor.changeManager;
        EXPECT_FALSE(changes.isGroupOpen());
        ASSERT_GT(changes.changeCount(), changesBefore);
        const std::string pasted = document();
        editor.changeManager->undoLast();
        EXPECT_EQ(std::make_tuple(document(), changes.lastChangeIndex()), std::make_tuple(before, int(changesBefore) - 1));
        editor.changeManager->redoLastUndo();
        EXPECT_EQ(document(), pasted);
    }

    std::ostringstream error, warning;
    Utility::Error redirectError{&error};
    Utility::Warning redirectWarning{&warning};
    QuelmarEditor editor;
    std::string keys;
    /* The record count when each key was asked for */
    std::vector<std::size_t> changesAtId;
};

}

TEST_F(PasteTest, TextPastesAsOneStepOrNotAtAll) {
    /* Root, map and record take three of the 256 levels, one more is refused */
    const std::string deepest = std::string(253, '[') + std::string(253, ']'), tooDeep = "[" + deepest + "]";
    const char* const Refused = "Pasted JSON is not a JSON object\n";
    const char* const BrokenJoint = "Broken joint reference {} found while pasting, make sure to copy all joints.\n";
    const char* const MissingSkin = "Skin s referenced by object {} was not part of pasted content.\n";
    /* Text, parent, the objects and skins after, the returned keys, the error and warning output with {} standing for a key */
    const struct { std::string text; const char* parent; std::string objects; const char* skins; const char* keys; std::string output; } data[]{
        {"{\"objects\":{\n\"obj1\": {\"name\":\"One\",\"parent\":\"obj0\",\"skin\":\"skin1\"},\n"
            "\"obj2\": {\"name\":\"Two\",\"parent\":\"obj1\",\"components\":[{\"type\":\"mesh\",\"mesh\":{\"skin\":\"skin1\"}}]},\n"
            "\"obj3\": {\"name\":\"Three\",\"parent\":\"obj2\",\"skin\":\"skin2\"}\n}\n,\"skins\":{\n\"skin1\": {\"joints\":[\"obj1\",\"obj9\"]}\n}\n}", "t",
            R"("K1":{"name":"One","parent":"t","skin":"K4"},"K2":{"name":"Two","parent":"K1","components":[{"type":"mesh","mesh":{"skin":"K4"}}]},)"
            R"("K3":{"name":"Three","parent":"K2","skin":"skin2"})", R"("K4":{"joints":["K1","obj9"]})", "K1 K2 K3",
            Utility::format(BrokenJoint, "obj9").data() + std::string{"Skin skin2 referenced by object K3 was not part of pasted content.\n"}},
        {R"({"objects":{"b":{"parent":"a"},"a":{}}})", "t", R"("K1":{"parent":"t"},"K2":{"parent":"t"})", "", "K1 K2", ""},
        {R"({"objects":{"a":{"parent":"gone"},"b":{"parent":"a"}}})", nullptr, R"("K1":{"parent":null},"K2":{"parent":"K1"})", "", "K1 K2", ""},
        {R"({"objects":{"a/b~0\"c":{},"d":{"parent":"a/b~0\"c"}}})", "t", R"("K1":{"parent":"t"},"K2":{"parent":"K1"})", "", "K1 K2", ""},
        {R"({"objects":{"a\u0000b":{},"a":{},"c":{"parent":"a\u0000b"},"d":{"parent":"a"}}})", "t",
            R"("K1":{"parent":"t"},"K2":{"parent":"t"},"K3":{"parent":"K1"},"K4":{"parent":"K2"})", "", "K1 K2 K3 K4", ""},
        {R"({"objects":{"a":{"n":1},"a":{"n":2},"b":{"parent":"a"}}})", "t", R"("K1":{"n":2,"parent":"t"},"K2":{"parent":"K1"})", "", "K1 K2", ""},
        {R"({"objects":{"a":5,"b":[{}],"c":{"parent":"a"}}})", "t", R"("K1":{"parent":"t"})", "", "K1", ""},
        {R"({"objects":[{"a":{}}],"skins":{"s":{"joints":["a"]}}})", "t", "", R"("K1":{"joints":["a"]})", "", Utility::format(BrokenJoint, "a").data()},
        /* Without skins the references stay silently, with empty ones each is warned about */
        {R"({"objects":{"a":{"skin":"s"}}})", "t", R"("K1":{"skin":"s","parent":"t"})", "", "K1", ""},
        {R"({"objects":{"a":{"skin":"s"},"b":{"skin":"s"}},"skins":{}})", "t", R"("K1":{"skin":"s","parent":"t"},"K2":{"skin":"s","parent":"t"})", "", "K1 K2",
            Utility::format(MissingSkin, "K1").data() + std::string{Utility::format(MissingSkin, "K2").data()}},
        {R"({"objects":{"a":{},"b":{}},"skins":{"s":{"joints":["a",7,"zz","b",null]}}})", "t", R"("K1":{"parent":"t"},"K2":{"parent":"t"})",
            R"("K3":{"joints":["K1",7,"zz","K2",null]})", "K1 K2", Utility::format(BrokenJoint, "zz").data()},
        /* Only the skins of mesh components */
        {R"({"objects":{"o":{"components":[{"type":"light","mesh":{"skin":"s"}},{"mesh":{"skin":"s"}},{"type":"mesh","mesh":{"skin":"s"}},{"type":"mesh"},5]}},"skins":{"s":{}}})", "t",
            R"("K1":{"components":[{"type":"light","mesh":{"skin":"s"}},{"mesh":{"skin":"s"}},{"type":"mesh","mesh":{"skin":"K2"}},{"type":"mesh"},5],"parent":"t"})", R"("K2":{})", "K1", ""},
        /* Text after a NUL is not read */
        {std::string{"{\"objects\":{\"a\":{}}}\0junk", 25}, "t", R"("K1":{"parent":"t"})", "", "K1", ""},
        {"{\"objects\":{\"\xff\":{\"name\":\"\xc3\x28\"}}}", "t", "\"K1\":{\"name\":\"\xc3\x28\",\"parent\":\"t\"}", "", "K1", ""},
        {R"({"objects":{"a":{"x":)" + deepest + "}}}", "t", R"("K1":{"x":)" + deepest + R"(,"parent":"t"})", "", "K1", ""},
        /* What the reader refuses is its own tests' business; these show that the paste uses it, and the root check */
        {R"({"objects":{"a":{"x":)" + tooDeep + "}}}", "t", "", "", "", Refused},
        {"", "t", "", "", "", Refused},
        {R"([{"objects":{}}])", "t", "", "", "", Refused},
        {R"({"objects":{"a":{})", "t", "", "", "", Refused},
        {R"({"objects":{"a":{"x":1e400}}})", "t", "", "", "", Refused},
        {std::string{"\0{\"objects\":{}}", 15}, "t", "", "", "", Refused},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.text);
        load(R"({"objects":{"t":{}},"skins":{}})");
        const std::string before = document();
        addText(row.text, row.parent);
        EXPECT_EQ(error.str() + warning.str(), row.output);
        EXPECT_EQ(keys, row.keys);
        EXPECT_EQ(document(), R"({"objects":{"t":{})" + (row.objects.empty() ? "" : "," + row.objects) + R"(},"skins":{)" + row.skins + "}}");
        /* Each key asked for after the previous record was pushed, so that it is checked against that one too */
        for(std::size_t i = 1; i < changesAtId.size(); ++i) EXPECT_GT(changesAtId[i], changesAtId[i - 1]);
        if(document() != before) expectOneUndoableGroup(before, 0);
        else EXPECT_EQ(editor.changeManager->changeCount() + editor.changeManager->isGroupOpen(), 0u);
    }
}

/* Random damage to a real clipboard text: each paste goes through as one group that undo takes back exactly, or is refused leaving everything as it was */
TEST_F(PasteTest, MutatedClipboardText) {
    load(SceneFile, true);
    selectObjects(editor, {"hero", "lamp"});
    const std::string original = copySelectedTrees(editor);
    const std::string before = document();
    std::mt19937 random{20240611};
    const std::string interesting = "{}[]\":,\\/~0a-e\x01\xff";
    std::size_t refused = 0, pasted = 0;
    for(int iteration = 0; iteration != 1000 && !HasFailure(); ++iteration) {
        std::string text = original;
        for(int m = 0, count = 1 + int(random() % 4); m != count && !text.empty(); ++m) {
            const std::size_t at = random() % text.size(), length = std::min<std::size_t>(1 + random() % 8, text.size() - at);
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
        addText(text, "stage");
        if(!error.str().empty()) {
            ++refused;
            EXPECT_EQ(std::make_tuple(error.str(), editor.changeManager->lastChangeIndex(), editor.changeManager->changeCount()),
                std::make_tuple("Pasted JSON is not a JSON object\n", last, changes));
        } else if(editor.changeManager->lastChangeIndex() != last) {
            ++pasted;
            expectOneUndoableGroup(before, std::size_t(last + 1));
            editor.changeManager->undoLast();
        }
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        ASSERT_EQ(document(), before);
    }
    EXPECT_GT(refused, 50u);
    EXPECT_GT(pasted, 50u);
}

TEST_F(PasteTest, WhereCopiesGo) {
    typedef std::function<void(QuelmarEditor&, const std::string&)> Command;
    const Command Paste = paste, PasteChild = pasteChild, Duplicate = [](QuelmarEditor& e, const std::string&) { duplicate(e); },
        DuplicateTrees = [](QuelmarEditor& e, const std::string&) { duplicateTrees(e); };
    /* The selection after, each key with its parent; K1 and K2 are taken, in different maps */
    const struct { const char* name; std::initializer_list<const char*> selected; Command command; const char* placed; } rows[]{
        {"nothing selected: paste at the root", {}, Paste, "K3<-"},
        {"nothing selected: paste a child at the root", {}, PasteChild, "K3<-"},
        {"nothing selected: no duplicate", {}, Duplicate, ""},
        {"nothing selected: no duplicate of trees", {}, DuplicateTrees, ""},
        {"paste beside a nested object", {"c"}, Paste, "K3<h"},
        {"paste under an object", {"K1"}, PasteChild, "K3<K1"},
        {"duplicate beside an object at the root", {"K1"}, Duplicate, "K3<-"},
        {"duplicate beside the lowest index, l, not each beside its own", {"c", "l"}, Duplicate, "K3<s K4<s"},
        {"duplicate a tree beside its root, inner links kept", {"c"}, DuplicateTrees, "K3<h K4<K3"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(R"({"objects":{"s":{},"l":{"parent":"s"},"h":{"parent":"s"},"c":{"parent":"h"},"g":{"parent":"c"},"K1":{}},"skins":{"K2":{"joints":[]}}})");
        selectObjects(editor, row.selected);
        const std::string before = document();
        row.command(editor, R"({"objects":{"x":{"parent":"s"}}})");
        std::string placed;
        StringArray selected = selectedObjectKeys(editor);
        for(std::size_t i = 0; i != selected.size(); ++i) {
            const char* const parent = editor.data.project["objects"]->subValue(selected.get(i))->subValue("parent").asString();
            placed += (i ? " " : "") + std::string{selected.get(i)} + "<" + (parent ? parent : "-");
        }
        EXPECT_EQ(placed, row.placed);
        if(row.placed[0]) expectOneUndoableGroup(before, 0);
        else EXPECT_EQ(editor.changeManager->changeCount(), 0u);
    }
}

/* Keys that need escaping and the empty key copy and paste back like any other; a "parent" of "" means the root, even
   with an object of that key among the pasted ones */
TEST_F(PasteTest, OddKeysCopyAndPasteBack) {
    load(R"({"objects":{"":{"name":"E"},"c":{"parent":"","skin":"s\"\\\n"}},"skins":{}})");
    for(const auto& record: {std::make_pair("/objects/q\"\\\x01", R"({"parent":"c"})"), std::make_pair("/skins/s\"\\\n", R"({"joints":["","q\"\\\u0001"]})")}) {
        rapidjson::Document value;
        value.Parse(record.second);
        editor.changeManager->pushChange(record.first, value, false);
    }
    selectObjects(editor, {"", "c"});
    const std::size_t changes = editor.changeManager->changeCount();
    const std::string before = document();
    EXPECT_EQ(join(duplicateTrees(editor)), "K1 K2 K3");
    EXPECT_EQ(error.str() + warning.str(), "");
    EXPECT_EQ(document(), R"({"objects":{"":{"name":"E"},"c":{"parent":"","skin":"s\"\\\n"},"q\"\\\u0001":{"parent":"c"},)"
        R"("K1":{"name":"E","parent":null},"K2":{"parent":null,"skin":"K4"},"K3":{"parent":"K2"}},)"
        R"("skins":{"s\"\\\n":{"joints":["","q\"\\\u0001"]},"K4":{"joints":["K1","K3"]}}})");
    expectOneUndoableGroup(before, changes);
}

/* Rebuilding the scene after every record would make a big duplicate quadratic; once per commit or undo step keeps it linear */
TEST_F(PasteTest, OneRebuildPerStep) {
    constexpr int Pairs = 10000;
    std::string json = R"({"skins":{},"objects":{)";
    StringArray roots{Pairs};
    for(int i = 0; i != Pairs; ++i) {
        const std::string n = std::to_string(i);
        roots.add(("r" + n).data());
        json += std::string{i ? "," : ""} + R"("r)" + n + R"(":{"name":"Root","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},"c)" + n + R"(":{"parent":"r)" + n + R"("})";
    }
    load(json + "}}");
    selectObjects(editor, roots);
    ASSERT_EQ(editor.scene->sceneGraph->header().objectCount, 2*Pairs + 1);
    const std::size_t rebuilds = editor.rebuildCount();
    /* Objects in the scene, the header bringing it up to date, and rebuilds since the load */
    const auto state = [&] { const int objects = editor.scene->sceneGraph->header().objectCount; return std::make_pair(objects, editor.rebuildCount() - rebuilds); };
    duplicate(editor);
    EXPECT_EQ(state(), std::make_pair(3*Pairs + 1, std::size_t{1}));
    EXPECT_EQ(selectedObjectKeys(editor).size(), std::size_t(Pairs));
    editor.changeManager->undoLast();
    EXPECT_EQ(state(), std::make_pair(2*Pairs + 1, std::size_t{2}));
    editor.changeManager->redoLastUndo();
    EXPECT_EQ(state(), std::make_pair(3*Pairs + 1, std::size_t{3}));
}

TEST(PasteDeathTest, OnlyTakenKeys) {
    QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString(R"({"objects":{"K1":{"name":"A"}}})"));
    editor.data.project.setIdGenerator([]{ return Containers::String{"K1"}; });
    EXPECT_DEATH(addFromString(editor, nullptr, R"({"objects":{"x":{}}})"),
        testing::Eq(std::string{"ProjectFile::generateId(): the key generator gave 1000 keys in a row that records already have\n"}));
}

/* A duplicate pastes what copying the selection would give without writing
   and reading the text; it has to end exactly where pasting that text does:
   document, history records, selection, messages, undo and redo. Records
   that the text would change (a number JSON can't hold, nesting the reader
   refuses) go through the text. */
TEST(DuplicateTest, SameAsPastingTheCopy) {
    /* Non-finite numbers written as they are, which the project's writer can't show */
    const auto write = [](const rapidjson::Value& value) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, rapidjson::CrtAllocator, rapidjson::kWriteNanAndInfFlag> writer{buffer};
        value.Accept(writer);
        return std::string{buffer.GetString(), buffer.GetSize()};
    };
    std::string deep = "1";
    for(int i = 0; i != 300; ++i) deep = "[" + deep + "]";
    const struct { const char* name; const char* project; std::vector<std::pair<const char*, std::string>> pushes;
        std::initializer_list<const char*> selected; bool trees; } rows[]{
        {"parents inside and outside, a cycle, odd parents",
            R"({"objects":{"p":{"name":"P"},"c":{"parent":"p","name":"C","parent":"x"},"d":{"parent":5},"a":{"parent":"b"},"b":{"parent":"a"},"e":{"parent":""}}})",
            {}, {"p", "c", "d", "a", "b", "e"}, false},
        {"skins: joints inside and outside, a missing skin, a mesh, a skin that isn't a record",
            R"({"objects":{"r":{"skin":"s"},"j":{"parent":"r","skin":"s","components":[{"type":"mesh","mesh":{"skin":"s"}},{"type":"mesh","mesh":{"skin":"t"}}]},"k":{"skin":"gone"},"l":{"skin":"t"},"o":{}},"skins":{"s":{"joints":["j","o",3]},"t":5}})",
            {}, {"r", "k", "l"}, true},
        {"numbers and duplicate members",
            R"({"objects":{"n":{"v":[-0.0,1.0,1e300,18446744073709551615,-9223372036854775808,0.1,5e-324],"name":"A","name":"B"}}})",
            {}, {"n"}, false},
        {"a number JSON can't hold", R"({"objects":{"n":{"v":1}}})", {{"/objects/n/v", "[Infinity,-Infinity,NaN]"}}, {"n"}, false},
        {"nesting the reader refuses", R"({"objects":{"n":{},"m":{}}})", {{"/objects/n/v", deep}}, {"n", "m"}, false},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        std::string outcome[2];
        for(const bool direct: {false, true}) {
            QuelmarEditor editor;
            ASSERT_TRUE(editor.loadFromString(row.project));
            int counter = 0;
            editor.data.project.setIdGenerator([&]{ return Containers::String{("K" + std::to_string(++counter)).data()}; });
            for(const auto& push: row.pushes) {
                rapidjson::Document value;
                value.Parse<rapidjson::kParseNanAndInfFlag>(push.second.data());
                editor.changeManager->pushChange(push.first, value, false);
            }
            selectObjects(editor, row.selected);

            std::ostringstream out;
            const std::size_t first = editor.changeManager->changeCount();
            {
                Utility::Error redirectError{&out};
                Utility::Warning redirectWarning{&out};
                if(direct && row.trees) duplicateTrees(editor);
                else if(direct) duplicate(editor);
                else paste(editor, row.trees ? copySelectedTrees(editor) : copySelected(editor));
            }
            out << "\n" << join(selectedObjectKeys(editor)) << "\n" << write(*editor.data.project.document) << "\n";
            {
                Utility::Debug redirect{&out};
                for(std::size_t i = first; i != editor.changeManager->changeCount(); ++i) {
                    Utility::Debug line;
                    line << editor.changeManager->change(i) << editor.changeManager->change(i).group;
                }
            }
            editor.changeManager->undoLast();
            out << write(*editor.data.project.document) << "\n";
            editor.changeManager->redoLastUndo();
            out << write(*editor.data.project.document);
            outcome[direct] = out.str();
        }
        EXPECT_EQ(outcome[1], outcome[0]);
    }
}
