/* Random edit sessions run side by side on an editor that follows changes in
   proportion to them and one that rebuilds its scene whole at every refresh:
   after every step both must hold the same scene graph, key-to-index map and
   selection. Sessions add, delete and undelete objects, reparent them into
   and out of cycles and onto keys that name nothing, remove records and undo
   that, duplicate, replace records and the whole map, edit transformations
   and names, and undo and redo, alone or grouped. */

#include <algorithm>
#include <random>
#include <tuple>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <gtest/gtest.h>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;

namespace {

struct Session {
    explicit Session(const unsigned seed): random{seed} {
        rebuilt.setIncrementalRefresh(false);
        std::string json = R"({"skins":{"s":{"joints":["k0"]}},"objects":{)";
        for(int i = 0, n = 1 + int(below(40)); i != n; ++i) {
            json += (i ? ",\"k" : "\"k") + std::to_string(i) + R"(":{"name":"o")";
            if(chance(70)) json += R"(,"parent":")" + anyKey(i + 3) + "\"";
            if(chance(10)) json += R"(,"deleted":true)";
            if(chance(30)) json += R"(,"transformation":)" + matrix();
            json += "}";
        }
        json += "}}";
        for(QuelmarEditor* editor: {&kept, &rebuilt}) {
            EXPECT_TRUE(editor->loadFromString({json.data(), json.size()}));
            editor->data.project.setIdGenerator([counter = 0]() mutable {
                return Containers::String{("n" + std::to_string(++counter)).data()};
            });
        }
    }

    std::uint32_t below(std::uint32_t n) { return random() % n; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }

    /* A key of k0 to k(n - 1), of an object added since, or one that names nothing */
    std::string anyKey(const int n = 0) {
        if(chance(10)) return "ghost";
        const std::vector<std::string> keys = objectKeys();
        if(keys.empty() || (n && chance(50))) return "k" + std::to_string(below(n ? n : 40));
        return keys[below(keys.size())];
    }

    std::vector<std::string> objectKeys() {
        std::vector<std::string> out;
        const rapidjson::Value* const objects = kept.data.project.getValue("/objects", false);
        if(objects && objects->IsObject())
            for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it) out.push_back(it->name.GetString());
        return out;
    }

    std::string matrix() {
        if(chance(10)) return "[1,2]";
        std::string out = "[";
        for(int i = 0; i != 16; ++i) out += (i ? "," : "") + std::to_string(i % 5 == 0 ? 1 : int(below(3)));
        return out + "]";
    }

    /* One edit, the same on both editors; @p grouped leaves out what opens a
       group of its own or undoes */
    void edit(const bool grouped) {
        const std::string key = anyKey(), other = anyKey();
        const std::string recordPath = "/objects/" + key;
        const std::string json = matrix();
        std::vector<std::string> selected;
        for(std::uint32_t i = 0, n = below(3); i != n; ++i) selected.push_back(anyKey());
        const bool toRoot = chance(20);
        std::vector<bool> undo;
        for(int i = 0; i != 3; ++i) undo.push_back(chance(50));
        const std::uint32_t kind = below(grouped ? 13 : 17);
        for(QuelmarEditor* editor: {&kept, &rebuilt}) {
            ChangeManager& changes = *editor->changeManager;
            JsonAllocator& allocator = editor->data.project.allocator();
            switch(kind) {
                case 0: addObject(*editor, "o", toRoot ? "" : other.data()); break;
                case 1: deleteObject(*editor, key.data()); break;
                case 2: changes.pushChange((recordPath + "/deleted").data(), rapidjson::Value{false}, false); break;
                case 3: case 4: reparentObject(*editor, key.data(), toRoot ? nullptr : other.data()); break;
                case 5: deleteResource(*editor, "objects", key.data()); break;
                case 6: {
                    rapidjson::Value record{rapidjson::kObjectType};
                    record.AddMember("parent", rapidjson::Value{other.data(), allocator}, allocator);
                    changes.pushChange(recordPath.data(), record, false);
                } break;
                case 7: {
                    rapidjson::Document parsed;
                    parsed.Parse(json.data());
                    changes.pushChange((recordPath + "/transformation").data(), parsed, false);
                } break;
                case 8: changes.pushChange((recordPath + "/transformation/12").data(), rapidjson::Value{7}, false); break;
                case 9: changes.pushChange((recordPath + "/name").data(), "renamed", false); break;
                case 10: changes.pushRemoval((recordPath + "/name").data()); break;
                case 11: changes.pushRemoval((recordPath + "/parent").data()); break;
                case 12: static_cast<void>(editor->objectLookup->keyToIndex()[Containers::String{"looked-up"}]); break;
                case 13: {
                    /* The whole map, records in reverse order */
                    rapidjson::Value objects{rapidjson::kObjectType};
                    if(const rapidjson::Value* const current = editor->data.project.getValue("/objects", false))
                        for(auto it = current->MemberEnd(); current->IsObject() && it != current->MemberBegin(); --it)
                            objects.AddMember(rapidjson::Value{(it - 1)->name, allocator}, rapidjson::Value{(it - 1)->value, allocator}, allocator);
                    changes.pushChange("/objects", objects, false);
                } break;
                case 14: case 15: {
                    StringArray array{selected.size()};
                    for(const std::string& k: selected) array.add(k.data());
                    selectObjects(*editor, array);
                    if(kind == 14) duplicate(*editor);
                    else duplicateTrees(*editor);
                } break;
                case 16:
                    for(const bool back: undo) back ? changes.undoLast() : changes.redoLastUndo();
                    break;
            }
        }
    }

    void step() {
        if(chance(15)) {
            const std::uint32_t count = 2 + below(4);
            for(QuelmarEditor* editor: {&kept, &rebuilt}) editor->changeManager->beginGroup();
            for(std::uint32_t i = 0; i != count; ++i) edit(true);
            for(QuelmarEditor* editor: {&kept, &rebuilt}) editor->changeManager->commit();
        } else edit(false);
    }

    std::mt19937 random;
    QuelmarEditor kept, rebuilt;
};

