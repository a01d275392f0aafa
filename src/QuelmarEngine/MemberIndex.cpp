#include "QuelmarEngine/MemberIndex.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>
#include <utility>

#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine {

namespace {

typedef rapidjson::Value::Member Member;
typedef rapidjson::SizeType SizeType;

const Member* membersOf(const rapidjson::Value& object) {
    return object.MemberCount() ? &*object.MemberBegin() : nullptr;
}

Containers::StringView nameOf(const rapidjson::Value& name) {
    return {name.GetString(), name.GetStringLength()};
}

std::uint32_t lowestBit(const std::uint32_t i) {
    return i & (~i + 1);
}

}

/* One map's members by slot. Each name keeps its slot while it is removed
   and inserted again, so the order of slots is the order of members, and a
   member's position is the number of live slots before its slot, which a
   Fenwick tree over the live flags counts in O(log n). Removed members leave
   dead slots with their names, where an exact undo revives them; slots whose
   name moved on are gaps, dropped when they pile up. */
class MemberIndex::Map {
    public:
        /* A position that the index answered wrongly */
        static constexpr SizeType Stale = ~SizeType{};

        explicit Map(const Containers::StringView name, std::size_t& buildCount): _name{name.data(), name.size()}, _buildCount(buildCount) {}

        bool isNamed(const Containers::StringView name) const {
            return name.size() == _name.size() && std::memcmp(name.data(), _name.data(), name.size()) == 0;
        }

        bool isInStep(const rapidjson::Value& object) const {
            return _members == membersOf(object) && _count == object.MemberCount();
        }

        /* Duplicate names, which nothing but a direct edit makes, are left
           to the scan, as a dead slot can't tell whether another one lives */
        bool isScanOnly() const { return _scanOnly; }

        void markOutOfStep() {
            _members = nullptr;
            _count = Stale;
        }

        /* Picks up members appended in place, rebuilds on anything else */
        void sync(const rapidjson::Value& object) {
            if(isInStep(object)) return;
            const Member* const members = membersOf(object);
            if(!_members || _members != members || _count > object.MemberCount()) {
                rebuild(object);
                return;
            }
            for(SizeType i = _count; i != object.MemberCount(); ++i) addLast(nameOf(members[i].name));
            recordStep(object);
        }

        void rebuild(const rapidjson::Value& object) {
            ++_buildCount;
            const SizeType count = object.MemberCount();
            _slotOf.clear();
            _slotOf.reserve(count);
            _nameAt.clear();
            _nameAt.reserve(count);
            _scanOnly = false;
            for(auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
                const Containers::StringView name = nameOf(member->name);
                const auto inserted = _slotOf.emplace(std::string{name.data(), name.size()}, std::uint32_t(_nameAt.size()));
                _scanOnly = _scanOnly || !inserted.second;
                _nameAt.push_back(inserted.second ? &*inserted.first : nullptr);
            }
            _live.assign(count, 1);
            _liveCount = count;
            _namedDead = _gaps = 0;
            buildTree();
            recordStep(object);
        }

        /* The member's position, the member count for none, or Stale when
           the member there has another name */
        SizeType find(const rapidjson::Value& object, const Containers::StringView name) const {
            const auto found = _slotOf.find(std::string{name.data(), name.size()});
            if(found == _slotOf.end() || !_live[found->second]) return object.MemberCount();
            const SizeType position = positionOf(found->second);
            if(position < object.MemberCount() && nameOf((object.MemberBegin() + position)->name) == name)
                return position;
            return Stale;
        }

        void appended(const rapidjson::Value& object) {
            addLast(nameOf((object.MemberEnd() - 1)->name));
            recordStep(object);
            compactIfWasteful();
        }

        void erased(const rapidjson::Value& object, const SizeType position) {
            const std::uint32_t slot = slotAt(position);
            setLive(slot, false);
            if(_nameAt[slot]) ++_namedDead;
            else ++_gaps;
            recordStep(object);
            compactIfWasteful();
        }

