#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectFile.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "TestSupport.h"

using namespace QuelmarEngine;

namespace {

/* "objects" with @p count records, keyed @p prefix and their number, named by the number */
std::string manyObjects(const char* prefix, const int count) {
    std::string json = "{\"objects\":{";
    for(int i = 0; i != count; ++i)
        json += (i ? ",\"" : "\"") + std::string{prefix} + std::to_string(i) + "\":{\"name\":\"" + std::to_string(i) + "\"}";
    return json + "}}";
}

TEST(ProjectFileTest, LoadRefusalsKeepTheDocument) {
    std::string tooMany = "{\"objects\":{\"0\":{}";
    for(int i = 1; i != 65535; ++i) tooMany += ",\"" + std::to_string(i) + "\":{}";
    const struct { const char* name; std::string json; const char* message; } data[]{
        {"not JSON", "{\"objects\":", "Can't load the project: invalid JSON at line 1, column 12: Invalid value.\n"},
        {"root array", "[]", "Can't load the project: the root is not a JSON object\n"},
        {"objects not an object", R"({"objects":[]})", "Can't load the project: \"objects\" is not a JSON object\n"},
        {"slash in a key", R"({"objects":{"a/b":{}}})", "Can't load the project: the key \"a/b\" in \"objects\" contains \"/\"\n"},
        {"quote in a key", R"({"objects":{"a\"":{}}})", "Can't load the project: the key \"a\\\"\" in \"objects\" contains a double quote\n"},
        {"control character", R"({"objects":{"a\n":{}}})", "Can't load the project: the key \"a\\n\" in \"objects\" contains a control character\n"},
        {"top-level name", R"({"x\\y":{}})", "Can't load the project: the member name \"x\\\\y\" contains a backslash\n"},
        {"duplicate key", R"({"objects":{"a":{},"a":{}}})", "Can't load the project: the key \"a\" is in \"objects\" twice\n"},
        {"too deep", "{\"a\":" + std::string(300, '[') + std::string(300, ']') + "}", "Can't load the project: invalid JSON at line 1, column 261: nested deeper than 256 levels\n"},
        {"too many objects", tooMany + "}}", "Can't load the project: \"objects\" holds 65535 records, more than the 65534 that a project can have\n"},
    };

    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a":{"name":"A"}}})"));
    const std::string before = writeJson(*project.document);
    std::ostringstream out;
    Utility::Error redirect{&out};
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        out.str("");
        EXPECT_FALSE(project.loadFromString({row.json.data(), row.json.size()}));
        EXPECT_EQ(out.str(), row.message);
        EXPECT_EQ(writeJson(*project.document), before);
    }

    /* Deep keys inside records may hold anything */
    EXPECT_TRUE(project.loadFromString(R"({"objects":{"a":{"x/y~":{"\"":1}}}})"));
}

TEST(ProjectFileTest, Accessors) {
    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a":{"name":"A","n":3,"deleted":true,"components":[{"type":"mesh"},{}]}}})"));
    const ValueAccess a{project["objects"]->subValue("a")};
    /* A string, a number read as a string, flags, sizes, an element past the end, a missing member read as null */
    EXPECT_EQ(std::make_tuple(std::string{a["name"].asString()}, a["n"].asString(), a["deleted"].asBool(), a["missing"].asBool()),
        std::make_tuple(std::string{"A"}, nullptr, true, false));
    EXPECT_EQ(std::make_tuple(a["components"].size(), a["missing"].size(), a["components"]->operator[](2).exists(), a["missing"].readValue().IsNull()),
        std::make_tuple(2, 0, false, true));
    /* Paths escape what a name holds */
    EXPECT_EQ(std::string(a["components"]->operator[](1).path().data()), "/objects/a/components/1");
    EXPECT_EQ(std::string(project.subValue("x/y~").path().data()), "/x~1y~0");

    /* Writes create what is missing and never touch anything else */
    a["parent"].setString("p", false);
    a["components"]->operator[](0)["type"].setString(Containers::String{"light"}, false);
    project["objects"]->subValue("b")->subValue("parent").setNull(false);
    EXPECT_EQ(writeJson(*project.document), R"({"objects":{"a":{"name":"A","n":3,"deleted":true,"components":[{"type":"light"},{}],"parent":"p"},"b":{"parent":null}}})");

    EXPECT_EQ(std::make_tuple(project.getValue("/objects/a/n", false)->GetInt(), project.getValue("not a pointer", false)), std::make_tuple(3, nullptr));
    EXPECT_EQ(std::make_tuple(bool(project.resourceByName(Containers::String{"objects"}, Containers::String{"A"})),
        bool(project.resourceByName(Containers::String{"skins"}, Containers::String{"A"}))), std::make_tuple(true, false));
}

