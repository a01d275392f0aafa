/* Bringing the scene up to date with the records that changed since the last
   refresh, in proportion to the change: what can't move the hierarchy costs
   no layout, and a layout starts where the first change shows. */

#include "QuelmarEngine/host/SceneKeeper.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

constexpr std::uint64_t NoOrder = std::numeric_limits<std::uint64_t>::max();

/* Position of @p record among the members of @p objects, or the member
   count if it isn't one of them */
std::size_t positionOf(const rapidjson::Value& objects, const rapidjson::Value* const record) {
    const std::size_t count = objects.MemberCount();
    if(!count) return 0;
    const rapidjson::Value::Member* const members = &*objects.MemberBegin();
    const std::ptrdiff_t bytes = reinterpret_cast<const char*>(record) - reinterpret_cast<const char*>(&members->value);
    const std::size_t position = std::size_t(bytes)/sizeof(rapidjson::Value::Member);
    return bytes >= 0 && position < count && &members[position].value == record ? position : count;
}

}

bool SceneKeeper::update() {
    _moved.clear();
    _touched.clear();
    _transformed.clear();
    _from = ~std::size_t{};
    _lastOldPosition = 0;

    std::vector<unsigned short>& indexed = _indexed;
    std::vector<Noted>& unindexed = _unindexed;
    std::vector<const rapidjson::Value*>& records = _records;
    std::vector<Placed>& placed = _placed;
    indexed.clear();
    unindexed.clear();
    records.clear();
    placed.clear();
    collectNotes(indexed, unindexed);

    const rapidjson::Value* const objects = this->objects();
    if(!locateNoted(objects, indexed, records, unindexed, placed)) return false;
    if(!placed.empty() && !placeRecords(*objects, placed)) return false;
    readNoted(indexed, records);
    settle();

    const bool laidOut = _from != ~std::size_t{};
    if(laidOut) layOut(_from, true);
    if(writeTransformations() && !laidOut) ++_changeCount;
    for(const unsigned short i: _touched) _changed[i] = 0;
    fillSelection(laidOut);
    forgetStrayKeys();
    clearNotes();
    return true;
}

/* Where the noted records are now: records of @p indexed that are gone are
   removed and the others listed with their record in @p records; records
   that appeared, came back elsewhere in the map or wait past the object limit
   for a freed index go to @p placed */
bool SceneKeeper::locateNoted(const rapidjson::Value* const objects, std::vector<unsigned short>& indexed, std::vector<const rapidjson::Value*>& records, std::vector<Noted>& unindexed, std::vector<Placed>& placed) {
    const Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    std::size_t kept = 0;
    for(const unsigned short i: indexed) {
        const rapidjson::Value* const record = recordOf(objects, graph.storedObjectKey(i));
        if(!record) {
            _noted[i] = 0;
            removeObject(i);
            continue;
        }
        indexed[kept++] = i;
        records.push_back(record);
        if(_noted[i] & Note::Place) {
            /* Between its neighbours it hasn't moved: a member was added to
               it or taken from it */
            const std::size_t position = positionOf(*objects, record);
            const std::uint64_t before = position ? orderAt(*objects, position - 1) : 0;
            const std::uint64_t after = position + 1 < objects->MemberCount() ? orderAt(*objects, position + 1) : NoOrder - 1;
            if(before == NoOrder || after == NoOrder || !(before < _tree.order(i) && _tree.order(i) < after))
                placed.push_back({position, record, {}, i, false});
        }
    }
    indexed.resize(kept);

    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    for(Noted& noted: unindexed) {
        const Containers::StringView key{noted.key.data(), noted.key.size()};
        if(const rapidjson::Value* const record = recordOf(objects, key)) {
            placed.push_back({positionOf(*objects, record), record, std::move(noted.key), 0, true});
        } else if(_pending.erase(noted.key)) keyToIndex.erase(Containers::String{key});
    }

    if(_pending.empty() || _free.empty()) return true;
    std::unordered_set<std::string> appeared;
    for(const Placed& p: placed) if(p.appeared) appeared.insert(p.key);
    for(const auto& pending: _pending) if(!appeared.count(pending.first)) {
        const rapidjson::Value* const record = recordOf(objects, {pending.first.data(), pending.first.size()});
        if(!record) return false;
        placed.push_back({positionOf(*objects, record), record, pending.first, 0, true});
    }
    return true;
}

/* Whether objects that kept their position got other local matrices;
   warns about those that are unusable */
