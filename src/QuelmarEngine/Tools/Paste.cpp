/* Pasting: clipboard text into the project under fresh keys, and the paste
   and duplicate commands built on it. A duplicate skips the text where it
   can and pastes what the text would read back as. */

#include <cstring>
#include <string>
#include <unordered_map>
#include <utility>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Clipboard.h"
#include "QuelmarEngine/Tools/Implementation/Selection.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

/* Key in the clipboard text to the key that replaces it */
typedef std::unordered_map<std::string, Containers::String> KeyMap;

bool isString(const rapidjson::Value* const value) {
    return value && value->IsString();
}

/* The new key of the record that @p reference names, if it is a string
   naming a pasted one. Compared with its length, as a key in the text may
   hold an escaped NUL. */
const Containers::String* find(const KeyMap& map, const rapidjson::Value* const value) {
    if(!isString(value)) return nullptr;
    const auto found = map.find(std::string{value->GetString(), value->GetStringLength()});
    return found == map.end() ? nullptr : &found->second;
}

/* The new key of the text's @p key, made on first sight; true if it's new */
bool newKeyFor(QuelmarEditor& editor, KeyMap& map, const rapidjson::Value& key, Containers::String*& out) {
    const auto inserted = map.emplace(std::string{key.GetString(), key.GetStringLength()}, Containers::String{});
    if(inserted.second) inserted.first->second = editor.data.project.generateId();
    out = &inserted.first->second;
    return inserted.second;
}

std::string recordPath(const char* const map, const Containers::String& key) {
    std::string path = "/";
    path += map;
    appendPointerToken(path, {key.data(), key.size()});
    return path;
}

/* The path up to its first zero byte, as a push of its text takes it */
Containers::Array<char> pathArray(const std::string& path) {
    const std::size_t size = std::strlen(path.data());
    Containers::Array<char> out{NoInit, size + 1};
    std::memcpy(out.data(), path.data(), size + 1);
    return out;
}

/* The rewrites of "parent" and of joints go straight into the document, not
   into the history, so the record that the push made would bring back the
   old keys on redo. Mirroring each rewrite into that record keeps redo
   equal to the paste. */
void mirrorParent(ChangeManager& changes, Change& record, const rapidjson::Value& parent) {
    rapidjson::Value& stored = *record.newValue;
    rapidjson::Value copy{parent, changes.allocator()};
    if(rapidjson::Value* const member = findMember(stored, "parent")) *member = std::move(copy);
    else stored.AddMember(rapidjson::Value{"parent", changes.allocator()}, std::move(copy), changes.allocator());
}

/* The new key of the pasted object that the "parent" @p parentKey names, if
   any. A "parent" of "" means the root, as it does in the document, even
   when a pasted object has the empty key. */
const Containers::String* pastedParent(const KeyMap& objectKeys, const rapidjson::Value* const parentKey) {
    return isString(parentKey) && parentKey->GetStringLength() ? find(objectKeys, parentKey) : nullptr;
}

/* Pushes a copy of the object @p record under @p key with its "parent"
   rewired: to the new key of a pasted parent, else to @p parent, else null.
   Rewired before the push, the document and the history get the same record
   without a write behind the history's back. */
void pushObject(QuelmarEditor& editor, const KeyMap& objectKeys, const char* const parent, const Containers::String& key, const rapidjson::Value& record) {
    ChangeManager& changes = *editor.changeManager;
    JsonAllocator& allocator = changes.allocator();

    rapidjson::Value newParent;
    if(const Containers::String* const pasted = pastedParent(objectKeys, findMember(record, "parent")))
        newParent.SetString(pasted->data(), rapidjson::SizeType(pasted->size()), allocator);
    else if(parent)
        newParent.SetString(parent, allocator);

    Containers::Pointer<rapidjson::Value> copy{new rapidjson::Value{record, allocator}};
    if(rapidjson::Value* const member = findMember(*copy, "parent")) *member = std::move(newParent);
    else copy->AddMember(rapidjson::Value{"parent", allocator}, newParent, allocator);

    const int before = changes.lastChangeIndex();
    const std::string path = recordPath("objects", key);
    changes.pushChange(pathArray(path), std::move(copy));
    if(changes.lastChangeIndex() != before) return;

    /* Refused, for a key that would pad "objects" made an array: the parent
       goes where the path leads and into the newest record, as it always
       did */
    SubValueAccess parentAccess = editor.data.project["objects"]->subValue(key.data())->subValue("parent");
    if(const Containers::String* const pasted = pastedParent(objectKeys, parentAccess.value())) parentAccess.setString(*pasted, false);
    else if(parent) parentAccess.setString(parent, false);
    else parentAccess.setNull(false);
    mirrorParent(changes, changes.lastChange(), *parentAccess.value());
}

void mirrorJoint(ChangeManager& changes, Change& record, rapidjson::SizeType index, const Containers::String& key) {
    rapidjson::Value* const joints = findMember(*record.newValue, "joints");
    (*joints)[index].SetString(key.data(), rapidjson::SizeType(key.size()), changes.allocator());
}

}

