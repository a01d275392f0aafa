/* Rebuilding the scene from the whole "objects" map, in steps: the reference
   that the updates in proportion to a change have to match, and what a
   change of the whole map takes. */

#include "QuelmarEngine/host/SceneKeeper.h"

#include <algorithm>

#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

/* Never an object index, as there are at most 65534 */
constexpr unsigned short NoIndex = 0xffff;

/* Orders of a rebuild leave room for 2^32 - 1 records between neighbours */
std::uint64_t orderOfPosition(const std::size_t position) {
    return std::uint64_t(position + 1) << 32;
}

}

void SceneKeeper::rebuild() {
    if(!_editor.scene || !_editor.scene->sceneGraph || !_editor.objectLookup) return;
    _graph = _editor.scene->sceneGraph.get();
    _lookup = _editor.objectLookup.get();
    clearNotes();
    clearState();

    const std::vector<Record> records = assignIndices(objects());
    readRecords(records);
    breakAllCycles(records);
    orderChildren(records);
    layOut(1, false);
    fillSelection(true);
}

void SceneKeeper::clearState() {
    _tree.clear();
    _dangling.clear();
    for(std::string& key: _danglingParent) key.clear();
    _live.assign(_live.size(), 0);
    /* An update that gave up may have left marks */
    _changed.assign(_changed.size(), 0);
    _moved.clear();
    _touched.clear();
    _transformed.clear();
    _from = 0;
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    graph.resize(1, _tree.size());
    graph.storedHierarchy()[0] = {};
    for(unsigned short& position: graph.storedIndexToPosition()) position = 0;
}

/* Keys that have an index keep it. Indices of keys that no longer name a
   record are freed, and keys a lookup entered with index 0 forgotten,
   before records without an index take the smallest free ones in map
   order. Past the object limit a record waits without an index. */
auto SceneKeeper::assignIndices(const rapidjson::Value* const objects) -> std::vector<Record> {
    ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
    const std::size_t count = objects ? objects->MemberCount() : 0;
    std::vector<Record> records;
    std::vector<unsigned short*> slots;
    records.reserve(count);
    slots.reserve(count);
    std::vector<char> kept(_indexCount, 0);
    for(std::size_t position = 0; position != count; ++position) {
        const rapidjson::Value::ConstMemberIterator member = objects->MemberBegin() + position;
        const Containers::StringView key{member->name.GetString(), member->name.GetStringLength()};
        unsigned short& slot = keyToIndex[Containers::String{key}];
        /* Of records with the same key, the first is the one lookups find */
        if(slot == NoIndex || (slot && slot < _indexCount && kept[slot])) continue;
        if(slot && slot < _indexCount) kept[slot] = 1;
        else slot = NoIndex;
        records.push_back({key, &member->value, position, 0});
        slots.push_back(&slot);
    }

    for(auto it = keyToIndex.begin(); it != keyToIndex.end(); ) {
        const unsigned short index = it->second;
        if(index == NoIndex || (index && index < _indexCount && kept[index])) {
            ++it;
            continue;
        }
        /* Whoever takes the index next starts unselected */
        if(index) _editor.data.selectObject(index, false);
        it = keyToIndex.erase(it);
    }
    /* In ascending order, which is a heap with the smallest on top */
    _free.clear();
    for(std::size_t i = 1; i != _indexCount; ++i) {
        _used[i] = kept[i];
        if(!kept[i]) _free.push_back((unsigned short)i);
    }

    _pending.clear();
    /* Grown once, not once per new index */
    std::size_t needed = 0;
    for(unsigned short* const slot: slots) needed += *slot == NoIndex;
    reserveIndices(std::min(_indexCount + needed, ProjectFile::MaxObjects + 1));
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    for(std::size_t i = 1; i != _indexCount; ++i) if(!kept[i]) graph.setObjectKey(i, {});
    for(std::size_t r = 0; r != records.size(); ++r) {
        unsigned short& slot = *slots[r];
        if(slot == NoIndex) {
            slot = takeIndex();
            if(!slot) {
                _pending.emplace(std::string{records[r].key.data(), records[r].key.size()}, orderOfPosition(records[r].position));
                continue;
            }
        }
        records[r].index = slot;
        graph.setObjectKey(slot, records[r].key);
    }
    return records;
}

/* Order, deleted flag, local transformation and named parent of every
   object; a parent key without an index leaves the object under the root */
void SceneKeeper::readRecords(const std::vector<Record>& records) {
    for(const Record& record: records) if(record.index) {
        _tree.setOrder(record.index, orderOfPosition(record.position));
        readRecord(record.index, *record.value, Note::AllFields);
    }
    _moved.clear();
    _transformed.clear();
    for(const unsigned short i: _touched) _changed[i] = 0;
    _touched.clear();
}

/* Walks up from every object, in map order */
void SceneKeeper::breakAllCycles(const std::vector<Record>& records) {
    std::vector<unsigned short> from;
    from.reserve(records.size());
    for(const Record& record: records) if(record.index) from.push_back(record.index);
    std::vector<unsigned short> moved;
    std::vector<ObjectTree::Cycle> found;
    _tree.breakCycles(from, moved, found);
    warnCycles(found);
}

/* Attached in map order, every object lands after its siblings */
void SceneKeeper::orderChildren(const std::vector<Record>& records) {
    for(const Record& record: records) if(record.index)
        _tree.attach(record.index, _tree.wantedParent(record.index));
}

}
