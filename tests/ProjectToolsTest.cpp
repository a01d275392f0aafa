/* The object and resource edits through the host: what each pushes and what the scene shows afterwards */

#include <functional>
#include <sstream>
#include <gmock/gmock.h>
#include <Corrade/Utility/Format.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

/* a ─ b ─ c, a ─ d, e ─ f, g; tree order is map order here */
const char* const Tree = R"({"objects":{"a":{"name":"A"},"b":{"name":"B","parent":"a"},"c":{"name":"C","parent":"b"},"d":{"name":"D","parent":"a"},)"
    R"("e":{"name":"E"},"f":{"name":"F","parent":"e"},"g":{"name":"G"}}})";

struct ProjectToolsTest: testing::Test {
    void load(const std::string& json) {
        ASSERT_TRUE(editor.loadFromString(json.data()));
        generated = 0;
        editor.data.project.setIdGenerator([this]{ return Utility::format("n{}", ++generated); });
    }

    /* Every live object as "key" or "key<parent", in tree order */
    std::string tree() {
        const Data::DynamicSceneGraph<unsigned short>& graph = *editor.scene->sceneGraph;
        std::string out;
        for(std::size_t p = 1; p < graph.header().objectCount; ++p) {
            out += (p == 1 ? "" : " ") + std::string{graph.objectKeys().get(graph.positionToIndex()[p])};
            if(const unsigned short parent = graph.hierarchy()[p].parent) out += "<" + std::string{graph.objectKeys().get(graph.positionToIndex()[parent])};
        }
        return out;
    }

    /* The applied records from @p first on as "path old -> new" */
    std::vector<std::string> records(const int first = 0) {
        std::vector<std::string> out;
        for(int i = first; i <= editor.changeManager->lastChangeIndex(); ++i) {
            const Change& change = editor.changeManager->change(i);
            out.push_back(std::string{change.path.data()} + " " + (change.oldValue ? writeJson(*change.oldValue) : "()") + " -> " + (change.newValue ? writeJson(*change.newValue) : "()"));
        }
        return out;
    }

    /* Cycles in some documents are warned about while the graph is built */
    std::ostringstream warnings, out;
    Utility::Warning redirect{&warnings};
    Utility::Debug redirectOutput{&out};
    QuelmarEditor editor;
    int generated = 0;
};

}

TEST_F(ProjectToolsTest, IsObjectDeletedWalksUpTheParents) {
    /* o0 under o1 under ... under o1499, optionally closed into a ring; a recursive walk would run out of stack */
    const auto chain = [](bool ring, bool flagTop) {
        std::string json = R"({"objects":{)";
        for(int i = 0; i != 1500; ++i)
            json += Utility::format(R"({}"o{}":{{"deleted":{}{}}})", i ? "," : "", i, flagTop && i == 1499 ? "true" : "false",
                i != 1499 || ring ? Utility::format(R"(,"parent":"o{}")", (i + 1) % 1500).data() : "").data();
        return json + "}}";
    };
    const struct { const char* name; std::string json; const char* key; bool expected; } rows[]{
        {"flagged itself", R"({"objects":{"a":{"deleted":true}}})", "a", true},
        {"grandparent flagged, parent not", R"({"objects":{"g":{"deleted":true},"p":{"parent":"g"},"c":{"parent":"p"}}})", "c", true},
        {"child of a flagged object is not an ancestor", R"({"objects":{"p":{},"c":{"parent":"p","deleted":true}}})", "p", false},
        {"dangling parent ends the walk", R"({"objects":{"p":{"parent":"gone"},"gone2":{"deleted":true}}})", "p", false},
        {"key that names no record", R"({"objects":{"a":{"deleted":true}}})", "zz", false},
        {"self-parent", R"({"objects":{"a":{"parent":"a"}}})", "a", false},
        {"cycle without a flag", R"({"objects":{"a":{"parent":"c"},"b":{"parent":"a"},"c":{"parent":"b"}}})", "a", false},
        {"cycle with a flag further round", R"({"objects":{"a":{"parent":"c"},"b":{"parent":"a","deleted":true},"c":{"parent":"b"}}})", "a", true},
        {"chain into a cycle, flag on its far side", R"({"objects":{"x":{"parent":"a"},"a":{"parent":"b"},"b":{"parent":"c"},"c":{"parent":"a","deleted":true}}})", "x", true},
        {"long chain flagged at the top", chain(false, true), "o0", true},
        {"long ring", chain(true, false), "o0", false},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(row.json);
        EXPECT_EQ(isObjectDeleted(editor.data, row.key), row.expected);
    }
}

