#include "QuelmarEngine/host/NameIndex.h"

#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/MemberIndex.h"

namespace QuelmarEngine {

namespace {

std::string toString(const Containers::StringView text) {
    return std::string(text.data(), text.size());
}

/* The "name" of a record, if it is a string */
bool recordName(const rapidjson::Value* const record, Containers::StringView& out) {
    if(!record || !record->IsObject()) return false;
    const rapidjson::Value* const name = findMember(*record, "name");
    if(!name || !name->IsString()) return false;
    out = {name->GetString(), name->GetStringLength()};
    return true;
}

/* The member of @p object named @p key, through the member index */
const rapidjson::Value* memberOf(MemberIndex& members, const rapidjson::Value& object, const Containers::StringView key) {
    const rapidjson::SizeType position = members.find(object, key);
    return position == object.MemberCount() ? nullptr : &(object.MemberBegin() + position)->value;
}

}

/* Keys of one map's records by name, and each key's name, so that a record
   whose name changes is moved in O(1) */
class NameIndex::Map {
    public:
        explicit Map(const Containers::StringView type): _type{toString(type)} {}

        bool isFor(const Containers::StringView type) const {
            return type.size() == _type.size() && std::memcmp(type.data(), _type.data(), type.size()) == 0;
        }

        void build(const rapidjson::Value& map) {
            _byKey.clear();
            _byName.clear();
            _byKey.reserve(map.MemberCount());
            for(auto record = map.MemberBegin(); record != map.MemberEnd(); ++record) {
                Containers::StringView name;
                if(recordName(&record->value, name))
                    add({record->name.GetString(), record->name.GetStringLength()}, name);
            }
        }

        /* Keys whose record had @p name when last seen, or null */
        const std::vector<std::string>* keysOf(const Containers::StringView name) const {
            const auto found = _byName.find(toString(name));
            return found == _byName.end() ? nullptr : &found->second;
        }

        /* Takes in the name that @p record, the record of @p key or null,
           has now */
        void update(const Containers::StringView key, const rapidjson::Value* const record) {
            Containers::StringView name;
            const bool named = recordName(record, name);
            const auto found = _byKey.find(toString(key));
            if(found != _byKey.end()) {
                if(named && Containers::StringView{found->second.name.data(), found->second.name.size()} == name) return;
                remove(found);
            }
            if(named) add(key, name);
        }

    private:
        struct Entry {
            std::string name;
            /* Where the key stands among the keys of its name */
            std::uint32_t slot;
        };

        void add(const Containers::StringView key, const Containers::StringView name) {
            std::vector<std::string>& keys = _byName[toString(name)];
            _byKey.emplace(toString(key), Entry{toString(name), std::uint32_t(keys.size())});
            keys.push_back(toString(key));
        }

        void remove(const std::unordered_map<std::string, Entry>::iterator found) {
            const auto named = _byName.find(found->second.name);
            std::vector<std::string>& keys = named->second;
            const std::uint32_t slot = found->second.slot;
            if(slot + 1 != keys.size()) {
                keys[slot] = std::move(keys.back());
                _byKey[keys[slot]].slot = slot;
            }
            keys.pop_back();
            if(keys.empty()) _byName.erase(named);
            _byKey.erase(found);
        }

        std::string _type;
        std::unordered_map<std::string, Entry> _byKey;
        std::unordered_map<std::string, std::vector<std::string>> _byName;
};

NameIndex::NameIndex() = default;

NameIndex::~NameIndex() = default;

void NameIndex::bind(const rapidjson::Value& root) {
    if(&root == _root) return;
    clear();
    _root = &root;
}

void NameIndex::clear() {
    _maps.clear();
}

NameIndex::Map* NameIndex::mapOf(const Containers::StringView type) {
    for(Containers::Pointer<Map>& map: _maps)
        if(map->isFor(type)) return map.get();
    return nullptr;
}

const rapidjson::Value* NameIndex::find(MemberIndex& members, const Containers::StringView type, const Containers::StringView name) {
    const rapidjson::Value* const map = _root && _root->IsObject() ? findMember(*_root, type) : nullptr;
    if(!map || !map->IsObject()) return nullptr;

    Map* index = mapOf(type);
    if(!index) {
        _maps.emplace_back(new Map{type});
        index = _maps.back().get();
        index->build(*map);
    }

    /* A record found must still have the name; if none of those that had it
       does, a host changed the map directly, so it is indexed again */
    for(int attempt = 0; attempt != 2; ++attempt) {
        const std::vector<std::string>* const keys = index->keysOf(name);
        if(!keys) return nullptr;
        for(const std::string& key: *keys) {
            const rapidjson::Value* const record = memberOf(members, *map, {key.data(), key.size()});
            Containers::StringView recordsName;
            if(recordName(record, recordsName) && recordsName == name) return record;
        }
        index->build(*map);
    }
    return nullptr;
}

void NameIndex::valueChanged(MemberIndex& members, const JsonPointer& pointer) {
    const std::size_t count = pointer.tokenCount();
    if(!count) {
        clear();
        return;
    }
    Map* const index = mapOf(pointer.token(0).name);
    if(!index) return;

    /* A record's name changes with the record or with its "name" */
    if(count > 2 && pointer.token(2).name != "name") return;
    const rapidjson::Value* const map = count > 1 && _root->IsObject() ? findMember(*_root, pointer.token(0).name) : nullptr;
    if(!map || !map->IsObject()) {
        /* The whole map changed: indexed again when next needed */
        for(std::size_t i = 0; i != _maps.size(); ++i) if(_maps[i].get() == index) {
            if(i + 1 != _maps.size()) _maps[i] = std::move(_maps.back());
            _maps.pop_back();
            break;
        }
        return;
    }
    const Containers::StringView key = pointer.token(1).name;
    index->update(key, memberOf(members, *map, key));
}

}
