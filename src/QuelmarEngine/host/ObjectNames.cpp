#include "QuelmarEngine/host/ObjectNames.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <Corrade/Containers/String.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/Glob.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

/* A path component as the key it stands for */
std::string unescapedToken(const char* token) {
    std::string key;
    for(; *token; ++token) {
        if(*token == '~' && (token[1] == '0' || token[1] == '1')) key += *++token == '0' ? '~' : '/';
        else key += *token;
    }
    return key;
}

const rapidjson::Value* nameOf(const rapidjson::Value* const record) {
    const rapidjson::Value* const name = record && record->IsObject() ? findMember(*record, "name") : nullptr;
    return name && name->IsString() ? name : nullptr;
}

}

void ObjectNames::attach(QuelmarEditor& editor) {
    _editor = &editor;
    _allStale = true;
    editor.changeManager->addChangeHandler("objects", [](const Change&, const Containers::ArrayView<const Containers::String> path, void* const self) {
        static_cast<ObjectNames*>(self)->noteChange(path);
    }, this);
}

void ObjectNames::noteChange(const Containers::ArrayView<const Containers::String> path) {
    /* The handler hears of "objects" anywhere in a path; only the map's own
       records, and their names, matter. Components keep the path's zero
       byte on the last one, so they compare as C strings. */
    if(_allStale || path.size() < 2 || std::strcmp(path[1].data(), "objects") != 0) return;
    if(path.size() == 2) _allStale = true;
    else if(path.size() == 3 || std::strcmp(path[3].data(), "name") == 0) _staleKeys.insert(unescapedToken(path[2].data()));
}

void ObjectNames::forget(const std::string& key) {
    const auto found = _nameOfKey.find(key);
    if(found == _nameOfKey.end()) return;
    const auto index = _indexOfName.find(found->second);
    std::vector<std::string>& keys = _named[index->second].keys;
    std::swap(*std::find(keys.begin(), keys.end(), key), keys.back());
    keys.pop_back();
    /* The last name takes the place of one that no record has any more */
    if(keys.empty()) {
        if(index->second + 1 != _named.size()) {
            _named[index->second] = std::move(_named.back());
            _indexOfName.at(_named[index->second].name) = index->second;
        }
        _named.pop_back();
        _indexOfName.erase(index);
    }
    _nameOfKey.erase(found);
}

void ObjectNames::enter(const std::string& key, const rapidjson::Value* const record) {
    const rapidjson::Value* const name = nameOf(record);
    if(!name) return;
    std::string text{name->GetString(), name->GetStringLength()};
    const auto index = _indexOfName.emplace(text, _named.size());
    if(index.second) _named.push_back({text, {}});
    _named[index.first->second].keys.push_back(key);
    _nameOfKey.emplace(key, std::move(text));
}

void ObjectNames::update() {
    if(!_editor) return;
    const rapidjson::Value* objects = findMember(*_editor->data.project.document, "objects");
    if(objects && !objects->IsObject()) objects = nullptr;

    if(_allStale) {
        _nameOfKey.clear();
        _named.clear();
        _indexOfName.clear();
        _staleKeys.clear();
        _allStale = false;
        if(objects) for(auto record = objects->MemberBegin(); record != objects->MemberEnd(); ++record)
            enter({record->name.GetString(), record->name.GetStringLength()}, &record->value);
        return;
    }
    for(const std::string& key: _staleKeys) {
        forget(key);
        enter(key, objects ? _editor->data.project.findMember(*objects, {key.data(), key.size()}) : nullptr);
    }
    _staleKeys.clear();
}

const std::string* ObjectNames::name(const Containers::StringView key) {
    update();
    const auto found = _nameOfKey.find(std::string{key.data(), key.size()});
    return found == _nameOfKey.end() ? nullptr : &found->second;
}

const std::vector<std::string>& ObjectNames::keys(const Containers::StringView name) {
    static const std::vector<std::string> none;
    update();
    const auto found = _indexOfName.find(std::string{name.data(), name.size()});
    return found == _indexOfName.end() ? none : _named[found->second].keys;
}

std::vector<std::string> ObjectNames::keysMatching(const Containers::StringView pattern) {
    update();
    /* Each name once, however many records have it */
    std::vector<std::string> out;
    for(const Named& named: _named)
        if(matchesGlob(pattern, {named.name.data(), named.name.size()}))
            out.insert(out.end(), named.keys.begin(), named.keys.end());
    return out;
}

}
