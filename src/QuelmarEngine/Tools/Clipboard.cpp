/* Copying: the selected objects and the skins they use as clipboard text,
   or as the document that text reads back as. */

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <sstream>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Clipboard.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

/* The value at the path of @p names, found as the path finds it, but without
   making and parsing the path text where every step is into an object */
const rapidjson::Value* valueAt(ProjectFile& project, const std::initializer_list<const char*> names) {
    const rapidjson::Value* value = project.document.get();
    for(const char* const name: names) {
        if(!value->IsObject()) {
            std::string path;
            for(const char* const token: names) appendPointerToken(path, token);
            return project.getValue(path.data(), false);
        }
        value = project.findMember(*value, name);
        if(!value) return nullptr;
    }
    return value;
}

/* Distinct keys of the skins that records reference through their own
   "skin", in order of first reference */
struct SkinKeys {
    void add(ProjectFile& project, const rapidjson::Value* const record) {
        const rapidjson::Value* const skin = record && record->IsObject() ? project.findMember(*record, "skin") : nullptr;
        if(skin && skin->IsString() && seen.insert(skin->GetString()).second) keys.add(skin->GetString(), -1);
    }

    StringArray keys{24};
    std::unordered_set<std::string> seen;
};

}

namespace Implementation {

StringArray referencedSkins(QuelmarEditor& editor, const StringArrayView& objectKeys) {
    SkinKeys skins;
    for(std::size_t i = 0; i != objectKeys.size(); ++i)
        skins.add(editor.data.project, valueAt(editor.data.project, {"objects", objectKeys.get(i)}));
    return std::move(skins.keys);
}

}

std::string toString(QuelmarEditor& editor, const char* const name, const StringArrayView& keys) {
    /* The root has no record and is never in a key list, so the empty key is
       a key like any other */
    if(keys.isEmpty()) return "{}";

    std::ostringstream out;
    {
        /* The host's value printer writes only into a Debug, so the whole
           map goes through one redirected to the string */
        Utility::Debug redirect{&out};
        Utility::Debug{} << "{";
        const std::size_t last = keys.size() - 1;
        for(std::size_t i = 0; i != keys.size(); ++i) {
            const char* const key = keys.get(i);
            /* Written as the printer writes strings, so that a key holding a
               quote, a backslash or a control character still makes JSON; any
               other key comes out byte for byte */
            Utility::Debug line{Utility::Debug::Flag::NoSpace};
            line << writeJson(rapidjson::Value{rapidjson::StringRef(key)}) << ": " << editor.data.project[name]->subValue(key).readValue();
            if(i != last) line << ",";
        }
        Utility::Debug{} << "}";
    }
    return out.str();
}

namespace Implementation {

std::string clipboardText(QuelmarEditor& editor, const StringArrayView& objectKeys) {
    StringArray skins = Implementation::referencedSkins(editor, objectKeys);
    std::string text = "{\"objects\":";
    text += toString(editor, "objects", objectKeys);
    if(!skins.isEmpty()) {
        text += ",\"skins\":";
        text += toString(editor, "skins", skins);
    }
    text += "}";
    return text;
}

}

namespace {

/* Nesting of a record, itself counted, past which it takes the text path.
   The text puts records two levels down; the margin keeps clear of any
   difference in how the reader counts, as the text path is exact anyway. */
constexpr std::size_t MaxSharedDepth = JsonMaxDepth - 8;

/* Whether the text of @p record reads back the same: the writer turns a
   number JSON can't hold into null, and the reader refuses deep nesting.
   Walked without recursion, as a record may nest deeper than the stack
   allows; @p stack is scratch space. */
bool readsBackTheSame(const rapidjson::Value& record, std::vector<std::pair<const rapidjson::Value*, std::size_t>>& stack) {
    stack.clear();
    stack.emplace_back(&record, 1);
    while(!stack.empty()) {
        const rapidjson::Value& value = *stack.back().first;
        const std::size_t depth = stack.back().second;
        stack.pop_back();
        if(value.IsDouble() && !std::isfinite(value.GetDouble())) return false;
        if(value.IsObject()) {
            if(depth > MaxSharedDepth) return false;
            for(auto it = value.MemberBegin(); it != value.MemberEnd(); ++it)
                stack.emplace_back(&it->value, depth + 1);
        } else if(value.IsArray()) {
            if(depth > MaxSharedDepth) return false;
            for(const rapidjson::Value& element: value.GetArray())
                stack.emplace_back(&element, depth + 1);
        }
    }
    return true;
}

/* The map @p name restricted to @p keys as the text reads back, each record
   a shallow copy of the document's; the pool never frees what it holds */
static_assert(!JsonAllocator::kNeedFree, "shared records rely on a pool that never frees");
bool sharedMap(QuelmarEditor& editor, const char* const name, const StringArrayView& keys, rapidjson::Document& out, std::vector<std::pair<const rapidjson::Value*, std::size_t>>& stack, SkinKeys* const skins) {
    static const rapidjson::Value absent;
    rapidjson::Value map{rapidjson::kObjectType};
    for(std::size_t i = 0; i != keys.size(); ++i) {
        const char* const key = keys.get(i);
        const rapidjson::Value* const found = valueAt(editor.data.project, {name, key});
        const rapidjson::Value& record = found ? *found : absent;
        if(skins) skins->add(editor.data.project, found);
        if(!readsBackTheSame(record, stack)) return false;
        rapidjson::Value shared;
        std::memcpy(static_cast<void*>(&shared), static_cast<const void*>(&record), sizeof(rapidjson::Value));
        map.AddMember(rapidjson::Value{key, out.GetAllocator()}, shared, out.GetAllocator());
    }
    out.AddMember(rapidjson::StringRef(name), map, out.GetAllocator());
    return true;
}

}

namespace Implementation {

bool clipboardDocument(QuelmarEditor& editor, const StringArrayView& objectKeys, rapidjson::Document& out) {
    SkinKeys skins;
    std::vector<std::pair<const rapidjson::Value*, std::size_t>> stack;
    out.SetObject();
    return sharedMap(editor, "objects", objectKeys, out, stack, &skins) &&
        (skins.keys.isEmpty() || sharedMap(editor, "skins", skins.keys, out, stack, nullptr));
}

}

std::string copySelected(QuelmarEditor& editor) {
    return Implementation::clipboardText(editor, selectedObjectKeys(editor));
}

std::string copySelectedTrees(QuelmarEditor& editor) {
    return Implementation::clipboardText(editor, selectedObjectKeysWithTrees(editor));
}

}