/* Everything a command can read of an editor's scene, as one value to compare */
auto snapshot(QuelmarEditor& editor) {
    const auto& graph = *editor.scene->sceneGraph;
    std::vector<std::tuple<unsigned short, unsigned short, unsigned short, unsigned short, unsigned short, Magnum::Matrix4>> positions;
    for(std::size_t p = 0; p != graph.header().objectCount; ++p) {
        const auto& h = graph.hierarchy()[p];
        positions.emplace_back(graph.positionToIndex()[p], h.parent, h.depth, h.descendants, h.childCount, graph.localTransformations()[p]);
    }
    EXPECT_EQ(graph.objectKeys().size(), graph.indexToPosition().size());
    std::vector<std::pair<unsigned short, std::string>> indices;
    for(std::size_t i = 0; i != std::min<std::size_t>(graph.indexToPosition().size(), graph.objectKeys().size()); ++i)
        indices.emplace_back(graph.indexToPosition()[i], graph.objectKeys().get(i));
    std::vector<std::pair<std::string, unsigned short>> entries;
    for(const auto& entry: editor.objectLookup->keyToIndex()) entries.emplace_back(entry.first.data(), entry.second);
    std::sort(entries.begin(), entries.end());
    std::vector<bool> selection;
    for(std::size_t i = 0; i != editor.data.selectionSize(); ++i) selection.push_back(editor.data.isSelected((unsigned short)i));
    return std::make_tuple(std::string{editor.data.project.toJson().data()}, positions, graph.indexToPosition().size(), indices, entries, selection);
}

/* The sanitizer build is many times slower and runs a sixth of the sessions */
#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned Sessions = 25;
#else
constexpr unsigned Sessions = 150;
#endif

TEST(SceneRefreshFuzzTest, FollowsEveryChangeAsARebuildWould) {
    std::ostringstream out;
    Utility::Debug silenceDebug{&out};
    Utility::Warning silenceWarning{&out};
    Utility::Error silenceError{&out};
    for(unsigned seed = 0; seed != Sessions; ++seed) {
        SCOPED_TRACE(seed);
        Session session{seed};
        for(int step = 0; step != 60; ++step) {
            SCOPED_TRACE(step);
            session.step();
            ASSERT_EQ(snapshot(session.kept), snapshot(session.rebuilt));
        }
    }
}

}