bool SceneKeeper::writeTransformations() {
    const Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    bool written = false;
    for(const unsigned short i: _transformed) if(_used[i] && wasLaidOut(i)) {
        if(_tree.hasMalformedTransformation(i))
            warnOnce(std::string{"Object "} + graph.storedObjectKey(i) + " has a transformation that is not 16 numbers, using the identity");
        written = true;
    }
    return written;
}

/* Keys that lookups entered with index 0 and that name no record; only
   looked for when the map holds more keys than there are records */
void SceneKeeper::forgetStrayKeys() {
    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    if(keyToIndex.size() == _indexCount - 1 - _free.size() + _pending.size()) return;
    for(auto it = keyToIndex.begin(); it != keyToIndex.end(); ) {
        if(!it->second && !_pending.count(std::string{it->first.data(), it->first.size()})) it = keyToIndex.erase(it);
        else ++it;
    }
}

/* Noted keys, merged: those with an index get what their notes say in
   _noted, the others are listed with it. Merged first by the text, as one
   record gets several notes and a lookup in the key-to-index map costs more. */
void SceneKeeper::collectNotes(std::vector<unsigned short>& indexed, std::vector<Noted>& unindexed) {
    std::unordered_map<std::string_view, std::uint8_t> merged;
    merged.reserve(_noteOffsets.size());
    for(std::size_t n = 0; n != _noteOffsets.size(); ++n)
        merged[std::string_view{_noteKeys.data() + _noteOffsets[n]}] |= _noteWhat[n];

    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    for(const auto& note: merged) {
        const auto found = keyToIndex.find(Containers::String{Containers::StringView{note.first.data(), note.first.size()}});
        const unsigned short index = found == keyToIndex.end() ? 0 : found->second;
        if(index && index < _indexCount && _used[index]) {
            indexed.push_back(index);
            _noted[index] = note.second;
        } else unindexed.push_back({std::string{note.first}, note.second});
    }
}

/* The record of @p i is gone: its index is freed, and its children name a
   key without an index */
void SceneKeeper::removeObject(const unsigned short i) {
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    const std::string key = graph.storedObjectKey(i);
    markChanged(i);

    std::vector<unsigned short> orphans = _tree.children(i);
    for(const unsigned short broken: _tree.brokenObjects())
        if(_tree.isBroken(broken) && _tree.namedParent(broken) == i) orphans.push_back(broken);
    for(const unsigned short child: orphans) {
        markChanged(child);
        if(_tree.parent(child) == i) _tree.detach(child);
        _tree.setNamedParent(child, 0);
        _danglingParent[child] = key;
        _dangling[key].push_back(child);
        _moved.push_back(child);
    }

    nameParent(i, {});
    _tree.free(i);
    _editor.objectLookup->storedKeyToIndex().erase(Containers::String{Containers::StringView{key.data(), key.size()}});
    graph.setObjectKey(i, {});
    freeIndex(i);
}

/* The order of the record at @p position, which has one, or NoOrder */
std::uint64_t SceneKeeper::orderAt(const rapidjson::Value& objects, const std::size_t position) const {
    const rapidjson::Value& name = (objects.MemberBegin() + position)->name;
    const std::string key{name.GetString(), name.GetStringLength()};
    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    const auto found = keyToIndex.find(Containers::String{Containers::StringView{key.data(), key.size()}});
    if(found != keyToIndex.end() && found->second && found->second < _indexCount && _used[found->second])
        return _tree.order(found->second);
    const auto pending = _pending.find(key);
    return pending == _pending.end() ? NoOrder : pending->second;
}

/* Orders for the records that appeared or came back elsewhere in the map,
   spread between those of their neighbours, then indices for those that
   appeared, in map order */
