#include "QuelmarEngine/JsonPointer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <Corrade/Utility/Assert.h>

#include "QuelmarEngine/MemberIndex.h"

namespace QuelmarEngine {

namespace {

rapidjson::Value::MemberIterator memberIterator(rapidjson::Value& object, const Containers::StringView name) {
    const rapidjson::SizeType length = rapidjson::SizeType(name.size());
    const auto end = object.MemberEnd();
    for(auto it = object.MemberBegin(); it != end; ++it) {
        const rapidjson::Value& memberName = it->name;
        if(memberName.GetStringLength() == length && std::memcmp(memberName.GetString(), name.data(), length) == 0)
            return it;
    }
    return end;
}

rapidjson::SizeType positionIn(MemberIndex* const index, const rapidjson::Value& object, const Containers::StringView name) {
    return index ? index->find(object, name) : memberPosition(object, name);
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
    object.AddMember(name, value, allocator);
    return (object.MemberEnd() - 1)->value;
}

rapidjson::Value& insertMember(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator) {
    const rapidjson::SizeType count = object.MemberCount();
    CORRADE_INTERNAL_ASSERT(position <= count);
    object.AddMember(name, value, allocator);
    moveLastTo(&*object.MemberBegin(), count + 1, position);
    return (object.MemberBegin() + position)->value;
}

void eraseMember(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value& name, rapidjson::Value& value) {
    const auto it = object.MemberBegin() + position;
    name = std::move(it->name);
    value = std::move(it->value);
    object.EraseMember(it);
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

    /* Unescaping only shortens, so with room for the whole text the buffer
       never moves and the tokens can point into it as they are made */
    _names.reserve(size);
    _tokens.reserve(std::size_t(std::count(data, data + size, '/')));
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
                    _tokens.clear();
                    return;
                }
                c = data[i++] == '0' ? '~' : '/';
            }
            _names += c;
        }

        const Containers::StringView name{_names.data() + begin, _names.size() - begin};
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

const rapidjson::Value* JsonPointer::get(const rapidjson::Value& root, MemberIndex* const index) const {
    return get(const_cast<rapidjson::Value&>(root), index);
}

rapidjson::Value* JsonPointer::get(rapidjson::Value& root, MemberIndex* const index) const {
    CORRADE_ASSERT(_valid, "JsonPointer::get(): invalid pointer", nullptr);
    return resolve(root, _tokens.size(), index);
}

rapidjson::Value* JsonPointer::resolve(rapidjson::Value& root, const std::size_t tokenCount, MemberIndex* const index) const {
    rapidjson::Value* v = &root;
    for(std::size_t i = 0; i != tokenCount; ++i) {
        const Token& t = _tokens[i];
        if(v->IsObject()) {
            const rapidjson::SizeType position = positionIn(index, *v, t.name);
            if(position == v->MemberCount()) return nullptr;
            v = &(v->MemberBegin() + position)->value;
        } else if(v->IsArray()) {
            if(t.index == InvalidIndex || t.index >= v->Size()) return nullptr;
            v = &(*v)[t.index];
        } else return nullptr;
    }
    return v;
}

rapidjson::Value& JsonPointer::create(rapidjson::Value& root, JsonAllocator& allocator, bool* const alreadyExists, MemberIndex* const index) const {
    CORRADE_ASSERT(_valid, "JsonPointer::create(): invalid pointer", root);
    /* The part that exists is walked as get() walks it */
    std::size_t first = 0;
    rapidjson::Value* v = &root;
    for(; first != _tokens.size(); ++first) {
        const Token& t = _tokens[first];
        rapidjson::Value* next = nullptr;
        if(v->IsObject()) {
            const rapidjson::SizeType position = positionIn(index, *v, t.name);
            if(position != v->MemberCount()) next = &(v->MemberBegin() + position)->value;
        } else if(v->IsArray() && t.index < v->Size()) next = &(*v)[t.index];
        if(!next) break;
        v = next;
    }
    if(alreadyExists) *alreadyExists = first == _tokens.size();
    return createBelow(*v, first, _tokens.size(), allocator, index);
}

rapidjson::Value& JsonPointer::createBelow(rapidjson::Value& value, const std::size_t first, const std::size_t end, JsonAllocator& allocator, MemberIndex* const index) const {
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
            const rapidjson::SizeType position = positionIn(index, *v, t.name);
            if(position != v->MemberCount()) v = &(v->MemberBegin() + position)->value;
            else {
                rapidjson::Value name{t.name.data(), rapidjson::SizeType(t.name.size()), allocator};
                v = index ? &index->append(*v, std::move(name), rapidjson::Value{}, allocator) :
                    &appendMember(*v, std::move(name), rapidjson::Value{}, allocator);
            }
        }
    }
    return *v;
}

bool JsonPointer::erase(rapidjson::Value& root, MemberIndex* const index) const {
    CORRADE_ASSERT(_valid, "JsonPointer::erase(): invalid pointer", false);
    if(_tokens.empty()) return false;

    rapidjson::Value* const v = resolve(root, _tokens.size() - 1, index);
    if(!v) return false;

    const Token& last = _tokens.back();
    if(v->IsObject()) {
        const rapidjson::SizeType position = positionIn(index, *v, last.name);
        if(position == v->MemberCount()) return false;
        rapidjson::Value name, value;
        if(index) index->erase(*v, position, name, value);
        else eraseMember(*v, position, name, value);
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
