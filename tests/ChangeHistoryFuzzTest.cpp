/* Random edit sessions against the change history: whatever is pushed,
   grouped, merged, undone and redone, moving through the history must give
   the same documents every time a position is visited. */

#include <algorithm>
#include <cstdint>
#include <limits>
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

/* The generator stays inside what undo can restore exactly. Undo of a
   removal recreates what the empty-parent cleanup erased from the path
   alone, so it cannot tell an object with a numeric member from an array,
   nor give back a container that was empty before, nor put back an array
   element the cleanup erased without shifting its neighbours; creating past
   the end of an array pads with nulls that no undo removes; a merge moves a
   record past the ones pushed after it. Hence: numeric and negative names
   only as record keys of top-level maps, no empty containers below the top
   level, scalars only in arrays, creations only below existing containers
   or through missing object members, no index beyond the end, and merging
   pushes only of scalars directly under "/settings", which nothing else
   touches. */
class Generator {
    public:
        explicit Generator(std::uint32_t seed): _random{seed} {}

        std::uint32_t below(std::uint32_t n) { return _random() % n; }
        bool chance(std::uint32_t percent) { return below(100) < percent; }

        std::string name() {
            static const char* const names[]{"a", "b", "name", "parent", "tags", "meta", "joints", "x", "yy", "-"};
            return names[below(10)];
        }

        std::string recordKey() {
            static const char* const keys[]{"k1", "k2", "k3", "12", "0", "-", "-3", "007", "r"};
            return keys[below(9)];
        }

        rapidjson::Value scalar(JsonAllocator& allocator) {
            switch(below(5)) {
                case 0: return rapidjson::Value{int(below(100))};
                case 1: return rapidjson::Value{bool(below(2))};
                case 2: return rapidjson::Value{};
                case 3: return rapidjson::Value{below(1000)*0.5};
            }
            return rapidjson::Value{name().data(), allocator};
        }

        /* Never an empty container; arrays hold scalars only */
        rapidjson::Value value(JsonAllocator& allocator, int depth = 0) {
            const std::uint32_t kind = depth >= 2 ? 0 : below(4);
            if(kind == 2) {
                rapidjson::Value array{rapidjson::kArrayType};
                for(std::uint32_t i = 0, n = 1 + below(3); i != n; ++i)
                    array.PushBack(scalar(allocator), allocator);
                return array;
            }
            if(kind == 3) {
                rapidjson::Value object{rapidjson::kObjectType};
                std::vector<std::string> used;
                for(std::uint32_t i = 0, n = 1 + below(3); i != n; ++i) {
                    std::string member = name();
                    if(std::find(used.begin(), used.end(), member) != used.end()) continue;
                    used.push_back(member);
                    object.AddMember(rapidjson::Value{member.data(), allocator}, value(allocator, depth + 1), allocator);
                }
                return object;
            }
            return scalar(allocator);
        }

    private:
        std::mt19937 _random;
};

enum class Kind { Scalar, Object, Array };

struct Node {
    std::string path;
    Kind kind;
    Kind parentKind;
    int depth;
    std::size_t size;
};

void collect(const rapidjson::Value& value, const std::string& path, Kind parentKind, int depth, std::vector<Node>& out) {
    const Kind kind = value.IsObject() ? Kind::Object : value.IsArray() ? Kind::Array : Kind::Scalar;
    if(depth) out.push_back({path, kind, parentKind, depth, kind == Kind::Object ? value.MemberCount() : kind == Kind::Array ? value.Size() : 0});
    if(value.IsObject()) {
        for(auto i = value.MemberBegin(); i != value.MemberEnd(); ++i)
            collect(i->value, path + "/" + i->name.GetString(), kind, depth + 1, out);
    } else if(value.IsArray()) {
        for(rapidjson::SizeType i = 0; i != value.Size(); ++i)
            collect(value[i], path + "/" + std::to_string(i), kind, depth + 1, out);
    }
}

bool isUnderSettings(const std::string& path) {
    return path.compare(0, 9, "/settings") == 0;
}

std::unique_ptr<rapidjson::Document> copyOf(const rapidjson::Value& value) {
    std::unique_ptr<rapidjson::Document> out{new rapidjson::Document};
    out->CopyFrom(value, out->GetAllocator());
    return out;
}

