#include "QuelmarEngine/JsonPointer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <Corrade/Utility/Assert.h>

namespace QuelmarEngine {

namespace {

/* Objects with at least this many members get a name index; below it a scan
   is as fast */
constexpr rapidjson::SizeType IndexedMemberCount = 64;

/* Member positions by name for one large object. Valid while the object's
   member array is the one it was built from and holds as many members;
   adding and erasing through this file keeps it so. */
struct MemberIndex {
    const rapidjson::Value::Member* members;
    rapidjson::SizeType count;
    std::unordered_map<std::string, rapidjson::SizeType> positions;
};

std::unordered_map<const rapidjson::Value*, MemberIndex>& memberIndices() {
    static std::unordered_map<const rapidjson::Value*, MemberIndex> indices;
    return indices;
}

/* Documents whose top-level maps get indices. Keying indices by address is
   safe only for values whose addresses no other value takes while the
   index lives: the members of a registered root are such values, since the
   root's pool never frees and a dropped root clears every index. */
std::vector<const rapidjson::Value*>& indexedRoots() {
    static std::vector<const rapidjson::Value*> roots;
    return roots;
}

bool isTopLevelMap(const rapidjson::Value& object) {
    const auto address = reinterpret_cast<std::uintptr_t>(&object);
    for(const rapidjson::Value* const root: indexedRoots()) {
        if(!root->IsObject() || !root->MemberCount()) continue;
        const auto first = reinterpret_cast<std::uintptr_t>(&root->MemberBegin()->value);
        const auto last = reinterpret_cast<std::uintptr_t>(&(root->MemberEnd() - 1)->value);
        if(address >= first && address <= last) return true;
    }
    return false;
}

const rapidjson::Value::Member* membersOf(const rapidjson::Value& object) {
    return object.MemberCount() ? &*object.MemberBegin() : nullptr;
}

/* The index of a large object, brought up to date, or null for a small one */
MemberIndex* memberIndex(const rapidjson::Value& object) {
    const rapidjson::SizeType count = object.MemberCount();
    if(count < IndexedMemberCount || !isTopLevelMap(object)) return nullptr;

    MemberIndex& index = memberIndices()[&object];
    const rapidjson::Value::Member* const members = membersOf(object);
    rapidjson::SizeType from = index.count;
    /* Another array, or fewer members than known: start over. More members
       in the same array were appended in place. */
    if(index.members != members || index.count > count) {
        index.members = members;
        index.positions.clear();
        index.positions.reserve(count);
        from = 0;
    }
    for(rapidjson::SizeType i = from; i != count; ++i) {
        const rapidjson::Value& name = members[i].name;
        /* The first of equal names wins, as with a scan */
        index.positions.emplace(std::string{name.GetString(), name.GetStringLength()}, i);
    }
    index.count = count;
    return &index;
}

rapidjson::Value::MemberIterator memberIterator(rapidjson::Value& object, const Containers::StringView name) {
    if(MemberIndex* const index = memberIndex(object)) {
        const auto found = index->positions.find(std::string{name.data(), name.size()});
        return found == index->positions.end() ? object.MemberEnd() : object.MemberBegin() + found->second;
    }

    const rapidjson::SizeType length = rapidjson::SizeType(name.size());
    const auto end = object.MemberEnd();
    for(auto it = object.MemberBegin(); it != end; ++it) {
        const rapidjson::Value& memberName = it->name;
        if(memberName.GetStringLength() == length && std::memcmp(memberName.GetString(), name.data(), length) == 0)
            return it;
    }
    return end;
}

/* Keeps an index of the object valid when a member was added last, through
   an array that may have moved; drops it for any other change */
void noteMembersChanged(const rapidjson::Value& object, const rapidjson::Value::Member* before, const rapidjson::SizeType countBefore, const bool appended) {
    auto& indices = memberIndices();
    const auto found = indices.find(&object);
    if(found == indices.end()) return;
    MemberIndex& index = found->second;
    if(!appended || index.members != before || index.count != countBefore) {
        indices.erase(found);
        return;
    }
    const rapidjson::Value& name = (object.MemberEnd() - 1)->name;
    index.members = membersOf(object);
    index.positions.emplace(std::string{name.GetString(), name.GetStringLength()}, countBefore);
    index.count = countBefore + 1;
}

/* Moves the last of @p count items to @p position and the ones from there
   up by one, as raw bytes, the way RapidJSON itself relocates values */
template<class T> void moveLastTo(T* const items, const std::size_t count, const std::size_t position) {
    alignas(T) unsigned char last[sizeof(T)];
    std::memcpy(last, static_cast<const void*>(items + count - 1), sizeof(T));
    std::memmove(static_cast<void*>(items + position + 1), static_cast<const void*>(items + position), (count - 1 - position)*sizeof(T));
    std::memcpy(static_cast<void*>(items + position), last, sizeof(T));
}

}

void indexMembersOf(const rapidjson::Value& document) {
    auto& roots = indexedRoots();
    if(std::find(roots.begin(), roots.end(), &document) == roots.end())
        roots.push_back(&document);
}

void forgetMemberIndices(const rapidjson::Value& document) {
    auto& roots = indexedRoots();
    roots.erase(std::remove(roots.begin(), roots.end(), &document), roots.end());
    memberIndices().clear();
}

rapidjson::Value* findMember(rapidjson::Value& object, const Containers::StringView name) {
    const auto it = memberIterator(object, name);
    return it == object.MemberEnd() ? nullptr : &it->value;
}

const rapidjson::Value* findMember(const rapidjson::Value& object, const Containers::StringView name) {
    return findMember(const_cast<rapidjson::Value&>(object), name);
}

rapidjson::SizeType memberPosition(const rapidjson::Value& object, const Containers::StringView name) {
    rapidjson::Value& mutableObject = const_cast<rapidjson::Value&>(object);
    return rapidjson::SizeType(memberIterator(mutableObject, name) - mutableObject.MemberBegin());
}

rapidjson::Value& appendMember(rapidjson::Value& object, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator) {
    const rapidjson::Value::Member* const before = membersOf(object);
    const rapidjson::SizeType count = object.MemberCount();
    object.AddMember(name, value, allocator);
    noteMembersChanged(object, before, count, true);
    return (object.MemberEnd() - 1)->value;
}

rapidjson::Value& insertMember(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator) {
    const rapidjson::Value::Member* const before = membersOf(object);
    const rapidjson::SizeType count = object.MemberCount();
    CORRADE_INTERNAL_ASSERT(position <= count);
    object.AddMember(name, value, allocator);
    moveLastTo(&*object.MemberBegin(), count + 1, position);
    noteMembersChanged(object, before, count, position == count);
    return (object.MemberBegin() + position)->value;
}

void eraseMember(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value& name, rapidjson::Value& value) {
    const rapidjson::Value::Member* const before = membersOf(object);
    const rapidjson::SizeType count = object.MemberCount();
    const auto it = object.MemberBegin() + position;
    name = std::move(it->name);
    value = std::move(it->value);
    object.EraseMember(it);
    noteMembersChanged(object, before, count, false);
}

rapidjson::Value& insertElement(rapidjson::Value& array, const rapidjson::SizeType position, rapidjson::Value&& value, JsonAllocator& allocator) {
    const rapidjson::SizeType count = array.Size();
    CORRADE_INTERNAL_ASSERT(position <= count);
    array.PushBack(value, allocator);
    moveLastTo(&*array.Begin(), count + 1, position);
    return array[position];
}

void appendPointerToken(std::string& path, const Containers::StringView name) {
    path += '/';
    for(std::size_t i = 0; i != name.size(); ++i) {
        const char c = name.data()[i];
        if(c == '~') path += "~0";
        else if(c == '/') path += "~1";
        else path += c;
    }
}

JsonPointer::JsonPointer(const Containers::StringView path) {
    const char* const data = path.data();
    const std::size_t size = path.size();
    if(size && data[0] != '/') {
        _errorOffset = 0;
        return;
    }

    /* Unescape every token into one buffer first, then point the tokens into
       it, so that growing the buffer can't leave them dangling */
    std::vector<std::pair<std::size_t, std::size_t>> ranges;
    _names.reserve(size);
    std::size_t i = 0;
    while(i < size) {
        ++i; /* the "/" */
        const std::size_t begin = _names.size();
        while(i < size && data[i] != '/') {
            char c = data[i++];
            if(c == '~') {
                if(i == size || (data[i] != '0' && data[i] != '1')) {
                    _errorOffset = i;
                    _names.clear();
                    return;
                }
                c = data[i++] == '0' ? '~' : '/';
            }
            _names += c;
        }
        ranges.emplace_back(begin, _names.size() - begin);
    }

    _tokens.reserve(ranges.size());
    for(const auto& range: ranges) {
        const Containers::StringView name{_names.data() + range.first, range.second};
        /* Digits only, no leading zero, fits in 32 bits */
        const char* const digits = name.data();
        std::uint64_t index = name.size() && name.size() <= 10 && (name.size() == 1 || digits[0] != '0') ? 0 : InvalidIndex;
        for(std::size_t j = 0; j != name.size() && index != InvalidIndex; ++j) {
            if(digits[j] < '0' || digits[j] > '9') index = InvalidIndex;
            else index = index*10 + std::uint64_t(digits[j] - '0');
        }
        if(index > InvalidIndex) index = InvalidIndex;
        _tokens.push_back({name, std::uint32_t(index)});
    }
    _valid = true;
}

JsonPointer::JsonPointer(JsonPointer&& other) noexcept {
    *this = std::move(other);
}

JsonPointer& JsonPointer::operator=(JsonPointer&& other) noexcept {
    /* A short text moves with the string object, so the tokens are pointed
       at wherever the characters end up */
    const char* const from = other._names.data();
    _names = std::move(other._names);
    _tokens = std::move(other._tokens);
    for(Token& token: _tokens)
        token.name = {_names.data() + (token.name.data() - from), token.name.size()};
    _errorOffset = other._errorOffset;
    _valid = other._valid;
    other._names.clear();
    other._tokens.clear();
    other._valid = false;
    return *this;
}

const rapidjson::Value* JsonPointer::get(const rapidjson::Value& root) const {
    return get(const_cast<rapidjson::Value&>(root));
}

rapidjson::Value* JsonPointer::get(rapidjson::Value& root) const {
    CORRADE_ASSERT(_valid, "JsonPointer::get(): invalid pointer", nullptr);
    return resolve(root, _tokens.size());
}

rapidjson::Value* JsonPointer::resolve(rapidjson::Value& root, const std::size_t tokenCount) const {
    rapidjson::Value* v = &root;
    for(std::size_t i = 0; i != tokenCount; ++i) {
        const Token& t = _tokens[i];
        if(v->IsObject()) {
            v = findMember(*v, t.name);
            if(!v) return nullptr;
        } else if(v->IsArray()) {
            if(t.index == InvalidIndex || t.index >= v->Size()) return nullptr;
            v = &(*v)[t.index];
        } else return nullptr;
    }
    return v;
}

rapidjson::Value& JsonPointer::create(rapidjson::Value& root, JsonAllocator& allocator, bool* const alreadyExists) const {
    CORRADE_ASSERT(_valid, "JsonPointer::create(): invalid pointer", root);
    /* The part that exists is walked as get() walks it */
    std::size_t first = 0;
    rapidjson::Value* v = &root;
    for(; first != _tokens.size(); ++first) {
        const Token& t = _tokens[first];
        rapidjson::Value* next = nullptr;
        if(v->IsObject()) next = findMember(*v, t.name);
        else if(v->IsArray() && t.index < v->Size()) next = &(*v)[t.index];
        if(!next) break;
        v = next;
    }
    if(alreadyExists) *alreadyExists = first == _tokens.size();
    return createBelow(*v, first, _tokens.size(), allocator);
}

rapidjson::Value& JsonPointer::createBelow(rapidjson::Value& value, const std::size_t first, const std::size_t end, JsonAllocator& allocator) const {
    CORRADE_ASSERT(_valid, "JsonPointer::createBelow(): invalid pointer", value);
    rapidjson::Value* v = &value;
    for(std::size_t i = first; i != end; ++i) {
        const Token& t = _tokens[i];
        if(v->IsArray() && t.name.size() == 1 && t.name.data()[0] == '-') {
            v->PushBack(rapidjson::Value{}, allocator);
            v = &(*v)[v->Size() - 1];
            continue;
        }

        if(t.index == InvalidIndex) {
            if(!v->IsObject()) v->SetObject();
        } else if(!v->IsArray() && !v->IsObject())
            v->SetArray();

        if(v->IsArray()) {
            if(t.index >= v->Size()) {
                v->Reserve(t.index + 1, allocator);
                while(t.index >= v->Size())
                    v->PushBack(rapidjson::Value{}, allocator);
            }
            v = &(*v)[t.index];
        } else {
            rapidjson::Value* member = findMember(*v, t.name);
            if(!member) member = &appendMember(*v, rapidjson::Value{t.name.data(), rapidjson::SizeType(t.name.size()), allocator}, rapidjson::Value{}, allocator);
            v = member;
        }
    }
    return *v;
}

bool JsonPointer::erase(rapidjson::Value& root) const {
    CORRADE_ASSERT(_valid, "JsonPointer::erase(): invalid pointer", false);
    if(_tokens.empty()) return false;

    rapidjson::Value* const v = resolve(root, _tokens.size() - 1);
    if(!v) return false;

    const Token& last = _tokens.back();
    if(v->IsObject()) {
        const rapidjson::SizeType position = memberPosition(*v, last.name);
        if(position == v->MemberCount()) return false;
        rapidjson::Value name, value;
        eraseMember(*v, position, name, value);
        return true;
    }
    if(v->IsArray()) {
        if(last.index == InvalidIndex || last.index >= v->Size()) return false;
        v->Erase(v->Begin() + last.index);
        return true;
    }
    return false;
}

}