TEST_F(ProjectToolsTest, WhatEachEditPushes) {
    /* The keys are copied, as an initializer list's items end with the row's expression */
    const auto deleteSelected = [](std::initializer_list<const char*> keys) {
        return [keys = std::vector<const char*>{keys}](QuelmarEditor& e) {
            StringArray selected{keys.size()};
            for(const char* key: keys) selected.add(key);
            selectObjects(e, selected);
            deleteSelectedObjects(e);
            return std::string{};
        };
    };
    const auto deleted = [](const char* key) { return "/objects/" + std::string{key} + "/deleted () -> true"; };
    /* What the edit returns, its records, the undo steps they make, its output, the tree after */
    const struct { const char* name; std::function<std::string(QuelmarEditor&)> edit; const char* key; std::vector<std::string> records; int steps; const char* output; const char* tree; } rows[]{
        /* The commands but deleteSelectedObjects() open no group, so they can join the caller's */
        {"add under a parent: record, name, parent", [](QuelmarEditor& e) { return std::string{addObject(e, "New", "b").data()}; }, "n1",
            {"/objects/n1 () -> {}", "/objects/n1/name () -> \"New\"", "/objects/n1/parent () -> \"b\""}, 3, "", "a b<a c<b n1<b d<a e f<e g"},
        {"add at the root: no parent", [](QuelmarEditor& e) { return std::string{addObject(e, "Top", "").data()}; }, "n1",
            {"/objects/n1 () -> {}", "/objects/n1/name () -> \"Top\""}, 2, "", "a b<a c<b d<a e f<e g n1"},
        /* Only the object is flagged; its descendants leave the tree with it */
        {"delete an object", [](QuelmarEditor& e) { deleteObject(e, "b"); return std::string{}; }, "", {deleted("b")}, 1, "", "a d<a e f<e g"},
        {"duplicate an object verbatim", [](QuelmarEditor& e) { return std::string{duplicateResource(e, "objects", "c").data()}; }, "n1",
            {R"(/objects/n1 () -> {"name":"C","parent":"b"})"}, 1, "", "a b<a c<b n1<b d<a e f<e g"},
        /* Its children are left with a dangling parent and show under the root */
        {"remove an object", [](QuelmarEditor& e) { deleteResource(e, "objects", "b"); return std::string{}; }, "", {R"(/objects/b {"name":"B","parent":"a"} -> ())"}, 1, "", "a d<a c e f<e g"},
        {"reparent, to an object and to the root", [](QuelmarEditor& e) { reparentObject(e, "b", "e"); reparentObject(e, "f", nullptr); return std::string{}; }, "",
            {"/objects/b/parent \"a\" -> \"e\"", "/objects/f/parent \"e\" -> null"}, 2, "Reparenting object b to e\nReparenting object f to root\n", "a d<a e b<e c<b f g"},
        /* Deleting the selection flags whole subtrees as one step */
        {"delete a selected subtree: descendants last first, the object last", deleteSelected({"a"}), "", {deleted("d"), deleted("c"), deleted("b"), deleted("a")}, 1, "", "e f<e g"},
        {"delete a selected parent and child: the child once, before its parent", deleteSelected({"c", "b"}), "", {deleted("c"), deleted("b")}, 1, "", "a d<a e f<e g"},
        {"delete selected leaves in tree order", deleteSelected({"g", "c", "d"}), "", {deleted("c"), deleted("d"), deleted("g")}, 1, "", "a b<a e f<e"},
        {"delete nothing selected", deleteSelected({}), "", {}, 0, "", "a b<a c<b d<a e f<e g"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        load(Tree);
        /* A step already in the history, which no edit may join */
        deleteObject(editor, "zz");
        /* The document, the tree and the newest applied record */
        const auto state = [&] {
            return std::string{editor.data.project.toJson().data()} + "\n" + tree() + "\n" + std::to_string(editor.changeManager->lastChangeIndex());
        };
        const std::string before = state();
        out.str("");
        EXPECT_EQ(row.edit(editor), row.key);
        EXPECT_FALSE(editor.changeManager->isGroupOpen());
        EXPECT_EQ(out.str(), row.output);
        EXPECT_THAT(records(1), testing::ElementsAreArray(row.records));
        EXPECT_EQ(tree(), row.tree);
        const std::string after = state();
        for(int i = 0; i != row.steps; ++i) editor.changeManager->undoLast();
        EXPECT_EQ(state(), before);
        for(int i = 0; i != row.steps; ++i) editor.changeManager->redoLastUndo();
        EXPECT_EQ(state(), after);
    }
}

TEST_F(ProjectToolsTest, AddObjectSuffixesTakenNames) {
    /* Names taken, and how many of Cube.000, Cube.001... besides */
    const struct { const char* name; std::vector<std::string> taken; int numbered; const char* expected; } rows[]{
        {"free name", {"Sphere", "Cube.000"}, 0, "Cube"},
        {"name taken", {"Cube"}, 0, "Cube.000"},
        {"gap in the suffixes", {"Cube", "Cube.001"}, 0, "Cube.000"},
        {"suffix goes on the name, not the candidate", {"Cube", "Cube.000", "Cube.000.000"}, 0, "Cube.001"},
        {"eleventh retry", {"Cube"}, 10, "Cube.010"},
        {"thousand-and-first retry", {"Cube"}, 1000, "Cube.1000"},
    };
    const auto nameOf = [this](const Containers::String& key) { return std::string{editor.data.project["objects"]->subValue(key.data())->subValue("name").asString()}; };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> taken = row.taken;
        for(int i = 0; i != row.numbered; ++i) taken.push_back(Utility::format("Cube.{:.3d}", i).data());
        std::string json = R"({"objects":{)";
        for(std::size_t i = 0; i != taken.size(); ++i) json += Utility::format(R"({}"k{}":{{"name":"{}"}})", i ? "," : "", i, taken[i].data()).data();
        load(json + "}}");
        EXPECT_EQ(nameOf(addObject(editor, "Cube", "")), row.expected);
    }
}
