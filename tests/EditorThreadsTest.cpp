/* Two editors, each on its own thread, share nothing: built with
   ThreadSanitizer (make tsan), any state they shared would show as a race. */

#include <random>
#include <string>
#include <thread>
#include <gtest/gtest.h>

#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "QuelmarEngine/Tools/ProjectTools.h"

using namespace QuelmarEngine;

namespace {

/* Random edits of a project of a few hundred objects, then undo of them
   all; whether that gives back the project goes to @p same */
void editRandomly(const unsigned seed, bool* const same) {
    std::string json = "{\"objects\":{";
    for(int i = 0; i != 300; ++i)
        json += (i ? ",\"k" : "\"k") + std::to_string(i) + "\":{\"name\":\"Crate\"}";
    json += "}}";
    QuelmarEditor editor;
    if(!editor.loadFromString({json.data(), json.size()})) return;
    const std::string original = writeJson(*editor.data.project.document);

    std::mt19937 random{seed};
    ChangeManager& changes = *editor.changeManager;
    for(int step = 0; step != 1500; ++step) {
        const rapidjson::Value& objects = (*editor.data.project.document)["objects"];
        const std::string key = (objects.MemberBegin() + random() % objects.MemberCount())->name.GetString();
        switch(random() % 5) {
            case 0: addObject(editor, Containers::String{"Crate"}, Containers::String{}); break;
            case 1: deleteResource(editor, "objects", key.data()); break;
            case 2: changes.pushChange(("/objects/" + key + "/name").data(), "Box", false); break;
            case 3: changes.undoLast(); break;
            case 4: changes.redoLastUndo(); break;
        }
    }
    while(changes.canUndo()) changes.undoLast();
    *same = writeJson(*editor.data.project.document) == original;
}

TEST(EditorThreadsTest, TwoEditorsShareNothing) {
    bool same[2]{};
    std::thread first{editRandomly, 1u, &same[0]}, second{editRandomly, 2u, &same[1]};
    first.join();
    second.join();
    EXPECT_TRUE(same[0]);
    EXPECT_TRUE(same[1]);
}

}
