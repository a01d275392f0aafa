/* Random edit sessions: whatever is pushed, grouped, merged, undone and
   redone, undoing everything gives back the original text byte for byte,
   member order included, and every position of the history shows the same
   text whenever it is visited, on the way down and on the way up. Nothing is
   left out but the one documented fatal case, an index key under a scalar. */

#include <cstdint>
#include <random>
#include <string>
#include <vector>
#include <gtest/gtest.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/ProjectFile.h"

using namespace QuelmarEngine;

namespace {

struct Random {
    std::uint32_t below(std::uint32_t n) { return engine() % n; }
    bool chance(std::uint32_t percent) { return below(100) < percent; }
    std::string of(std::initializer_list<const char*> names) { return names.begin()[below(names.size())]; }
    /* Member names, numeric ones and "-" included */
    std::string name() { return of({"a", "b", "name", "parent", "x", "0", "12", "-", "-3", "007"}); }
    rapidjson::Value value(JsonAllocator& allocator, int depth = 0) {
        const std::uint32_t kind = depth >= 3 ? below(3) : below(5);
        if(kind == 0) return rapidjson::Value{int(below(100))};
        if(kind == 1) return rapidjson::Value{};
        if(kind == 2) return rapidjson::Value{name().data(), allocator};
        /* Empty containers and containers as array elements too */
        rapidjson::Value out{kind == 3 ? rapidjson::kArrayType : rapidjson::kObjectType};
        for(std::uint32_t i = 0, n = below(3); i != n; ++i) {
            const std::string member = name();
            if(kind == 3) out.PushBack(value(allocator, depth + 1), allocator);
            else if(!out.HasMember(member.data()))
                out.AddMember(rapidjson::Value{member.data(), allocator}, value(allocator, depth + 1), allocator);
        }
        return out;
    }
    std::mt19937 engine;
};

/* A value of the document; the pointer holds until the next change */
struct Node { std::string path; const rapidjson::Value* value; };

void collect(const rapidjson::Value& value, const std::string& path, std::vector<Node>& out) {
    out.push_back({path, &value});
    if(value.IsObject()) for(auto i = value.MemberBegin(); i != value.MemberEnd(); ++i)
        collect(i->value, path + "/" + i->name.GetString(), out);
    else if(value.IsArray()) for(rapidjson::SizeType i = 0; i != value.Size(); ++i)
        collect(value[i], path + "/" + std::to_string(i), out);
}

/* An optional "-" and digits, which the manager inserts into an array */
bool isIndexKey(const std::string& segment) {
    const std::size_t sign = !segment.empty() && segment[0] == '-';
    return segment.size() > sign && segment.find_first_not_of("0123456789", sign) == std::string::npos;
}

}

