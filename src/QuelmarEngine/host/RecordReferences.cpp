#include "QuelmarEngine/host/RecordReferences.h"

#include <cstring>

#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine {

namespace {

Containers::StringView view(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

/* The string member @p name of @p object, or null */
const rapidjson::Value* stringMember(const rapidjson::Value& object, const char* const name) {
    if(!object.IsObject()) return nullptr;
    const rapidjson::Value* const member = findMember(object, name);
    return member && member->IsString() ? member : nullptr;
}

bool isMesh(const rapidjson::Value& component) {
    const rapidjson::Value* const type = stringMember(component, "type");
    return type && view(*type) == "mesh";
}

}

bool refersToObject(const ReferenceKind kind) {
    return kind == ReferenceKind::Parent || kind == ReferenceKind::Joint;
}

std::string RecordReference::path() const {
    std::string path = kind == ReferenceKind::Joint ? "/skins" : "/objects";
    appendPointerToken(path, {from.data(), from.size()});
    switch(kind) {
        case ReferenceKind::Parent: return path + "/parent";
        case ReferenceKind::Skin: return path + "/skin";
        case ReferenceKind::MeshSkin: return path + "/components/" + std::to_string(index) + "/mesh/skin";
        case ReferenceKind::Joint: break;
    }
    return path + "/joints/" + std::to_string(index);
}

void forEachObjectReference(const Containers::StringView key, const rapidjson::Value& record, const ReferenceVisitor& visit) {
    if(const rapidjson::Value* const parent = stringMember(record, "parent"); parent && parent->GetStringLength())
        visit(ReferenceKind::Parent, key, 0, view(*parent));
    if(const rapidjson::Value* const skin = stringMember(record, "skin"))
        visit(ReferenceKind::Skin, key, 0, view(*skin));
    const rapidjson::Value* const components = record.IsObject() ? findMember(record, "components") : nullptr;
    if(!components || !components->IsArray()) return;
    for(rapidjson::SizeType i = 0; i != components->Size(); ++i) {
        const rapidjson::Value& component = (*components)[i];
        if(!isMesh(component)) continue;
        const rapidjson::Value* const mesh = findMember(component, "mesh");
        if(const rapidjson::Value* const skin = mesh ? stringMember(*mesh, "skin") : nullptr)
            visit(ReferenceKind::MeshSkin, key, i, view(*skin));
    }
}

void forEachSkinReference(const Containers::StringView key, const rapidjson::Value& record, const ReferenceVisitor& visit) {
    const rapidjson::Value* const joints = record.IsObject() ? findMember(record, "joints") : nullptr;
    if(!joints || !joints->IsArray()) return;
    for(rapidjson::SizeType i = 0; i != joints->Size(); ++i)
        if((*joints)[i].IsString()) visit(ReferenceKind::Joint, key, i, view((*joints)[i]));
}

void forEachReference(const rapidjson::Value& document, const ReferenceVisitor& visit) {
    if(!document.IsObject()) return;
    if(const rapidjson::Value* const objects = findMember(document, "objects"); objects && objects->IsObject())
        for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it)
            forEachObjectReference(view(it->name), it->value, visit);
    if(const rapidjson::Value* const skins = findMember(document, "skins"); skins && skins->IsObject())
        for(auto it = skins->MemberBegin(); it != skins->MemberEnd(); ++it)
            forEachSkinReference(view(it->name), it->value, visit);
}

std::vector<RecordReference> referencesInto(const rapidjson::Value& document, const std::unordered_set<std::string>& objects, const std::unordered_set<std::string>& skins) {
    std::vector<RecordReference> found;
    std::string from, to;
    forEachReference(document, [&](const ReferenceKind kind, const Containers::StringView fromKey, const std::size_t index, const Containers::StringView toKey) {
        to.assign(toKey.data(), toKey.size());
        if(!(refersToObject(kind) ? objects : skins).count(to)) return;
        from.assign(fromKey.data(), fromKey.size());
        /* A removed record's own references go with it */
        if((kind == ReferenceKind::Joint ? skins : objects).count(from)) return;
        found.push_back({kind, from, index, to});
    });
    return found;
}

std::string listReferences(const std::vector<RecordReference>& references, const bool withTarget) {
    constexpr std::size_t Listed = 10;
    std::string out;
    for(std::size_t i = 0; i != references.size() && i != Listed; ++i) {
        if(i) out += ", ";
        out += references[i].path();
        if(withTarget) out += " (" + references[i].to + ")";
    }
    if(references.size() > Listed) out += " and " + std::to_string(references.size() - Listed) + " more";
    return out;
}

}
