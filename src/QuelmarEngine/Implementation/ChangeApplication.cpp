#include "QuelmarEngine/Implementation/ChangeApplication.h"

#include <climits>
#include <cstdlib>
#include <string>
#include <Corrade/Utility/Assert.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/MemberIndex.h"

namespace QuelmarEngine { namespace Implementation {

namespace {

typedef JsonPointer::Token Token;

bool isAppendToken(const Token& token) {
    return token.name.size() == 1 && token.name.data()[0] == '-';
}

/* An optional "-" followed by one or more digits */
bool isIndexKey(const Containers::StringView segment) {
    std::size_t i = 0;
    if(i != segment.size() && segment.data()[i] == '-') ++i;
    if(i == segment.size()) return false;
    for(; i != segment.size(); ++i)
        if(segment.data()[i] < '0' || segment.data()[i] > '9') return false;
    return true;
}

bool isNegativeIndexKey(const Token& token) {
    return isIndexKey(token.name) && token.name.data()[0] == '-';
}

/* The segment as a decimal integer, clamped to int instead of overflowing */
int indexKeyValue(const Containers::StringView segment) {
    const long value = std::strtol(std::string(segment.data(), segment.size()).data(), nullptr, 10);
    return value < INT_MIN ? INT_MIN : value > INT_MAX ? INT_MAX : int(value);
}

bool isEmptyContainer(const rapidjson::Value& value) {
    return (value.IsObject() && value.MemberCount() == 0) ||
           (value.IsArray() && value.Empty());
}

rapidjson::Value stringOf(const Containers::StringView text, JsonAllocator& allocator) {
    return rapidjson::Value{text.data(), rapidjson::SizeType(text.size()), allocator};
}

/* The values along a pointer, from the root down; paths are short, so the
   usual ones need no allocation */
class Chain {
    public:
        explicit Chain(const std::size_t tokenCount) {
            if(tokenCount + 1 > InlineCount) {
                _more.resize(tokenCount + 1);
                _values = _more.data();
            } else _values = _inline;
        }

        Chain(const Chain&) = delete;
        Chain& operator=(const Chain&) = delete;

        rapidjson::Value*& operator[](std::size_t i) { return _values[i]; }