void randomDocument(Generator& random, rapidjson::Document& document) {
    JsonAllocator& allocator = document.GetAllocator();
    document.SetObject();
    for(const char* map: {"objects", "skins", "settings"}) {
        rapidjson::Value records{rapidjson::kObjectType};
        for(std::uint32_t i = 0, n = 2 + random.below(4); i != n; ++i) {
            const std::string key = map[1] == 'e' ? "s" + std::to_string(i) : random.recordKey() + std::to_string(i);
            records.AddMember(rapidjson::Value{key.data(), allocator}, map[1] == 'e' ? random.scalar(allocator) : random.value(allocator), allocator);
        }
        document.AddMember(rapidjson::StringRef(map), records, allocator);
    }
}

}

TEST(ChangeHistoryFuzzTest, MovingThroughHistoryGivesSameDocuments) {
    Generator random{20240611};
    ProjectFile project;
    randomDocument(random, *project.document);
    ChangeManager changes{project};
    JsonAllocator& allocator = changes.allocator();

    /* The document at each position that undo and redo can reach, by
       position + 1; null where unknown */
    std::vector<std::unique_ptr<rapidjson::Document>> seen(1);
    seen[0] = copyOf(*project.document);
    std::vector<std::string> log;

    /* Compares with what was seen at the position, or remembers it */
    auto visit = [&](const char* what) {
        const std::size_t at = changes.lastChangeIndex() + 1;
        if(seen.size() < changes.changeCount() + 1) seen.resize(changes.changeCount() + 1);
        if(!seen[at]) {
            seen[at] = copyOf(*project.document);
            return true;
        }
        if(*seen[at] == *project.document) return true;
        std::string trace;
        for(std::size_t i = log.size() > 40 ? log.size() - 40 : 0; i != log.size(); ++i)
            trace += log[i] + "\n";
        ADD_FAILURE() << what << " at position " << int(at) - 1 << " gives\n  " << writeJson(*project.document)
                      << "\ninstead of\n  " << writeJson(*seen[at]) << "\nlast steps:\n" << trace;
        return false;
    };
    auto forgetFrom = [&](std::size_t position) {
        for(std::size_t i = position + 1; i < seen.size(); ++i) seen[i] = nullptr;
    };

    /* Lowest position whose document the pushes since the last check
       changed */
    int changedFrom = std::numeric_limits<int>::max();
    std::size_t pushes = 0, merges = 0, undos = 0, redos = 0, groups = 0;
    /* A push changes what its own position shows; a merge also what the
       positions of its run show, since it may move a record */
    auto account = [&](bool merged) {
        ++pushes;
        int from = changes.lastChangeIndex();
        if(merged) {
            ++merges;
            while(from > 0 && changes.change(from - 1).group == changes.lastChange().group) --from;
        }
        changedFrom = std::min(changedFrom, from);
    };
    for(int step = 0; step != 6000; ++step) {
        std::vector<Node> nodes;
        collect(*project.document, "", Kind::Object, 0, nodes);
        auto pick = [&](auto predicate) -> const Node* {
            std::vector<const Node*> fitting;
            for(const Node& node: nodes) if(predicate(node)) fitting.push_back(&node);
            return fitting.empty() ? nullptr : fitting[random.below(fitting.size())];
        };
        const bool big = nodes.size() > 120;

        const std::uint32_t what = random.below(100);
        bool pushed = false, merged = false;
        std::string line;
        if(what < 8) {
            if(!changes.isGroupOpen() || random.chance(10)) {
                changes.beginGroup();
                ++groups;
                line = "beginGroup()";
            } else {
                changes.commit();
                line = "commit()";
            }
        } else if(what < 22) {
            if(changes.isGroupOpen()) changes.commit();
            changes.undoLast();
            ++undos;
            line = "undoLast()";
        } else if(what < 32) {
            if(changes.isGroupOpen()) changes.commit();
            changes.redoLastUndo();
            ++redos;
            line = "redoLastUndo()";
        } else if(what < 42) {
            /* Scalars under /settings, the only merging pushes. A merge
               exchanges the record it finds with the newest one, which so
               moves back past the records between them and is undone after
               them: it has to be a /settings record that none of them
               touches. With no group open a merge also leaves the redo
               tail, recorded against the value before the merge: none of
               it may have the merged path. */
            /* In bursts, so that merges find their records */
            for(std::uint32_t burst = 1 + random.below(4); burst; --burst) {
                bool merged = false;
                std::string line;
                const std::string path = "/settings/s" + std::to_string(random.below(6));
                bool merge = random.chance(80);
                const int last = changes.lastChangeIndex();
                const std::int32_t group = changes.isGroupOpen() ? groups : -1;
                if(merge && last > 0 && changes.lastChange().group == group) {
                    int found = last;
                    while(found >= 1 && changes.change(found).group == group && path != changes.change(found).path.data()) --found;
                    if(found >= 1 && changes.change(found).group == group && found != last) {
                        const std::string newest = changes.lastChange().path.data();
                        if(!isUnderSettings(newest)) merge = false;
                        for(int i = found + 1; i < last; ++i)
                            if(newest == changes.change(i).path.data()) merge = false;
                    }
                }
                if(merge && !changes.isGroupOpen())
                    for(std::size_t i = last + 1; i < changes.changeCount(); ++i)
                        if(path == changes.change(i).path.data()) merge = false;
                if(random.chance(15)) {
                    changes.pushRemoval(path.data());
                    merge = false;
                } else {
                    const std::size_t before = changes.changeCount();
                    const int position = changes.lastChangeIndex();
                    changes.pushChange(path.data(), random.scalar(allocator), merge);
                    merged = changes.changeCount() == before && changes.lastChangeIndex() == position;
                }
                line = (merge ? "merge " : "push ") + path + " = " + (changes.lastChange().newValue ? writeJson(*changes.lastChange().newValue) : "()");
                log.push_back(line + (changes.isGroupOpen() ? " (in group)" : ""));
                account(merged);
            }
            line = "(end of burst)";
        } else if(what < 56 || (big && what < 70)) {
            /* Removal of anything but the settings map */
            const bool topLevel = random.chance(3);
            const Node* node = pick([&](const Node& node) { return (node.depth > 1 || topLevel) && (!isUnderSettings(node.path) || node.depth == 2); });
            if(!node) continue;
            changes.pushRemoval(node->path.data());
            line = "remove " + node->path;
            pushed = true;
        } else if(what < 62) {
            /* Removal of nothing; the cleanup still runs */
            const Node* node = pick([](const Node& node) { return node.kind != Kind::Scalar && !isUnderSettings(node.path); });
            if(!node) continue;
            const std::string path = node->path + (node->kind == Kind::Array ? "/99" : "/missing");
            changes.pushRemoval(path.data());
            line = "remove " + path;
            pushed = true;
        } else if(what < 74) {
            /* Replacement; array elements stay scalars, top-level maps stay
               objects */
            const Node* node = pick([](const Node& node) { return !isUnderSettings(node.path); });
            if(!node) continue;
            rapidjson::Value value = node->parentKind == Kind::Array ? random.scalar(allocator) : random.value(allocator);
            if(node->depth == 1 && !value.IsObject()) {
                value.SetObject();
                value.AddMember("r", random.value(allocator), allocator);
            }
            line = "set " + node->path + " = " + writeJson(value);
            changes.pushChange(node->path.data(), value, false);
            pushed = true;
        } else if(what < 86) {
            /* Creation of a member, maybe through missing objects */
            const Node* node = pick([](const Node& node) { return node.kind == Kind::Object && !isUnderSettings(node.path); });
            if(!node) continue;
            std::string path = node->path + "/" + (node->depth == 1 ? random.recordKey() : random.name());
            /* Further down only through a member that is missing */
            if(!project.getValue(path.data(), false)) {
                if(random.chance(30)) path += "/" + random.name();
                if(random.chance(15)) path += "/" + random.name();
                if(random.chance(15)) path += random.chance(50) ? "/0" : "/-";
            }
            const rapidjson::Value value = path.back() == '0' || path.back() == '-' ? random.scalar(allocator) : random.value(allocator);
            line = "set " + path + " = " + writeJson(value);
            changes.pushChange(path.data(), value, false);
            pushed = true;
        } else if(what < 94) {
            /* Array edits: append by index or "-", insert at the front by a
               negative index, remove an element */
            const Node* node = pick([](const Node& node) { return node.kind == Kind::Array && node.depth > 1 && node.size; });
            if(!node) continue;
            const std::uint32_t edit = random.below(4);
            std::string path = node->path + "/";
            if(edit == 3) {
                path += std::to_string(random.below(node->size));
                changes.pushRemoval(path.data());
                line = "remove " + path;
            } else {
                path += edit == 0 ? std::to_string(node->size) : edit == 1 ? "-" : "-" + std::to_string(1 + random.below(4));
                const rapidjson::Value value = random.scalar(allocator);
                line = "set " + path + " = " + writeJson(value);
                changes.pushChange(path.data(), value, false);
            }
            pushed = true;
        } else {
            /* Append to an array, a scalar or a missing member */
            const Node* node = pick([](const Node& node) { return node.parentKind == Kind::Object && node.depth > 1 && node.kind != Kind::Object && !isUnderSettings(node.path); });
            if(!node) continue;
            const std::string path = random.chance(25) ? node->path + "x" : node->path;
            const std::string value = random.name();
            changes.pushAppend(path.data(), value.data());
            line = "append " + path + " " + value;
            pushed = true;
        }
        log.push_back(line + (changes.isGroupOpen() ? " (in group)" : ""));
        if(pushed) account(merged);

        if(changes.isGroupOpen()) continue;

        if(changedFrom != std::numeric_limits<int>::max()) {
            forgetFrom(changedFrom);
            seen.resize(changes.changeCount() + 1);
            changedFrom = std::numeric_limits<int>::max();
        }
        if(!visit(line.data())) return;

        /* Redoing everything that was undone and undoing it again */
        const int position = changes.lastChangeIndex();
        while(changes.canRedo()) {
            changes.redoLastUndo();
            if(!visit("redo")) return;
        }
        while(changes.lastChangeIndex() != position) {
            changes.undoLast();
            if(!visit("undo")) return;
        }

        /* Now and then the whole way down and back */
        if(step % 64 == 0) {
            while(changes.canUndo()) {
                changes.undoLast();
                if(!visit("undo to the start")) return;
            }
            while(changes.lastChangeIndex() != position) {
                changes.redoLastUndo();
                if(!visit("redo from the start")) return;
            }
        }
    }

    /* The sequence must have exercised what it is meant to */
    EXPECT_GT(pushes, 2500u);
    EXPECT_GT(merges, 100u);
    EXPECT_GT(undos, 500u);
    EXPECT_GT(redos, 300u);
    EXPECT_GT(groups, 200u);
}

