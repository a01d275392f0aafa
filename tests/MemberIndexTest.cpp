#include <random>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/MemberIndex.h"

using namespace QuelmarEngine;

namespace {

/* Whatever happens to a large top-level map, through the index or behind its
   back, every answer is the one a scan gives */
TEST(MemberIndexTest, AnswersAsAScanThroughEveryEdit) {
    rapidjson::Document document;
    document.Parse(R"({"small":{},"objects":{}})");
    JsonAllocator& allocator = document.GetAllocator();
    rapidjson::Value& map = document["objects"];
    MemberIndex index;
    index.bind(document);

    std::mt19937 random{7};
    auto name = [&]{ return "k" + std::to_string(random() % 600); };
    auto string = [&](const std::string& text) { return rapidjson::Value{text.data(), rapidjson::SizeType(text.size()), allocator}; };
    auto has = [&](const std::string& text) { return memberPosition(map, {text.data(), text.size()}) != map.MemberCount(); };
    /* Members taken out, for putting back where they stood, newest first as
       an undo does */
    struct Taken { rapidjson::SizeType position; rapidjson::Value name, value; };
    std::vector<Taken> taken;
    auto take = [&](rapidjson::SizeType position) { taken.push_back({position, {}, {}}); index.erase(map, position, taken.back().name, taken.back().value); };
    /* The newest taken member appended through the index */
    auto appendTaken = [&] {
        index.append(map, std::move(taken.back().name), std::move(taken.back().value), allocator);
        taken.pop_back();
    };

    /* The second half edits through the index only, with fresh names, so that
       dead slots pile up */
    std::size_t indexed = 0, fresh = 0, builds = 0;
    bool duplicate = false;
    for(int step = 0; step != 40000; ++step) {
        /* Edits through the index keep it in step without building it again */
        if(step == 20000) builds = index.buildCount();
        /* A name there twice lasts one step */
        if(duplicate) map.EraseMember(map.MemberEnd() - 1);
        duplicate = false;
        const bool throughIndex = step >= 20000;
        const std::string key = throughIndex ? "f" + std::to_string(fresh++) : name();
        const rapidjson::SizeType count = map.MemberCount();
        static const int indexOnly[]{0, 1, 3, 4, 4, 5, 7, 11};
        switch(throughIndex ? indexOnly[random() % 8] : random() % 12) {
            case 0: case 1: case 2:
                if(!has(key)) index.append(map, string(key), rapidjson::Value{step}, allocator);
                break;
            case 3:
                /* The last one, which goes back last, as a creation undone
                   and redone */
                if(count) {
                    take(count - 1);
                    if(random() % 2) appendTaken();
                }
                break;
            case 4:
                if(count) take(random() % count);
                break;
            case 5: {
                /* A run taken from the middle and put back in reverse */
                const rapidjson::SizeType run = 1 + random() % 8;
                if(count > run) for(rapidjson::SizeType i = 0, at = random() % (count - run); i != run; ++i) take(at);
            } [[fallthrough]];
            case 6:
                while(!taken.empty() && random() % 4) {
                    Taken& last = taken.back();
                    const std::string text{last.name.GetString()};
                    if(!has(text) && last.position <= map.MemberCount())
                        index.insert(map, last.position, std::move(last.name), std::move(last.value), allocator);
                    taken.pop_back();
                }
                break;
            case 7:
                /* Anywhere, not where anything stood */
                if(!has(key)) index.insert(map, random() % (count + 1), string(key), rapidjson::Value{step}, allocator);
                break;
            case 8:
                /* Appended behind the index's back */
                if(!has(key)) map.AddMember(string(key), rapidjson::Value{step}, allocator);
                break;
            case 9:
                /* Taken out behind its back, maybe with another one appended
                   in its place or a name there twice */
                if(count > 1 && random() % 4 == 0) {
                    map.EraseMember(map.MemberBegin() + random() % count);
                    duplicate = random() % 8 == 0;
                    if(duplicate || (random() % 2 && !has(key)))
                        map.AddMember(string(duplicate ? std::string{map.MemberBegin()->name.GetString()} : key), rapidjson::Value{step}, allocator);
                }
                break;
            case 10:
                /* Replaced wholesale, or renamed in place with the host's call */
                if(random() % 40 == 0) {
                    rapidjson::Value copy{map, allocator};
                    map = std::move(copy);
                    taken.clear();
                } else if(count && random() % 40 == 0 && !has(key)) {
                    (map.MemberBegin() + random() % count)->name = string(key);
                    index.clear();
                    taken.clear();
                }
                break;
            case 11:
                /* Put back last rather than where it stood */
                if(!taken.empty() && !has(taken.back().name.GetString())) appendTaken();
                break;
            default: break;
        }

        indexed += map.MemberCount() >= MemberIndex::IndexedMemberCount;
        for(int probe = 0; probe != 3; ++probe) {
            const std::string text = probe ? name() : std::string{"small"};
            const rapidjson::Value& object = probe ? map : document;
            ASSERT_EQ(index.find(object, {text.data(), text.size()}), memberPosition(object, {text.data(), text.size()})) << "step " << step << " " << text;
        }
    }
    EXPECT_GT(indexed, 30000u);
    EXPECT_EQ(index.buildCount(), builds);
}

}