        void inserted(const rapidjson::Value& object, const SizeType position) {
            const Containers::StringView name = nameOf((object.MemberBegin() + position)->name);
            auto found = _slotOf.find(std::string{name.data(), name.size()});
            recordStep(object);
            if(found != _slotOf.end() && _live[found->second]) {
                _scanOnly = true;
                return;
            }

            /* Its own dead slot when that still lies between the neighbours,
               which an exact undo finds; else any dead slot between them,
               making room when there is none */
            if(found == _slotOf.end() || positionOf(found->second) != position) {
                std::uint32_t right = position < _liveCount ? slotAt(position) : std::uint32_t(_live.size());
                const std::uint32_t left = position ? slotAt(position - 1) + 1 : 0;
                if(right == left) {
                    /* A run of insertions at one place then finds room */
                    relayout(right, 16 + _liveCount/64, true);
                    right = position < _liveCount ? slotAt(position) : std::uint32_t(_live.size());
                }
                const std::uint32_t slot = right - 1;
                if(Entry* const previous = _nameAt[slot]) {
                    _slotOf.erase(previous->first);
                    --_namedDead;
                } else --_gaps;
                if(found == _slotOf.end()) found = _slotOf.emplace(std::string{name.data(), name.size()}, 0).first;
                else {
                    _nameAt[found->second] = nullptr;
                    ++_gaps;
                    --_namedDead;
                }
                found->second = slot;
                _nameAt[slot] = &*found;
                ++_namedDead;
            }
            setLive(found->second, true);
            --_namedDead;
        }

    private:
        typedef std::pair<const std::string, std::uint32_t> Entry;

        void recordStep(const rapidjson::Value& object) {
            _members = membersOf(object);
            _count = object.MemberCount();
        }

        /* A name that now stands after every live member */
        void addLast(const Containers::StringView name) {
            auto found = _slotOf.find(std::string{name.data(), name.size()});
            if(found != _slotOf.end()) {
                const std::uint32_t slot = found->second;
                if(_live[slot]) {
                    _scanOnly = true;
                    return;
                }
                /* Its dead slot after all live ones, as the redo of a
                   creation finds it */
                if(positionOf(slot) == _liveCount) {
                    setLive(slot, true);
                    --_namedDead;
                    return;
                }
                _nameAt[slot] = nullptr;
                --_namedDead;
                ++_gaps;
            } else found = _slotOf.emplace(std::string{name.data(), name.size()}, 0).first;

            found->second = std::uint32_t(_live.size());
            _nameAt.push_back(&*found);
            _live.push_back(1);
            ++_liveCount;
            /* The new node of the tree sums its own flag and the nodes that
               end in the range it covers */
            const std::uint32_t node = std::uint32_t(_live.size());
            _tree.push_back(1 + prefix(node - 1) - prefix(node - lowestBit(node)));
        }

        void compactIfWasteful() {
            const bool tooManyNamed = _namedDead > 2*_liveCount + 256;
            if(tooManyNamed || _gaps > _liveCount/2 + 64)
                relayout(std::uint32_t(_live.size()), 0, !tooManyNamed);
        }

        /* Keeps live slots (and dead slots with a name, when asked), drops
           gaps, and leaves @p gapCount gaps before the old slot @p gapBefore */
        void relayout(const std::uint32_t gapBefore, const std::uint32_t gapCount, const bool keepNamed) {
            std::vector<Entry*> nameAt;
            std::vector<std::uint8_t> live;
            nameAt.reserve(_liveCount + (keepNamed ? _namedDead : 0) + gapCount);
            live.reserve(nameAt.capacity());
            for(std::uint32_t slot = 0; slot <= _live.size(); ++slot) {
                if(slot == gapBefore) {
                    nameAt.insert(nameAt.end(), gapCount, nullptr);
                    live.insert(live.end(), gapCount, 0);
                }
                if(slot == _live.size()) break;
                Entry* const entry = _nameAt[slot];
                if(!_live[slot] && (!entry || !keepNamed)) {
                    if(entry) _slotOf.erase(entry->first);
                    continue;
                }
                if(entry) entry->second = std::uint32_t(nameAt.size());
                nameAt.push_back(entry);
                live.push_back(_live[slot]);
            }
            _nameAt = std::move(nameAt);
            _live = std::move(live);
            _gaps = gapCount;
            if(!keepNamed) _namedDead = 0;
            buildTree();
        }

        void buildTree() {
            const std::uint32_t size = std::uint32_t(_live.size());
            _tree.assign(size + 1, 0);
            for(std::uint32_t node = 1; node <= size; ++node) {
                _tree[node] += _live[node - 1];
                const std::uint32_t parent = node + lowestBit(node);
                if(parent <= size) _tree[parent] += _tree[node];
            }
        }