bool SceneKeeper::placeRecords(const rapidjson::Value& objects, std::vector<Placed>& placed) {
    std::sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
        return a.position < b.position;
    });
    const std::size_t count = objects.MemberCount();
    std::vector<std::uint64_t> orders(placed.size());
    for(std::size_t first = 0, last; first != placed.size(); first = last) {
        if(placed[first].position >= count) return false;
        /* Runs of neighbours in the map share the gap around them */
        for(last = first + 1; last != placed.size() && placed[last].position == placed[last - 1].position + 1; ++last);
        const std::uint64_t before = placed[first].position ? orderAt(objects, placed[first].position - 1) : 0;
        const std::uint64_t after = placed[last - 1].position + 1 < count ? orderAt(objects, placed[last - 1].position + 1) : NoOrder - 1;
        if(before == NoOrder || after == NoOrder || after <= before) return false;
        const std::uint64_t step = std::min<std::uint64_t>((after - before)/(last - first + 1), std::uint64_t{1} << 32);
        /* No room left: a rebuild spreads every order out again */
        if(!step) return false;
        for(std::size_t k = first; k != last; ++k) orders[k] = before + step*(k - first + 1);
    }

    std::size_t appeared = 0;
    for(const Placed& p: placed) appeared += p.appeared;
    reserveIndices(std::min(_indexCount + appeared, ProjectFile::MaxObjects + 1));
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    std::vector<std::size_t> adopting;
    for(std::size_t k = 0; k != placed.size(); ++k) {
        Placed& p = placed[k];
        if(!p.appeared) {
            markChanged(p.index);
            _tree.detach(p.index);
            _tree.setOrder(p.index, orders[k]);
            _moved.push_back(p.index);
            continue;
        }
        const Containers::StringView key{p.key.data(), p.key.size()};
        p.index = takeIndex();
        keyToIndex[Containers::String{key}] = p.index;
        if(!p.index) {
            _pending[p.key] = orders[k];
            continue;
        }
        _pending.erase(p.key);
        graph.setObjectKey(p.index, key);
        _tree.setOrder(p.index, orders[k]);
        markChanged(p.index);
        readRecord(p.index, *p.record, Note::AllFields);
        _moved.push_back(p.index);
        adopting.push_back(k);
    }
    for(const std::size_t k: adopting) adoptDanglingChildren(placed[k].index, placed[k].key);
    return true;
}

/* What the notes say may have changed in records that kept their index */
void SceneKeeper::readNoted(const std::vector<unsigned short>& indexed, const std::vector<const rapidjson::Value*>& records) {
    for(std::size_t k = 0; k != indexed.size(); ++k) {
        readRecord(indexed[k], *records[k], _noted[indexed[k]] & Note::AllFields);
        _noted[indexed[k]] = 0;
    }
}

/* Objects whose parent named @p key before it had an index move under @p i */
void SceneKeeper::adoptDanglingChildren(const unsigned short i, const std::string& key) {
    const auto found = _dangling.find(key);
    if(found == _dangling.end()) return;
    for(const unsigned short child: found->second) {
        _danglingParent[child].clear();
        _tree.setNamedParent(child, i);
        _moved.push_back(child);
    }
    _dangling.erase(found);
}

/* Breaks the cycles the moves made, attaches what moved, and finds the first
   position where the layout differs */
void SceneKeeper::settle() {
    std::vector<unsigned short> from;
    for(const unsigned short i: _moved) if(_used[i]) from.push_back(i);
    std::sort(from.begin(), from.end(), [this](unsigned short a, unsigned short b) {
        return _tree.order(a) < _tree.order(b);
    });
    from.erase(std::unique(from.begin(), from.end()), from.end());
    std::vector<ObjectTree::Cycle> found;
    _tree.breakCycles(from, _moved, found);
    warnCycles(found);

    for(const unsigned short i: _moved) {
        if(!_used[i]) continue;
        const unsigned short wanted = _tree.wantedParent(i);
        if(_tree.parent(i) == wanted) continue;
        markChanged(i);
        _tree.attach(i, wanted);
    }

    /* An object that takes a place shows first right after the subtree of
       the sibling before it, or right after its parent. Where that one
       changed too, its own change shows earlier. */
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    const Containers::ArrayView<const unsigned short> indexToPosition = graph.storedIndexToPosition();
    const Containers::ArrayView<const Data::DynamicSceneGraph<unsigned short>::Hierarchy> hierarchy = graph.storedHierarchy();
    for(const unsigned short i: _touched) {
        if(!_used[i]) continue;
        const unsigned short sibling = _tree.previousLiveSibling(i);
        if(sibling != ObjectTree::None) {
            if(!_changed[sibling] && wasLaidOut(sibling)) {
                const std::size_t p = indexToPosition[sibling];
                _from = std::min<std::size_t>(_from, p + hierarchy[p].descendants + 1);
            }
        } else {
            const unsigned short parent = _tree.parent(i);
            if(!_changed[parent] && wasLaidOut(parent))
                _from = std::min<std::size_t>(_from, indexToPosition[parent] + 1u);
        }
    }
}

}
