/* Purging deleted objects and removing records, refused while references to
   them would remain, and undone as one step */
#include <functional>
#include <vector>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/EditSession.h"

using namespace QuelmarEngine;

namespace {

/* a ─ b (deleted) ─ c ─ d; e deleted; f under a. Skin s has joints c and f
   and f has it as its skin and its mesh's; t has e as its joint */
const char* const Project = R"({"objects":{"a":{},"b":{"parent":"a","deleted":true},"c":{"parent":"b"},"d":{"parent":"c"},)"
    R"("e":{"deleted":true},"f":{"parent":"a","skin":"s","components":[{"type":"mesh","mesh":{"skin":"s"}},{"type":"script","mesh":{"skin":"s"}}]}},)"
    R"("skins":{"s":{"joints":["c","f"]},"t":{"joints":["e"]}}})";

std::string keysOf(const rapidjson::Value& map) {
    std::string out;
    for(auto it = map.MemberBegin(); it != map.MemberEnd(); ++it) out += it->name.GetString();
    return out;
}

}

TEST(EditSessionPurgeTest, RemovesRecordsUnlessReferencesWouldRemain) {
    using Purge = std::function<EditResult(EditSession&)>;
    auto purge = [](std::vector<Containers::StringView> keys, DanglingReferences dangling) -> Purge {
        return [keys, dangling](EditSession& s) { return s.purge({keys.data(), keys.size()}, dangling); };
    };
    const struct { const char* name; Purge action; const char* message; const char* objectsLeft; const char* skinsLeft; const char* warning; } rows[]{
        {"all deleted", purge({}, DanglingReferences::Refuse), "references to purged objects would remain: /skins/s/joints/0 (c), /skins/t/joints/0 (e)", "", "", ""},
        {"all deleted, leaving references", purge({}, DanglingReferences::Leave), "", "af", "st",
            "left references to purged objects: /skins/s/joints/0 (c), /skins/t/joints/0 (e)"},
        {"below a deleted object", purge({"d"}, DanglingReferences::Refuse), "", "abcef", "st", ""},
        {"with everything below", purge({"b"}, DanglingReferences::Refuse), "references to purged objects would remain: /skins/s/joints/0 (c)", "", "", ""},
        {"in the scene", purge({"e", "f"}, DanglingReferences::Leave), "object f is in the scene; only deleted objects and what lies below them can be purged", "", "", ""},
        {"no record", purge({"x"}, DanglingReferences::Leave), "there is no object x", "", "", ""},
        /* A component that is no mesh names no skin */
        {"a skin in use", [](EditSession& s) { return s.deleteResource("skins", "s"); },
            "references to /skins/s would remain: /objects/f/skin, /objects/f/components/0/mesh/skin", "", "", ""},
        {"a parent and a joint", [](EditSession& s) { return s.deleteResource("objects", "f", DanglingReferences::Leave); }, "", "abcde", "st",
            "left references to /objects/f: /skins/s/joints/1"},
        {"a skin in use by nothing", [](EditSession& s) { return s.deleteResource("skins", "t"); }, "", "abcdef", "s", ""},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        EditSession session;
        ASSERT_TRUE(session.openText(Project));
        const std::string before = session.editor().data.project.toJson().data();

        const EditResult result = row.action(session);
        const rapidjson::Document& document = *session.editor().data.project.document;
        EXPECT_EQ(result.message(), row.message);
        if(!result) {
            EXPECT_EQ(session.editor().data.project.toJson().data(), before);
            EXPECT_EQ(session.undoCount(), 0u);
            continue;
        }
        EXPECT_EQ(keysOf(document["objects"]), row.objectsLeft);
        EXPECT_EQ(keysOf(document["skins"]), row.skinsLeft);
        EXPECT_EQ(result.warnings(), (*row.warning ? std::vector<std::string>{row.warning} : std::vector<std::string>{}));
        ASSERT_EQ(session.undoCount(), 1u);
        ASSERT_TRUE(session.undo());
        EXPECT_EQ(session.editor().data.project.toJson().data(), before);
    }
}

TEST(EditSessionPurgeTest, PurgedObjectsLeaveTheSceneAndItsCounts) {
    EditSession session;
    ASSERT_TRUE(session.openText(R"({"objects":{"a":{},"b":{"parent":"a"}}})"));
    EXPECT_EQ(session.purge({}).message(), "there are no deleted objects to purge");
    ASSERT_TRUE(session.deleteObject("a"));
    EXPECT_EQ(session.purge({}).keys(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(session.editor().data.project.toJson(), R"({"objects":{}})");
    /* Back in the scene after undoing both steps */
    ASSERT_TRUE(session.undo(2));
    EXPECT_TRUE(session.findObject("b"));
}