StringArray addFromString(QuelmarEditor& editor, const char* const parent, const std::string& text) {
    /* The reader neither recurses nor accepts unbounded nesting, so no text
       can exhaust the stack */
    rapidjson::Document document;
    JsonParseError error;
    parseJson(document, {text.data(), std::strlen(text.c_str())}, error);
    if(!document.IsObject()) {
        Utility::Error{} << "Pasted JSON is not a JSON object";
        return StringArray{24};
    }
    return Implementation::addFromDocument(editor, parent, document);
}

StringArray Implementation::addFromDocument(QuelmarEditor& editor, const char* const parent, const rapidjson::Value& document) {
    ProjectFile& project = editor.data.project;
    StringArray result{24};
    KeyMap objectKeys, skinKeys;
    ChangeManager& changes = *editor.changeManager;
    changes.beginGroup();

    /* Clipboard text is untrusted: a map that isn't an object counts as
       empty and a record that isn't an object is skipped */
    const rapidjson::Value* const objects = findMember(document, "objects");
    if(objects && objects->IsObject()) for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it) {
        if(!it->value.IsObject()) continue;
        Containers::String* key;
        if(newKeyFor(editor, objectKeys, it->name, key)) result.add(key->data(), -1);

        pushObject(editor, objectKeys, parent, *key, it->value);
    }

    const rapidjson::Value* const skins = findMember(document, "skins");
    if(skins) {
        if(skins->IsObject()) for(auto it = skins->MemberBegin(); it != skins->MemberEnd(); ++it) {
            if(!it->value.IsObject()) continue;
            Containers::String* key;
            newKeyFor(editor, skinKeys, it->name, key);

            changes.pushChange(recordPath("skins", *key).data(), it->value, false);
            Change& record = changes.lastChange();

            const ValueAccess joints{project["skins"]->subValue(key->data())->subValue("joints")};
            const std::size_t count = joints.size();
            for(std::size_t i = 0; i != count; ++i) {
                SubValueAccess joint = joints[int(i)];
                const rapidjson::Value* const objectKey = joint.value();
                if(!isString(objectKey)) continue;
                if(const Containers::String* const pasted = find(objectKeys, objectKey)) {
                    joint.setString(*pasted, false);
                    mirrorJoint(changes, record, rapidjson::SizeType(i), *pasted);
                } else Utility::Warning{} << "Broken joint reference" << objectKey->GetString() << "found while pasting, make sure to copy all joints.";
            }
        }

        for(std::size_t i = 0; i != result.size(); ++i) {
            const char* const key = result.get(i);
            const ValueAccess object{project["objects"]->subValue(key)};

            /* Every read walks from the root to the record again, so each
               member is read once; an absent one reads as no string */
            const ValueAccess skin{object["skin"]};
            const rapidjson::Value* const skinKey = skin.value();
            if(isString(skinKey)) {
                if(const Containers::String* const pasted = find(skinKeys, skinKey))
                    changes.pushChange(skin.path().data(), pasted->data(), false);
                else Utility::Warning{} << "Skin" << skinKey->GetString() << "referenced by object" << key << "was not part of pasted content.";
            }

            const ValueAccess components{object["components"]};
            for(std::size_t c = 0, count = components.size(); c != count; ++c) {
                const ValueAccess component{components[int(c)]};
                const rapidjson::Value* const type = component["type"].value();
                if(!isString(type) || type->GetStringLength() != 4 || std::memcmp(type->GetString(), "mesh", 4) != 0) continue;
                const ValueAccess meshSkin{component["mesh"]->subValue("skin")};
                if(const Containers::String* const pasted = find(skinKeys, meshSkin.value()))
                    changes.pushChange(meshSkin.path().data(), pasted->data(), false);
            }
        }
    }

    changes.commit();
    return result;
}

void paste(QuelmarEditor& editor, const std::string& text) {
    const std::pair<const char*, const char*> target = Implementation::selectedObjectAndParent(editor);
    StringArray keys = addFromString(editor, target.second, text);
    selectObjects(editor, keys);
}

void pasteChild(QuelmarEditor& editor, const std::string& text) {
    const std::pair<const char*, const char*> target = Implementation::selectedObjectAndParent(editor);
    StringArray keys = addFromString(editor, target.first, text);
    selectObjects(editor, keys);
}

StringArray Implementation::duplicateObjects(QuelmarEditor& editor, const char* const parent, const StringArrayView& objectKeys) {
    {
        rapidjson::Document shared;
        if(clipboardDocument(editor, objectKeys, shared)) return addFromDocument(editor, parent, shared);
    }
    return addFromString(editor, parent, clipboardText(editor, objectKeys));
}

void duplicate(QuelmarEditor& editor) {
    const std::pair<const char*, const char*> target = Implementation::selectedObjectAndParent(editor);
    StringArray keys = Implementation::duplicateObjects(editor, target.second, selectedObjectKeys(editor));
    selectObjects(editor, keys);
}

StringArray duplicateTrees(QuelmarEditor& editor) {
    const StringArray objectKeys = selectedObjectKeysWithTrees(editor);
    const std::pair<const char*, const char*> target = Implementation::selectedObjectAndParent(editor);
    StringArray keys = Implementation::duplicateObjects(editor, target.second, objectKeys);
    selectObjects(editor, keys);
    return keys;
}

}
