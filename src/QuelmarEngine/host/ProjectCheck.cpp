#include "QuelmarEngine/host/ProjectCheck.h"

#include <algorithm>
#include <unordered_map>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/DocumentRules.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"
#include "QuelmarEngine/host/RecordReferences.h"
#include "QuelmarEngine/host/StrHash.h"

namespace QuelmarEngine {

namespace {

std::string text(const Containers::StringView view) {
    return {view.data(), view.size()};
}

/* "a", "a and b", "a, b and c" */
std::string listed(const std::vector<std::string>& items) {
    std::string out;
    for(std::size_t i = 0; i != items.size(); ++i)
        out += (i == 0 ? "" : i + 1 == items.size() ? " and " : ", ") + items[i];
    return out;
}

/* What a project check reads */
struct Maps {
    explicit Maps(const rapidjson::Value& document) {
        for(auto [name, map]: {std::pair{"objects", &objects}, {"skins", &skins}}) {
            const rapidjson::Value* const found = document.IsObject() ? findMember(document, name) : nullptr;
            *map = found && found->IsObject() ? found : nullptr;
        }
    }

    bool has(const ReferenceKind kind, const Containers::StringView key) const {
        const rapidjson::Value* const map = refersToObject(kind) ? objects : skins;
        return map && findMember(*map, key);
    }