TEST(ChangeHistoryFuzzTest, ReplacementsUndoToExactOriginal) {
    Generator random{77};
    for(int round = 0; round != 20; ++round) {
        SCOPED_TRACE(round);
        ProjectFile project;
        randomDocument(random, *project.document);
        const std::string original = writeJson(*project.document);
        ChangeManager changes{project};

        for(int step = 0; step != 150; ++step) {
            const std::uint32_t what = random.below(10);
            if(what == 0) {
                if(changes.isGroupOpen()) changes.commit();
                else changes.beginGroup();
            } else if(what == 1 && !changes.isGroupOpen()) {
                changes.undoLast();
            } else if(what == 2 && !changes.isGroupOpen()) {
                changes.redoLastUndo();
            } else {
                std::vector<Node> nodes;
                collect(*project.document, "", Kind::Object, 0, nodes);
                const Node& node = nodes[random.below(nodes.size())];
                changes.pushChange(node.path.data(), random.value(changes.allocator()), false);
                ASSERT_TRUE(changes.lastChange().oldValue);
            }
        }
        if(changes.isGroupOpen()) changes.commit();
        while(changes.canRedo()) changes.redoLastUndo();
        const std::string last = writeJson(*project.document);
        while(changes.canUndo()) changes.undoLast();
        EXPECT_EQ(writeJson(*project.document), original);
        while(changes.canRedo()) changes.redoLastUndo();
        EXPECT_EQ(writeJson(*project.document), last);
    }
}