    private:
        enum: std::size_t { InlineCount = 16 };
        rapidjson::Value* _inline[InlineCount];
        std::vector<rapidjson::Value*> _more;
        rapidjson::Value** _values;
};

/* Walks at most @p limit tokens down from the root as a pointer get does,
   filling the chain; returns how many tokens resolved */
std::size_t resolve(rapidjson::Value& root, MemberIndex& index, const JsonPointer& pointer, const std::size_t limit, Chain& chain) {
    chain[0] = &root;
    std::size_t count = 0;
    while(count != limit) {
        rapidjson::Value& value = *chain[count];
        const Token& token = pointer.token(count);
        rapidjson::Value* next = nullptr;
        if(value.IsObject()) {
            const rapidjson::SizeType position = index.find(value, token.name);
            if(position != value.MemberCount()) next = &(value.MemberBegin() + position)->value;
        } else if(value.IsArray() && token.index < value.Size()) next = &value[token.index];
        if(!next) break;
        chain[++count] = next;
    }
    return count;
}

/* Makes the value at the first @p count tokens as a pointer create does,
   given the chain that @p resolved of them resolved to, recording where the
   document changed first and how to take that back */
rapidjson::Value& createRecorded(MemberIndex& index, JsonAllocator& allocator, const JsonPointer& pointer, const std::size_t count, AppliedChange& applied, Chain& chain, const std::size_t resolved) {
    const std::size_t depth = resolved < count ? resolved : count;
    applied.depth = std::uint32_t(depth);
    if(depth == count) {
        applied.placement = Placement::Replaced;
        return *chain[depth];
    }

    /* Below the first missing value everything is new, so taking back what
       happened to that one value takes back the whole creation */
    rapidjson::Value& value = *chain[depth];
    const Token& token = pointer.token(depth);
    if(value.IsArray() && (isAppendToken(token) || token.index != JsonPointer::InvalidIndex)) {
        applied.placement = Placement::GrewArray;
        applied.size = value.Size();
    } else if(value.IsObject()) {
        applied.placement = Placement::AppendedMember;
    } else {
        applied.placement = Placement::Converted;
        /* Left null, which the creation below turns into a container */
        applied.old = std::move(value);
    }
    return pointer.createBelow(value, depth, count, allocator, &index);
}

/* Takes the element at @p position out of @p array */
rapidjson::Value takeElement(rapidjson::Value& array, const rapidjson::SizeType position) {
    rapidjson::Value out = std::move(array[position]);
    array.Erase(array.Begin() + position);
    return out;
}

/* Where a value taken out of the document goes: into the record's old value
   at the push, else beside the record for the way back */
void keepDisplaced(rapidjson::Value&& value, AppliedChange& applied, Containers::Pointer<rapidjson::Value>* const oldValue) {
    if(oldValue) oldValue->emplace(std::move(value));
    else {
        applied.spare = std::move(value);
        applied.hasSpare = true;
    }
}

void removeForward(rapidjson::Value& root, MemberIndex& index, const Change& change, AppliedChange& applied, Containers::Pointer<rapidjson::Value>* const oldValue) {
    const JsonPointer& pointer = applied.pointer;
    const std::size_t count = pointer.tokenCount();
    applied.placement = Placement::Removed;
    applied.erased = false;
    applied.cleanup.clear();
    /* The root is never erased, and has no parent to clean up */
    if(!count) return;

    Chain chain{count};
    const bool parentExists = resolve(root, index, pointer, count - 1, chain) == count - 1;
    if(parentExists) {
        rapidjson::Value& parent = *chain[count - 1];
        const Token& last = pointer.token(count - 1);
        rapidjson::Value value;
        rapidjson::SizeType position = 0;
        /* "-" and negative index keys name no element. A removal record that
           carries the value it takes back (the inverse of a creation through
           them) takes the element such a creation made: the last one for
           "-", the first one for a negative index. */
        if(change.oldValue && parent.IsArray() && (isAppendToken(last) || isNegativeIndexKey(last))) {
            if(!parent.Empty()) {
                position = isAppendToken(last) ? parent.Size() - 1 : 0;
                value = takeElement(parent, position);
                applied.erased = true;
            }
        } else if(parent.IsObject()) {
            position = index.find(parent, last.name);
            if(position != parent.MemberCount()) {
                index.erase(parent, position, applied.name, value);
                applied.erased = true;
            }
        } else if(parent.IsArray() && last.index < parent.Size()) {
            position = last.index;
            value = takeElement(parent, position);
            applied.erased = true;
        }
        if(applied.erased) {
            applied.size = position;
            keepDisplaced(std::move(value), applied, oldValue);
        }
    }

    /* Containers left empty go too, up to but never including a top-level
       member */
    for(std::size_t depth = count - 1; parentExists && depth >= 2 && isEmptyContainer(*chain[depth]); --depth) {
        rapidjson::Value& parent = *chain[depth - 1];
        const Token& token = pointer.token(depth - 1);
        const bool array = chain[depth]->IsArray();
        rapidjson::SizeType position;
        if(parent.IsObject()) {
            position = index.find(parent, token.name);
            rapidjson::Value name, value;
            index.erase(parent, position, name, value);
        } else {
            position = token.index;
            takeElement(parent, position);
        }
        applied.cleanup.push_back({position, array});
    }
}

/* Where a creation puts its value: under an index key, into an array at
   that index (or padded to it past the end), else where a pointer create
   makes it. Returns null when it inserted the value itself. */
rapidjson::Value* creationTarget(MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied, Chain& chain, const std::size_t resolved) {
    const JsonPointer& pointer = applied.pointer;
    const std::size_t count = pointer.tokenCount();
    const Token& last = pointer.token(count - 1);
    const bool parentExists = resolved >= count - 1;
    /* A missing parent has no value at the path either, so this project
       file answers nothing for it and the index key decides */
    if(!isIndexKey(last.name) || (parentExists && chain[count - 1]->IsObject()))
        return &createRecorded(index, allocator, pointer, count, applied, chain, resolved);

    const int position = indexKeyValue(last.name);
    if(!parentExists) {
        /* The parent is made, as an empty array, then the value goes in */
        rapidjson::Value& value = createRecorded(index, allocator, pointer, count - 1, applied, chain, resolved);
        value.SetArray();
        return position < 0 ?
            &insertElement(value, 0, rapidjson::Value{}, allocator) :
            &pointer.createBelow(value, count - 1, count, allocator, &index);
    }

    rapidjson::Value& value = *chain[count - 1];
    CORRADE_INTERNAL_ASSERT(value.IsArray());
    if(position >= 0 && rapidjson::SizeType(position) >= value.Size())
        return &createRecorded(index, allocator, pointer, count, applied, chain, resolved);
    /* Position 0 for a negative index keeps every exchange inside the
       array */
    applied.placement = Placement::InsertedElement;
    applied.depth = std::uint32_t(count - 1);
    applied.size = position < 0 ? 0 : rapidjson::SizeType(position);
    insertElement(value, applied.size, rapidjson::Value{*change.newValue, allocator}, allocator);
    return nullptr;
}

void setForward(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied, Containers::Pointer<rapidjson::Value>* const oldValue) {
    const JsonPointer& pointer = applied.pointer;
    const std::size_t count = pointer.tokenCount();
    Chain chain{count};
    const std::size_t resolved = resolve(root, index, pointer, count, chain);
    /* What the undo of a replacement took out is the value to put back */
    const bool spareIsNew = applied.hasSpare && applied.placement == Placement::Replaced;

    /* Undone by taking the member out: put back what was taken */
    if(applied.placement == Placement::AppendedMember && applied.hasSpare) {
        applied.hasSpare = false;
        if(resolved == applied.depth && chain[resolved]->IsObject()) {
            if(!applied.name.IsString()) applied.name = stringOf(pointer.token(resolved).name, allocator);
            index.append(*chain[resolved], std::move(applied.name), std::move(applied.spare), allocator);
            return;
        }
    }

    /* At the push, a path that names a value is a replacement, and the
       record gets the value taken out as its old one. The root always
       exists, so a value for it is a replacement too. */
    const bool replacement = oldValue ? resolved == count : bool(change.oldValue);
    rapidjson::Value* const target = replacement || !count ?
        &createRecorded(index, allocator, pointer, count, applied, chain, resolved) :
        creationTarget(index, allocator, change, applied, chain, resolved);
    applied.hasSpare = false;
    if(!target) return;

    if(applied.placement == Placement::Replaced) {
        rapidjson::Value incoming;
        if(spareIsNew) incoming = std::move(applied.spare);
        else incoming.CopyFrom(*change.newValue, allocator);
        rapidjson::Value outgoing = std::move(*target);
        *target = std::move(incoming);
        keepDisplaced(std::move(outgoing), applied, oldValue);
    } else target->CopyFrom(*change.newValue, allocator);
}

bool restoreRemoved(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied) {
    const JsonPointer& pointer = applied.pointer;
    const std::size_t count = pointer.tokenCount();
    const std::size_t erasedContainers = applied.cleanup.size();
    if(!count || (!applied.erased && !erasedContainers)) return true;

    /* Everything is checked before anything changes. The containers the
       cleanup erased go back from the outermost in; each inner one was the
       only content of the next outer one. */
    Chain chain{count};
    const std::size_t top = count - 1 - erasedContainers;
    if(resolve(root, index, pointer, top, chain) != top) return false;
    rapidjson::Value& outer = *chain[top];
    const std::size_t outerPosition = erasedContainers ? applied.cleanup.back().position : applied.size;
    const Token& outerToken = pointer.token(top);
    if(outer.IsObject()) {
        if(outerPosition > outer.MemberCount() || index.find(outer, outerToken.name) != outer.MemberCount()) return false;
    } else if(!outer.IsArray() || outerPosition > outer.Size()) return false;
    if(applied.erased && !applied.hasSpare && !change.oldValue) return false;

    for(std::size_t i = erasedContainers; i--; ) {
        const std::size_t depth = count - 1 - i;
        rapidjson::Value& parent = *chain[depth - 1];
        const ErasedContainer& erased = applied.cleanup[i];
        rapidjson::Value empty{erased.array ? rapidjson::kArrayType : rapidjson::kObjectType};
        chain[depth] = parent.IsObject() ?
            &index.insert(parent, erased.position, stringOf(pointer.token(depth - 1).name, allocator), std::move(empty), allocator) :
            &insertElement(parent, erased.position, std::move(empty), allocator);
    }

    if(applied.erased) {
        rapidjson::Value value;
        if(applied.hasSpare) value = std::move(applied.spare);
        else value.CopyFrom(*change.oldValue, allocator);
        applied.hasSpare = false;
        rapidjson::Value& parent = *chain[count - 1];
        if(parent.IsObject()) {
            if(!applied.name.IsString()) applied.name = stringOf(pointer.token(count - 1).name, allocator);
            index.insert(parent, applied.size, std::move(applied.name), std::move(value), allocator);
        } else insertElement(parent, applied.size, std::move(value), allocator);
    }
    return true;
}

}

bool padsTooMuch(rapidjson::Value& root, MemberIndex& index, const JsonPointer& pointer, const bool creation) {
    if(!creation) return false;
    const std::size_t count = pointer.tokenCount();
    /* An array holds at least nothing, so only an index past the padding
       limit can pad past it; the usual push skips walking its path twice */
    bool mayPad = false;
    for(std::size_t i = 0; i != count && !mayPad; ++i) {
        const std::uint32_t index = pointer.token(i).index;
        mayPad = index != JsonPointer::InvalidIndex && index > MaxArrayPadding;
    }
    if(!mayPad) return false;
    Chain chain{count};
    const std::size_t depth = resolve(root, index, pointer, count, chain);
    for(std::size_t i = depth; i != count; ++i) {
        const std::uint32_t index = pointer.token(i).index;
        if(index == JsonPointer::InvalidIndex) continue;
        /* Below the first missing value everything starts out empty; on the
           way, an object takes an index as a member name */
        std::uint64_t existing = 0;
        if(i == depth) {
            if(chain[depth]->IsObject()) continue;
            if(chain[depth]->IsArray()) existing = chain[depth]->Size();
        }
        if(index > existing + MaxArrayPadding) return true;
    }
    return false;
}

void applyForward(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied, Containers::Pointer<rapidjson::Value>* const oldValue) {
    if(change.newValue) setForward(root, index, allocator, change, applied, oldValue);
    else removeForward(root, index, change, applied, oldValue);
}

bool applyBackward(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied) {
    const JsonPointer& pointer = applied.pointer;
    if(applied.placement == Placement::Removed)
        return restoreRemoved(root, index, allocator, change, applied);

    Chain chain{pointer.tokenCount()};
    const std::size_t depth = applied.depth;
    if(resolve(root, index, pointer, depth, chain) != depth) return false;
    rapidjson::Value& value = *chain[depth];

    switch(applied.placement) {
        case Placement::Replaced: {
            if(!applied.hasSpare && !change.oldValue) return false;
            rapidjson::Value incoming;
            if(applied.hasSpare) incoming = std::move(applied.spare);
            else incoming.CopyFrom(*change.oldValue, allocator);
            applied.spare = std::move(value);
            applied.hasSpare = true;
            value = std::move(incoming);
            return true;
        }
        case Placement::AppendedMember: {
            const Containers::StringView name = pointer.token(depth).name;
            if(!value.IsObject() || !value.MemberCount()) return false;
            const rapidjson::Value& lastName = (value.MemberEnd() - 1)->name;
            if(Containers::StringView{lastName.GetString(), lastName.GetStringLength()} != name) return false;
            index.erase(value, value.MemberCount() - 1, applied.name, applied.spare);
            applied.hasSpare = true;
            return true;
        }
        case Placement::GrewArray:
            if(!value.IsArray() || value.Size() < applied.size) return false;
            value.Erase(value.Begin() + applied.size, value.End());
            return true;
        case Placement::InsertedElement:
            if(!value.IsArray() || value.Size() <= applied.size) return false;
            value.Erase(value.Begin() + applied.size);
            return true;
        case Placement::Converted:
            value = std::move(applied.old);
            return true;
        case Placement::Removed: break;
    }
    return false;
}

}}
