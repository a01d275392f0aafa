/* Random edit sessions: whatever is pushed, grouped, merged, undone and
   redone, each position of the history must show the same document every
   time it is visited, and replacements alone must undo to the exact
   original text. Only what undo restores exactly is generated: undo of a
   removal recreates what the empty-parent cleanup erased from the path
   alone, creating past the end of an array pads with nulls, and a merge
   moves a record past the ones pushed after it. Hence numeric and negative
   names only as record keys of top-level maps, no empty containers below
   the top level, scalars only in arrays, creations only below existing
   containers or through missing object members, no index beyond the end,
   and merges only of scalars under "/settings", which nothing else touches. */

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>
#include <gtest/gtest.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/JsonPrinter.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;

namespace {

struct Random {
    std::uint32_t below(std::uint32_t n) { return engine() % n; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    std::string of(std::initializer_list<const char*> names) { return names.begin()[below(names.size())]; }
    std::string name() { return of({"a", "b", "name", "parent", "tags", "meta", "joints", "x", "yy", "-"}); }
    rapidjson::Value scalar(JsonAllocator& allocator) {
        switch(below(3)) {
            case 0: return rapidjson::Value{int(below(100))};
            case 1: return rapidjson::Value{};
        }
        return rapidjson::Value{name().data(), allocator};
    }
    /* Never an empty container; arrays hold scalars only */
    rapidjson::Value value(JsonAllocator& allocator, int depth = 0) {
        const std::uint32_t kind = depth >= 2 ? 0 : below(4);
        if(kind < 2) return scalar(allocator);
        rapidjson::Value out{kind == 2 ? rapidjson::kArrayType : rapidjson::kObjectType};
        for(std::uint32_t i = 0, n = 1 + below(3); i != n; ++i) {
            const std::string member = name();
            if(kind == 2) out.PushBack(scalar(allocator), allocator);
            else if(!out.HasMember(member.data()))
                out.AddMember(rapidjson::Value{member.data(), allocator}, value(allocator, depth + 1), allocator);
        }
        return out;
    }
    std::mt19937 engine;
};

/* A value of the document; the pointer holds until the next change */
struct Node {
    std::string path;
    const rapidjson::Value* value;
    bool inArray;
    int depth;
};

void collect(const rapidjson::Value& value, const std::string& path, bool inArray, int depth, std::vector<Node>& out) {
    if(depth) out.push_back({path, &value, inArray, depth});
    if(value.IsObject()) for(auto i = value.MemberBegin(); i != value.MemberEnd(); ++i)
        collect(i->value, path + "/" + i->name.GetString(), false, depth + 1, out);
    else if(value.IsArray()) for(rapidjson::SizeType i = 0; i != value.Size(); ++i)
        collect(value[i], path + "/" + std::to_string(i), true, depth + 1, out);
}

bool isUnderSettings(const std::string& path) {
    return path.compare(0, 9, "/settings") == 0;
}

/* Whether a merging push of path keeps the history exact. The record it
   merges into is exchanged with the newest one, which so moves back past
   the records between them and has to be a /settings record none of them
   touches. The redo tail, recorded before the merge, must not have the path. */
bool mergeIsExact(const ChangeManager& changes, const std::string& path, std::int32_t group) {
    auto pathOf = [&](int i) { return std::string{changes.change(i).path.data()}; };
    const int last = changes.lastChangeIndex();
    for(int i = last + 1; i < int(changes.changeCount()); ++i)
        if(pathOf(i) == path) return false;
    int found = last;
    while(found >= 1 && changes.change(found).group == group && pathOf(found) != path) --found;
    if(found < 1 || found == last || changes.change(found).group != group) return true;
    for(int i = found + 1; i < last; ++i)
        if(pathOf(i) == pathOf(last)) return false;
    return isUnderSettings(pathOf(last));
}

}

TEST(ChangeHistoryFuzzTest, MovingThroughHistoryGivesSameDocuments) {
    Random random{std::mt19937{20240611}};
    std::size_t pushes = 0, merges = 0, undos = 0, redos = 0, groups = 0;
    for(int session = 0; session != 15; ++session) {
        SCOPED_TRACE(session);
        /* Every third session replaces values only */
        const bool replacementsOnly = session % 3 == 2;
        ProjectFile project;
        ASSERT_TRUE(project.loadFromString(R"({"objects":{"k1":{"name":"a","tags":["x",1,null]},"12":{"parent":"k1","meta":{"x":2}}},)"
            R"("skins":{"-3":{"joints":[1,2]}},"settings":{"s0":1,"s1":"b","s2":null,"s4":5}})"));
        const std::string original = writeJson(*project.document);
        ChangeManager changes{project};
        /* The manager numbers groups from 1 as they are opened */
        const std::size_t groupsBefore = groups;
        JsonAllocator& allocator = changes.allocator();
        /* Pushes, counting merges; a null value removes */
        auto push = [&](const std::string& path, const rapidjson::Value* value, bool merge = false) {
            const int position = changes.lastChangeIndex();
            if(value) changes.pushChange(path.data(), *value, merge);
            else changes.pushRemoval(path.data());
            ++pushes;
            merges += changes.lastChangeIndex() == position;
        };

        for(int step = 0; step != 300; ++step) {
            std::vector<Node> nodes;
            collect(*project.document, "", false, 0, nodes);
            auto pick = [&](auto predicate) -> const Node* {
                std::vector<const Node*> fitting;
                for(const Node& node: nodes) if(predicate(node)) fitting.push_back(&node);
                return fitting.empty() ? nullptr : fitting[random.below(fitting.size())];
            };

            const std::uint32_t what = random.below(100);
            if(what < 8) {
                const bool begin = !changes.isGroupOpen() || random.chance(10);
                if(begin) changes.beginGroup();
                else changes.commit();
                groups += begin;
            } else if(what < 32) {
                if(changes.isGroupOpen()) changes.commit();
                if(what < 22) changes.undoLast();
                else changes.redoLastUndo();
                ++(what < 22 ? undos : redos);
            } else if(replacementsOnly) {
                const rapidjson::Value value = random.value(allocator);
                push(nodes[random.below(nodes.size())].path, &value);
                ASSERT_TRUE(changes.lastChange().oldValue);
            } else if(what < 42) {
                /* Scalars under /settings, in bursts so that merges find their
                   records */
                for(std::uint32_t burst = 1 + random.below(4); burst; --burst) {
                    const std::string path = "/settings/s" + std::to_string(random.below(6));
                    const rapidjson::Value value = random.scalar(allocator);
                    if(random.chance(15)) push(path, nullptr);
                    else push(path, &value, random.chance(80) && mergeIsExact(changes, path, changes.isGroupOpen() ? std::int32_t(groups - groupsBefore) : -1));
                }
            } else if(what < 60 || (nodes.size() > 120 && what < 70)) {
                /* Removal of anything but the settings map, or of nothing */
                const bool topLevel = random.chance(3);
                if(const Node* node = pick([&](const Node& node) { return (node.depth > 1 || topLevel) && (!isUnderSettings(node.path) || node.depth == 2); }))
                    push(node->path + ((node->value->IsObject() || node->value->IsArray()) && random.chance(30) ? node->value->IsArray() ? "/99" : "/missing" : ""), nullptr);
            } else if(what < 74) {
                /* Replacement below the top level; array elements stay scalars */
                if(const Node* node = pick([](const Node& node) { return node.depth > 1 && !isUnderSettings(node.path); })) {
                    const rapidjson::Value value = node->inArray ? random.scalar(allocator) : random.value(allocator);
                    push(node->path, &value);
                }
            } else if(what < 88) {
                /* Creation of a member, further down only through missing ones */
                if(const Node* node = pick([](const Node& node) { return node.value->IsObject() && !isUnderSettings(node.path); })) {
                    std::string path = node->path + "/" + (node->depth == 1 ? random.of({"k1", "k2", "k3", "12", "0", "-", "-3", "007", "r"}) : random.name());
                    if(!project.getValue(path.data(), false)) {
                        if(random.chance(30)) path += "/" + random.name();
                        if(random.chance(15)) path += "/" + random.name();
                        if(random.chance(15)) path += random.of({"/0", "/-"});
                    }
                    const rapidjson::Value value = path.back() == '0' || path.back() == '-' ? random.scalar(allocator) : random.value(allocator);
                    push(path, &value);
                }
            } else {
                /* Array edits: append by index or "-", insert at the front by a
                   negative index, remove an element */
                if(const Node* node = pick([](const Node& node) { return node.value->IsArray() && node.depth > 1 && !node.value->Empty(); })) {
                    const std::uint32_t edit = random.below(4);
                    const std::string path = node->path + "/" + (edit == 0 ? std::to_string(node->value->Size()) : edit == 1 ? "-" :
                        edit == 2 ? "-" + std::to_string(1 + random.below(4)) : std::to_string(random.below(node->value->Size())));
                    const rapidjson::Value value = random.scalar(allocator);
                    push(path, edit == 3 ? nullptr : &value);
                }
            }
            if(changes.isGroupOpen()) continue;

            /* Redo everything, undo everything (most of the time only back
               to here), redo back to here */
            const int position = changes.lastChangeIndex(), bottom = step % 8 ? position : -1;
            std::vector<std::unique_ptr<rapidjson::Document>> seen(changes.changeCount() + 1);
            auto visit = [&]{
                std::unique_ptr<rapidjson::Document>& document = seen[changes.lastChangeIndex() + 1];
                if(!document) {
                    document.reset(new rapidjson::Document);
                    document->CopyFrom(*project.document, document->GetAllocator());
                }
                EXPECT_TRUE(*document == *project.document) << "at step " << step << " position " << changes.lastChangeIndex()
                    << " shows\n  " << writeJson(*project.document) << "\ninstead of\n  " << writeJson(*document);
                return *document == *project.document;
            };
            bool same = visit();
            while(same && changes.canRedo()) { changes.redoLastUndo(); same = visit(); }
            while(same && changes.lastChangeIndex() > bottom) { changes.undoLast(); same = visit(); }
            while(same && changes.lastChangeIndex() < position && changes.canRedo()) { changes.redoLastUndo(); same = visit(); }
            ASSERT_TRUE(same && changes.lastChangeIndex() == position);
        }

        if(changes.isGroupOpen()) changes.commit();
        if(!replacementsOnly) continue;
        while(changes.canRedo()) changes.redoLastUndo();
        const std::string last = writeJson(*project.document);
        while(changes.canUndo()) changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), original);
        while(changes.canRedo()) changes.redoLastUndo();
        EXPECT_EQ(writeJson(*project.document), last);
    }

    /* The sessions must have exercised what they are meant to */
    EXPECT_TRUE(pushes > 2800 && merges > 150 && undos > 500 && redos > 350 && groups > 250)
        << pushes << " pushes, " << merges << " merges, " << undos << " undos, " << redos << " redos, " << groups << " groups";
}