        void setLive(const std::uint32_t slot, const bool live) {
            _live[slot] = live;
            const std::uint32_t size = std::uint32_t(_live.size());
            for(std::uint32_t node = slot + 1; node <= size; node += lowestBit(node)) {
                if(live) ++_tree[node];
                else --_tree[node];
            }
            if(live) ++_liveCount;
            else --_liveCount;
        }

        /* Live slots before @p slot */
        std::uint32_t prefix(std::uint32_t slot) const {
            std::uint32_t sum = 0;
            for(; slot; slot -= lowestBit(slot)) sum += _tree[slot];
            return sum;
        }

        std::uint32_t positionOf(const std::uint32_t slot) const {
            return _liveCount == _live.size() ? slot : prefix(slot);
        }

        /* The slot of the live member at @p position */
        std::uint32_t slotAt(const std::uint32_t position) const {
            const std::uint32_t size = std::uint32_t(_live.size());
            if(_liveCount == size) return position;
            std::uint32_t slot = 0, remaining = position, step = 1;
            while(step*2 <= size) step *= 2;
            for(; step; step /= 2) if(slot + step <= size && _tree[slot + step] <= remaining) {
                slot += step;
                remaining -= _tree[slot];
            }
            return slot;
        }

        std::string _name;
        std::size_t& _buildCount;
        const Member* _members{};
        SizeType _count{Stale};
        bool _scanOnly{};
        std::unordered_map<std::string, std::uint32_t> _slotOf;
        /* Per slot: its name's entry, null for a gap */
        std::vector<Entry*> _nameAt;
        std::vector<std::uint8_t> _live;
        /* Fenwick tree over the live flags, one-based */
        std::vector<std::uint32_t> _tree{0};
        std::uint32_t _liveCount{}, _namedDead{}, _gaps{};
};

MemberIndex::MemberIndex() = default;

MemberIndex::~MemberIndex() = default;

void MemberIndex::bind(const rapidjson::Value& root) {
    if(&root == _root) return;
    clear();
    _root = &root;
}

void MemberIndex::clear() {
    _maps.clear();
}

MemberIndex::Map* MemberIndex::mapOf(const rapidjson::Value& object, const bool create) {
    if(!_root || !_root->IsObject() || !_root->MemberCount()) return nullptr;
    /* A top-level map is the value of one of the root's members */
    const Member* const members = &*_root->MemberBegin();
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(&object);
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(&members[0].value);
    if(address < first || address >= first + _root->MemberCount()*sizeof(Member) || (address - first) % sizeof(Member))
        return nullptr;

    const Containers::StringView name = nameOf(members[(address - first)/sizeof(Member)].name);
    for(Containers::Pointer<Map>& map: _maps)
        if(map->isNamed(name)) return map.get();
    if(!create) return nullptr;
    _maps.emplace_back(new Map{name, _buildCount});
    return _maps.back().get();
}

MemberIndex::Map* MemberIndex::mapInStep(const rapidjson::Value& object) {
    Map* const map = mapOf(object, false);
    if(!map) return nullptr;
    /* One that only scans keeps no slots in step */
    if(map->isInStep(object) && !map->isScanOnly()) return map;
    map->markOutOfStep();
    return nullptr;
}

rapidjson::SizeType MemberIndex::find(const rapidjson::Value& object, const Containers::StringView name) {
    if(object.MemberCount() >= IndexedMemberCount) if(Map* const map = mapOf(object, true)) {
        map->sync(object);
        SizeType position = map->isScanOnly() ? Map::Stale : map->find(object, name);
        /* A member renamed behind the index's back, found out */
        if(position == Map::Stale && !map->isScanOnly()) {
            map->rebuild(object);
            position = map->isScanOnly() ? Map::Stale : map->find(object, name);
        }
        if(position != Map::Stale) return position;
    }
    return memberPosition(object, name);
}

rapidjson::Value& MemberIndex::append(rapidjson::Value& object, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator) {
    Map* const map = mapInStep(object);
    rapidjson::Value& out = appendMember(object, std::move(name), std::move(value), allocator);
    if(map) map->appended(object);
    return out;
}

rapidjson::Value& MemberIndex::insert(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator) {
    Map* const map = mapInStep(object);
    rapidjson::Value& out = insertMember(object, position, std::move(name), std::move(value), allocator);
    if(map) map->inserted(object, position);
    return out;
}

void MemberIndex::erase(rapidjson::Value& object, const rapidjson::SizeType position, rapidjson::Value& name, rapidjson::Value& value) {
    Map* const map = mapInStep(object);
    eraseMember(object, position, name, value);
    if(map) map->erased(object, position);
}

}