/* A host may replace the document or rename a member in place; lookups in
   an indexed map stay right and never read freed memory */
TEST(ProjectFileTest, DirectEditsOfTheDocument) {
    ProjectFile project;
    auto name = [&](const char* path) -> std::string { const rapidjson::Value* const value = project.getValue(path, false); return value ? value->GetString() : "(none)"; };
    ASSERT_TRUE(project.loadFromString(manyObjects("k", 200).data()));
    EXPECT_EQ(name("/objects/k150/name"), "150");

    /* A new document in place of the old one, which is gone */
    auto replacement = Containers::pointer<rapidjson::Document>();
    replacement->Parse(manyObjects("j", 200).data());
    project.document = std::move(replacement);
    EXPECT_EQ(name("/objects/k150/name") + " " + name("/objects/j150/name"), "(none) 150");

    /* A member renamed in place takes the documented call; members taken
       out and added behind the index's back are MemberIndexTest's */
    rapidjson::Value& objects = (*project.document)["objects"];
    objects.MemberBegin()->name.SetString("renamed", project.allocator());
    project.documentChanged();
    EXPECT_EQ(name("/objects/renamed/name") + " " + name("/objects/j0/name"), "0 (none)");
}

/* The name index follows whatever the change manager and the accessors do,
   and a direct edit can't make it answer a record without the name */
TEST(ProjectFileTest, ResourceByNameFollowsEveryChange) {
    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a":{"name":"A"},"b":{"name":"B"}},"skins":{}})"));
    ChangeManager changes{project};
    const auto scan = [&](const char* name) {
        const rapidjson::Value* const objects = project.getValue("/objects", false);
        if(!objects || !objects->IsObject()) return false;
        for(auto record = objects->MemberBegin(); record != objects->MemberEnd(); ++record) {
            const rapidjson::Value* const value = record->value.IsObject() ? findMember(record->value, "name") : nullptr;
            if(value && value->IsString() && std::string{value->GetString()} == name) return true;
        }
        return false;
    };
    auto parse = [](const char* json) { rapidjson::Document document; document.Parse(json); return document; };

    std::mt19937 random{3};
    const char* const names[]{"A", "B", "C"};
    const char* const keys[]{"a", "b", "c"};
    for(int step = 0; step != 3000; ++step) {
        const std::string key = keys[random() % 3], name = names[random() % 3];
        switch(random() % 9) {
            case 0: changes.pushChange(("/objects/" + key + "/name").data(), name.data(), false); break;
            case 1: changes.pushChange(("/objects/" + key).data(), parse(("{\"name\":\"" + name + "\"}").data()), false); break;
            case 2: changes.pushRemoval(("/objects/" + key + (random() % 2 ? "/name" : "")).data()); break;
            case 3: changes.pushChange(("/objects/" + key + "/name/x").data(), "through", false); break;
            case 4: if(random() % 10 == 0) changes.pushChange("/objects", parse(R"({"c":{"name":"C"}})"), false); break;
            case 5: project["objects"]->subValue(key.data())->subValue("name").setString(name.data(), false); break;
            case 6: changes.undoLast(); break;
            case 7: changes.redoLastUndo(); break;
            case 8: if(random() % 20 == 0) {
                /* A direct edit that takes a name away is found out */
                if(rapidjson::Value* const value = project.getValue(("/objects/" + key + "/name").data(), false))
                    value->SetString("direct", project.allocator());
            } break;
        }
        for(const char* const candidate: names)
            ASSERT_EQ(project.resourceByName(Containers::String{"objects"}, Containers::String{candidate}) != nullptr, scan(candidate)) << "step " << step << " " << candidate;
    }

    /* A name given directly needs the documented call */
    project.getValue("/objects", false)->AddMember("d", rapidjson::Value{parse(R"({"name":"D"})"), project.allocator()}, project.allocator());
    project.documentChanged();
    EXPECT_TRUE(project.resourceByName(Containers::String{"objects"}, Containers::String{"D"}));
}

