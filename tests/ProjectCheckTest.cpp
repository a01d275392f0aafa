/* The inconsistencies of a project, found in the whole of it and around a change */
#include <gtest/gtest.h>

#include "QuelmarEngine/host/EditSession.h"

using namespace QuelmarEngine;
using Lines = std::vector<std::string>;

TEST(ProjectCheckTest, BrokenProjects) {
    const struct { const char* project; Lines expected; } rows[]{
        {R"({"objects":{"a":{"name":"A","skin":"s","components":[{"type":"mesh","mesh":{"skin":"s"}}]}},"skins":{"s":{"joints":["a"]}}})", {}},
        {R"({"objects":{"a":{"parent":"x","skin":"s","components":[{"type":"light"},{"type":"mesh","mesh":{"skin":"t"}}]}},)"
         R"("skins":{"s":{"joints":["a","y",7]}}})", {
            "/objects/a/parent: there is no object x",
            "/objects/a/components/1/mesh/skin: there is no skin t",
            "/skins/s/joints/1: there is no object y",
            "/skins/s/joints/2: a joint has to be the key of an object"}},
        /* No "skins" at all; a transformation beyond single precision */
        {R"({"objects":{"a":{"skin":"s","transformation":[1e39,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},"b":{"transformation":[1]}}})", {
            "/objects/a/skin: there is no skin s",
            "the \"transformation\" of a has to be an array of 16 numbers, each at most 3.4e38 in size",
            "the \"transformation\" of b has to be an array of 16 numbers, each at most 3.4e38 in size"}},
        /* A cycle, one reached from outside it, and an object its own parent */
        {R"({"objects":{"x":{"parent":"b"},"a":{"parent":"c"},"b":{"parent":"a"},"c":{"parent":"b"},"d":{"parent":"d"}}})", {
            "objects b, a and c are parents of each other", "object d is its own parent"}},
        /* Names shared by live objects only, in tree order */
        {R"({"objects":{"a":{"name":"N"},"b":{"name":"M"},"c":{"name":"N","parent":"b"},"d":{"name":"N","deleted":true},)"
         R"("e":{"name":"M"},"f":{"name":"M"}}})", {
            "objects a and c are both named \"N\"", "objects b, e and f are all named \"M\""}},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.project);
        EditSession session;
        ASSERT_TRUE(session.openText(row.project));
        EXPECT_EQ(session.inconsistencies(), row.expected);
    }
}

/* A change warns of what it makes around what it touched, and of nothing
   that was there before */
TEST(ProjectCheckTest, ChangesWarnOfWhatTheyMake) {
    const char* const project = R"({"objects":{"a":{"name":"A","parent":"gone"},"b":{"name":"B","parent":"a"},"c":{"name":"C","deleted":true}},)"
        R"("skins":{"s":{"joints":["b"]}},"materials":{"m":{}}})";
    const struct { const char* pointer; const char* json; Lines warnings; } rows[]{
        {"/objects/b/skin", "\"t\"", {"/objects/b/skin: there is no skin t"}},
        {"/objects/b/components", R"([{"type":"mesh","mesh":{"skin":"t"}}])", {"/objects/b/components/0/mesh/skin: there is no skin t"}},
        {"/objects/b/parent", "\"x\"", {"/objects/b/parent: there is no object x"}},
        {"/skins/s/joints/0", "\"x\"", {"/skins/s/joints/0: there is no object x"}},
        {"/objects/b/name", "\"A\"", {"objects a and b are both named \"A\""}},
        {"/objects/c/deleted", "false", {"objects a and c are both named \"A\""}},
        /* Already there before */
        {"/objects/a/name", "\"Z\"", {}},
        {"/materials/m/skin", "\"t\"", {}},
        {"/objects/a", nullptr, {"/objects/b/parent: there is no object a"}},
        {"/objects/b", nullptr, {"/skins/s/joints/0: there is no object b"}},
        {"/skins", R"({"s":{"joints":["b","q"]}})", {"/skins/s/joints/1: there is no object q"}},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.pointer);
        EditSession session;
        ASSERT_TRUE(session.openText(project));
        /* c takes a's name once it is back in the scene */
        ASSERT_TRUE(session.set("/objects/c/name", "\"A\""));
        const EditResult result = row.json ? session.set(row.pointer, row.json) : session.remove(row.pointer);
        ASSERT_TRUE(result);
        EXPECT_EQ(result.warnings(), row.warnings);
    }
}