TEST(ChangeHistoryFuzzTest, UndoAndRedoAreExact) {
    Random random{std::mt19937{20240611}};
    std::size_t pushes = 0, merges = 0, undos = 0, redos = 0, refusedMerges = 0;
    for(int session = 0; session != 80; ++session) {
        SCOPED_TRACE(session);
        ProjectFile project;
        ASSERT_TRUE(project.loadFromString(R"({"objects":{"k1":{"name":"a","tags":["x",1,null,{"y":[]}]},"12":{"parent":"k1","meta":{"x":2}}},)"
            R"("skins":{"-3":{"joints":[1,2]}},"settings":{"s0":1,"s1":"b","s2":null,"s4":{}}})"));
        const std::string original = writeJson(*project.document);
        ChangeManager changes{project};
        JsonAllocator& allocator = changes.allocator();
        /* Paths that bursts of merging pushes go to */
        std::vector<std::string> hot;

        for(int step = 0; step != 60; ++step) {
            std::vector<Node> nodes;
            collect(*project.document, "", nodes);
            const Node& node = nodes[random.below(nodes.size())];
            const rapidjson::Value value = random.value(allocator);
            const int position = changes.lastChangeIndex();
            const std::size_t count = changes.changeCount();
            bool merge = false;
            /* A creation with an index key under a scalar is a documented
               fatal error */
            auto pushValue = [&](const std::string& path, bool mergeIt) {
                const std::size_t slash = path.rfind('/');
                const rapidjson::Value* const parent = slash == std::string::npos ? nullptr : project.getValue(path.substr(0, slash).data(), false);
                if(!project.getValue(path.data(), false) && parent && !parent->IsObject() && !parent->IsArray() && isIndexKey(path.substr(slash + 1))) return;
                merge = mergeIt;
                changes.pushChange(path.data(), value, mergeIt);
            };

            const std::uint32_t what = random.below(100);
            if(what < 8) {
                if(changes.isGroupOpen() && random.chance(70)) changes.commit();
                else changes.beginGroup();
            } else if(what < 26) {
                if(changes.isGroupOpen()) changes.commit();
                if(what < 18) changes.undoLast(), ++undos;
                else changes.redoLastUndo(), ++redos;
            } else if(what < 46) {
                /* Bursts at a few paths, merging */
                /* A value, one above it and another one, so that merging
                   records move past records at paths above or below theirs */
                if(hot.empty() || random.chance(20))
                    hot = {node.path, node.path.substr(0, node.path.rfind('/')), nodes[random.below(nodes.size())].path};
                pushValue(hot[random.below(hot.size())], true);
            } else if(what < 60) {
                /* Removal of anything but the root, or below it of nothing */
                std::string path = node.path;
                if(random.chance(20)) path += random.of({"/missing", "/99", "/-"});
                if(!path.empty()) changes.pushRemoval(path.data());
            } else if(what < 72) {
                pushValue(node.path, random.chance(30));
            } else {
                /* Creation below any value, through what is missing, a scalar
                   or a name on an array, by index past the end, "-" or a
                   negative index */
                std::string last = node.value->IsArray() ?
                    random.of({"-", "-2", "x", "007"}) : random.name();
                if(node.value->IsArray() && random.chance(50))
                    last = std::to_string(node.value->Size() + random.below(3));
                std::string path = node.path + "/" + last;
                if(random.chance(30)) path += "/" + random.of({"a", "0", "2", "-", "-1"});
                pushValue(path, random.chance(20));
            }

            /* A merge that went through leaves no new record */
            const bool recorded = changes.changeCount() != count || changes.lastChangeIndex() != position;
            pushes += recorded;
            if(merge) ++(recorded ? refusedMerges : merges);
            if(changes.isGroupOpen()) continue;

            /* Down to nothing and back up, twice over each position */
            const int here = changes.lastChangeIndex();
            std::vector<std::string> seen(changes.changeCount() + 1);
            bool same = true;
            auto visit = [&]{
                std::string& expected = seen[changes.lastChangeIndex() + 1];
                const std::string text = writeJson(*project.document);
                if(expected.empty()) expected = text;
                EXPECT_EQ(text, expected) << "at step " << step << " position " << changes.lastChangeIndex();
                same = same && text == expected;
            };
            visit();
            while(same && changes.canRedo()) { changes.redoLastUndo(); visit(); }
            while(same && changes.canUndo()) { changes.undoLast(); visit(); }
            ASSERT_EQ(writeJson(*project.document), original) << "at step " << step;
            while(same && changes.canRedo()) { changes.redoLastUndo(); visit(); }
            while(same && changes.lastChangeIndex() > here) { changes.undoLast(); visit(); }
            ASSERT_TRUE(same);
            ASSERT_EQ(changes.lastChangeIndex(), here);
        }
    }

    /* The sessions must have exercised what they are meant to */
    EXPECT_TRUE(pushes > 3000 && merges > 120 && refusedMerges > 800 && undos > 400 && redos > 300)
        << pushes << " pushes, " << merges << " merges, " << refusedMerges << " refused merges, " << undos << " undos, " << redos << " redos";
}