TEST(ProjectFileTest, EditorWithStaticStorage) {
    /* Destroyed after main() returns; nothing that its project file touches
       then may be gone already */
    static QuelmarEditor editor;
    ASSERT_TRUE(editor.loadFromString(manyObjects("k", 100).data()));
    deleteResource(editor, "objects", "k50");
    editor.changeManager->undoLast();
    EXPECT_TRUE(editor.data.project.getValue("/objects/k50", false));
}

TEST(ProjectFileTest, GenerateId) {
    ProjectFile project;
    std::vector<std::string> keys(40);
    for(std::string& key: keys) key = project.generateId().data();
    /* Distinct, sorting by creation, usable unescaped */
    for(std::size_t i = 1; i != keys.size(); ++i) EXPECT_LT(keys[i - 1], keys[i]);
    for(const std::string& key: keys)
        EXPECT_EQ(key.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz"), std::string::npos) << key;

    /* A key that a map holds is skipped */
    const std::string next = keys.back().substr(0, keys.back().size() - 4) + "0015";
    ASSERT_LT(keys.back(), next);
    ASSERT_TRUE(project.loadFromString(("{\"skins\":{\"" + keys.back().substr(0, keys.back().size() - 4) + "0014\":{}}}").data()));
    const Containers::String key = project.generateId();
    EXPECT_EQ(std::string(key.data(), key.size()), next);
}

/* What the writing and reading of files leaves unsaid: the layout of a
   project that came from no file, and the file name in front of a refusal */
TEST(ProjectFileTest, SaveAndLoad) {
    QuelmarTest::TemporaryFolder folder;
    const std::string path = folder/"project.json", blocked = folder/"blocked";
    ProjectFile project;
    ASSERT_TRUE(project.loadFromString(R"({"objects":{"a":{"name":"Ä","transformation":[1,0.1,2.5e-8,1e300]}},"skins":{}})"));
    ASSERT_TRUE(project.saveToFile({path.data(), path.size()}));
    EXPECT_EQ(QuelmarTest::readText(path), "{\n  \"objects\": {\n    \"a\": {\n      \"name\": \"Ä\",\n"
        "      \"transformation\": [1, 0.1, 2.5e-08, 1e+300]\n    }\n  },\n  \"skins\": {}\n}\n");
    ProjectFile loaded;
    ASSERT_TRUE(loaded.loadFromFile({path.data(), path.size()}));
    EXPECT_TRUE(*loaded.document == *project.document);

    /* A directory where the file should go: the rename fails */
    mkdir(blocked.data(), 0755);
    mkdir((blocked + "/x").data(), 0755);
    std::ostringstream out;
    {
        Utility::Error redirect{&out};
        EXPECT_FALSE(loaded.loadFromFile({folder.path.data(), folder.path.size()}));
        EXPECT_FALSE(project.saveToFile({blocked.data(), blocked.size()}));
    }
    EXPECT_EQ(out.str(), "Can't load " + folder.path + ": it is a directory\nCan't save " + blocked + ": Is a directory\n");
}

}