    const rapidjson::Value* objects;
    const rapidjson::Value* skins;
};

std::string danglingLine(const ReferenceKind kind, const Containers::StringView from, const std::size_t index, const Containers::StringView to) {
    return RecordReference{kind, text(from), index, text(to)}.path() + ": there is no " + (refersToObject(kind) ? "object " : "skin ") + text(to);
}

ReferenceVisitor danglingReferences(const Maps& maps, std::vector<std::string>& out) {
    return [&maps, &out](const ReferenceKind kind, const Containers::StringView from, const std::size_t index, const Containers::StringView to) {
        if(!maps.has(kind, to)) out.push_back(danglingLine(kind, from, index, to));
    };
}

void addObjectProblems(const Maps& maps, const Containers::StringView key, const rapidjson::Value& record, std::vector<std::string>& out) {
    forEachObjectReference(key, record, danglingReferences(maps, out));
    const rapidjson::Value* const transformation = record.IsObject() ? findMember(record, "transformation") : nullptr;
    if(transformation)
        if(std::string problem = transformationProblem(key, *transformation); !problem.empty()) out.push_back(std::move(problem));
}

void addSkinProblems(const Maps& maps, const Containers::StringView key, const rapidjson::Value& record, std::vector<std::string>& out) {
    forEachSkinReference(key, record, danglingReferences(maps, out));
    const rapidjson::Value* const joints = record.IsObject() ? findMember(record, "joints") : nullptr;
    if(joints && joints->IsArray()) for(rapidjson::SizeType i = 0; i != joints->Size(); ++i)
        if(!(*joints)[i].IsString()) out.push_back(RecordReference{ReferenceKind::Joint, text(key), i, {}}.path() + ": a joint has to be the key of an object");
}

typedef std::unordered_map<Containers::StringView, char, StrHash, StrEq> StateMap;

Containers::StringView view(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

/* The record that the "parent" of @p record names, with its key in @p key */
const rapidjson::Value* parentOf(const rapidjson::Value& objects, const rapidjson::Value& record, Containers::StringView& key) {
    const rapidjson::Value* const parent = record.IsObject() ? findMember(record, "parent") : nullptr;
    if(!parent || !parent->IsString() || !parent->GetStringLength()) return nullptr;
    key = view(*parent);
    return findMember(objects, key);
}

/* Walks up from every record once; the keys are views of the document's */
void addCycles(const rapidjson::Value& objects, std::vector<std::string>& out) {
    enum: char { Unvisited, OnPath, Done };
    StateMap state;
    state.reserve(objects.MemberCount());
    std::vector<Containers::StringView> path;
    for(auto it = objects.MemberBegin(); it != objects.MemberEnd(); ++it) {
        Containers::StringView current = view(it->name);
        const rapidjson::Value* record = &it->value;
        path.clear();
        while(record) {
            char& visited = state[current];
            if(visited == Done) break;
            if(visited == OnPath) {
                std::size_t first = path.size();
                while(path[first - 1] != current) --first;
                std::vector<std::string> cycle;
                for(std::size_t i = first - 1; i != path.size(); ++i) cycle.push_back(text(path[i]));
                out.push_back(cycle.size() == 1 ? "object " + cycle[0] + " is its own parent" : "objects " + listed(cycle) + " are parents of each other");
                break;
            }
            visited = OnPath;
            path.push_back(current);
            record = parentOf(objects, *record, current);
        }
        for(const Containers::StringView key: path) state[key] = Done;
    }
}

/* Live objects sharing a name, in tree order; only @p name if not null */
void addSharedNames(QuelmarEditor& editor, const rapidjson::Value& objects, const Containers::StringView* const name, std::vector<std::string>& out) {
    struct Named {
        Containers::StringView name;
        unsigned short position;
        const char* key;
    };
    const ObjectKeyMap& keyToIndex = editor.objectLookup->keyToIndex();
    const auto indexToPosition = editor.scene->sceneGraph->indexToPosition();
    std::vector<Named> named;
    for(auto it = objects.MemberBegin(); it != objects.MemberEnd(); ++it) {
        const rapidjson::Value* const value = it->value.IsObject() ? findMember(it->value, "name") : nullptr;
        if(!value || !value->IsString() || (name && view(*value) != *name)) continue;
        const auto found = keyToIndex.find(Containers::String{view(it->name)});
        if(found == keyToIndex.end() || !indexToPosition[found->second]) continue;
        named.push_back({view(*value), indexToPosition[found->second], it->name.GetString()});
    }

    /* Sorted by name, objects of a name in tree order */
    std::sort(named.begin(), named.end(), [](const Named& a, const Named& b) {
        if(a.name == b.name) return a.position < b.position;
        return std::lexicographical_compare(a.name.data(), a.name.data() + a.name.size(), b.name.data(), b.name.data() + b.name.size());
    });
    std::vector<std::pair<unsigned short, std::string>> lines;
    for(std::size_t first = 0, last; first != named.size(); first = last) {
        for(last = first + 1; last != named.size() && named[last].name == named[first].name; ++last) {}
        if(last - first < 2) continue;
        std::vector<std::string> keys;
        for(std::size_t i = first; i != last; ++i) keys.push_back(named[i].key);
        const rapidjson::Value quoted{rapidjson::StringRef(named[first].name.data(), rapidjson::SizeType(named[first].name.size()))};
        lines.emplace_back(named[first].position, "objects " + listed(keys) + (keys.size() == 2 ? " are both" : " are all") + " named " + writeJson(quoted));
    }
    std::sort(lines.begin(), lines.end());
    for(auto& line: lines) out.push_back(std::move(line.second));
}

}

std::vector<std::string> findInconsistencies(QuelmarEditor& editor) {
    const rapidjson::Value& document = *editor.data.project.document;
    const Maps maps{document};
    std::vector<std::string> out;
    if(maps.objects) for(auto it = maps.objects->MemberBegin(); it != maps.objects->MemberEnd(); ++it)
        addObjectProblems(maps, {it->name.GetString(), it->name.GetStringLength()}, it->value, out);
    if(maps.skins) for(auto it = maps.skins->MemberBegin(); it != maps.skins->MemberEnd(); ++it)
        addSkinProblems(maps, {it->name.GetString(), it->name.GetStringLength()}, it->value, out);
    if(maps.objects) {
        addCycles(*maps.objects, out);
        addSharedNames(editor, *maps.objects, nullptr, out);
    }
    return out;
}

std::vector<std::string> findInconsistenciesAround(QuelmarEditor& editor, const JsonPointer& pointer) {
    if(!pointer.tokenCount()) return {};
    const Containers::StringView map = pointer.token(0).name;
    if(map != "objects" && map != "skins") return {};
    if(pointer.tokenCount() == 1) return findInconsistencies(editor);

    const rapidjson::Value& document = *editor.data.project.document;
    const Maps maps{document};
    const Containers::StringView key = pointer.token(1).name;
    const bool isObject = map == "objects";
    std::vector<std::string> out;
    const rapidjson::Value* const records = isObject ? maps.objects : maps.skins;
    const rapidjson::Value* const record = records ? findMember(*records, key) : nullptr;
    if(!record) {
        /* Gone: what named it names nothing now */
        forEachReference(document, [&](const ReferenceKind kind, const Containers::StringView from, const std::size_t index, const Containers::StringView to) {
            if(refersToObject(kind) == isObject && to == key) out.push_back(danglingLine(kind, from, index, to));
        });
        return out;
    }
    if(!isObject) {
        addSkinProblems(maps, key, *record, out);
        return out;
    }
    addObjectProblems(maps, key, *record, out);
    /* What can make it share its name with another live object */
    const Containers::StringView member = pointer.tokenCount() > 2 ? pointer.token(2).name : Containers::StringView{};
    const rapidjson::Value* const name = record->IsObject() ? findMember(*record, "name") : nullptr;
    if(name && name->IsString() && (member.isEmpty() || member == "name" || member == "parent" || member == "deleted")) {
        const Containers::StringView nameView = view(*name);
        addSharedNames(editor, *maps.objects, &nameView, out);
    }
    return out;
}

}
