#include "QuelmarEngine/host/SceneKeeper.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace {

typedef ObjectTree::Matrix4 Matrix4;

/* The record's local matrix into @p out; identity when it has none, and
   false when what it has isn't sixteen numbers */
bool localTransformation(const rapidjson::Value& record, Matrix4& out) {
    out = Matrix4{};
    const rapidjson::Value* const value = record.IsObject() ? findMember(record, "transformation") : nullptr;
    if(!value) return true;
    if(!value->IsArray() || value->Size() != 16) return false;
    Matrix4 matrix;
    for(rapidjson::SizeType i = 0; i != 16; ++i) {
        const rapidjson::Value& number = (*value)[i];
        /* A number beyond float range would turn into infinity */
        if(!number.IsNumber() || !(std::abs(number.GetDouble()) <= FLT_MAX)) return false;
        matrix[i/4][i % 4] = float(number.GetDouble());
    }
    out = matrix;
    return true;
}

/* A path component as the key it names: "~1" is "/", "~0" is "~". The last
   component counts its terminating zero, which is no part of the key. */
void appendUnescaped(std::string& out, const Containers::String& component) {
    const char* const data = component.data();
    const std::size_t size = std::strlen(data);
    for(std::size_t i = 0; i != size; ++i) {
        if(data[i] == '~' && i + 1 != size && (data[i + 1] == '0' || data[i + 1] == '1')) {
            out += data[++i] == '0' ? '~' : '/';
        } else out += data[i];
    }
}

}

SceneKeeper::SceneKeeper(QuelmarEditor& editor): _editor(editor) {}

SceneKeeper::~SceneKeeper() = default;

void SceneKeeper::reset() {
    _editor.objectLookup->storedKeyToIndex().clear();
    _tree.clear();
    _tree.resize(1);
    _used.assign(1, 1);
    _noted.assign(1, 0);
    _changed.assign(1, 0);
    _danglingParent.assign(1, {});
    _dangling.clear();
    _pending.clear();
    _free.clear();
    _indexCount = 1;
    _live.clear();
    _warnings.clear();
    _graph = nullptr;
    _editor.data.resizeSelection(0);
    rebuild();
}

void SceneKeeper::note(const Change& change, const Containers::ArrayView<const Containers::String> path) {
    /* The root path has one component, every other starts with an empty one */
    if(path.size() < 2) {
        _stale = _rebuildNeeded = true;
        return;
    }
    if(std::strcmp(path[1].data(), "objects") != 0) return;
    /* Even a change that moves nothing lets the selection be checked */
    _stale = true;
    if(path.size() < 3) {
        _rebuildNeeded = true;
        return;
    }

    std::uint8_t what = 0;
    if(path.size() == 3) what = Note::AllFields;
    else if(std::strcmp(path[3].data(), "parent") == 0) what = Note::Parent;
    else if(std::strcmp(path[3].data(), "deleted") == 0) what = Note::Deleted;
    else if(std::strcmp(path[3].data(), "transformation") == 0) what = Note::Transformation;
    /* A creation or removal anywhere in a record may make the record, or
       take it away when it leaves it empty, and brings it back at another
       place in the map. A replacement keeps it where it is. */
    if(!change.oldValue || !change.newValue) what |= Note::Place;
    if(!what) return;

    _noteOffsets.push_back(_noteKeys.size());
    appendUnescaped(_noteKeys, path[2]);
    _noteKeys += '\0';
    _noteWhat.push_back(what);
}

void SceneKeeper::refresh() {
    /* A host that took a part away gets the fatal error where a command
       reaches for it, not here */
    if(!_stale || _refreshing || !_editor.scene || !_editor.scene->sceneGraph || !_editor.objectLookup) return;
    _refreshing = true;
    if(!_incremental || _rebuildNeeded || _graph != _editor.scene->sceneGraph.get() || _lookup != _editor.objectLookup.get() || !update())
        rebuild();
    _refreshing = false;
}

const rapidjson::Value* SceneKeeper::objects() const {
    const rapidjson::Document* const document = _editor.data.project.document.get();
    if(!document || !document->IsObject()) return nullptr;
    const rapidjson::Value* const objects = findMember(*document, "objects");
    return objects && objects->IsObject() ? objects : nullptr;
}

const rapidjson::Value* SceneKeeper::recordOf(const rapidjson::Value* const objects, const Containers::StringView key) const {
    return objects ? _editor.data.project.findMember(*objects, key) : nullptr;
}

void SceneKeeper::clearNotes() {
    _noteKeys.clear();
    _noteOffsets.clear();
    _noteWhat.clear();
    _stale = _rebuildNeeded = false;
}

void SceneKeeper::growIndices(const std::size_t count) {
    if(count <= _tree.size()) return;
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    graph.resize(graph.storedPositionCount(), count);
    _tree.resize(count);
    _used.resize(count, 0);
    _noted.resize(count, 0);
    _changed.resize(count, 0);
    _danglingParent.resize(count);
}

void SceneKeeper::reserveIndices(const std::size_t count) {
    _tree.reserve(count);
    _used.reserve(count);
    _noted.reserve(count);
    _changed.reserve(count);
    _danglingParent.reserve(count);
}

unsigned short SceneKeeper::takeIndex() {
    if(!_free.empty()) {
        std::pop_heap(_free.begin(), _free.end(), std::greater<unsigned short>{});
        const unsigned short index = _free.back();
        _free.pop_back();
        _used[index] = 1;
        return index;
    }
    if(_indexCount > ProjectFile::MaxObjects) {
        warnOnce("Objects past the " + std::to_string(ProjectFile::MaxObjects) + "th are left out of the scene, as a project can't have more");
        return 0;
    }
    growIndices(_indexCount + 1);
    _used[_indexCount] = 1;
    return (unsigned short)(_indexCount++);
}

void SceneKeeper::freeIndex(const unsigned short i) {
    /* Whoever takes the index next starts unselected */
    _editor.data.selectObject(i, false);
    _used[i] = 0;
    _free.push_back(i);
    std::push_heap(_free.begin(), _free.end(), std::greater<unsigned short>{});
}

void SceneKeeper::readRecord(const unsigned short i, const rapidjson::Value& record, const std::uint8_t what) {
    const bool object = record.IsObject();
    if(what & Note::Deleted) {
        const rapidjson::Value* const flag = object ? findMember(record, "deleted") : nullptr;
        if(_tree.setDeleted(i, flag && flag->IsBool() && flag->GetBool())) markChanged(i);
    }
    if(what & Note::Transformation) {
        Matrix4 matrix;
        const bool usable = localTransformation(record, matrix);
        _tree.setMalformedTransformation(i, !usable);
        _editor.scene->sceneGraph->setLocalTransformation(i, matrix);
        _transformed.push_back(i);
    }
    if(what & Note::Parent) {
        const rapidjson::Value* const parent = object ? findMember(record, "parent") : nullptr;
        const bool named = parent && parent->IsString() && parent->GetStringLength();
        if(nameParent(i, named ? Containers::StringView{parent->GetString(), parent->GetStringLength()} : Containers::StringView{}))
            _moved.push_back(i);
    }
}

bool SceneKeeper::nameParent(const unsigned short i, const Containers::StringView key) {
    unsigned short parent = 0;
    if(!key.isEmpty()) {
        ObjectKeyMap& keyToIndex = _editor.objectLookup->storedKeyToIndex();
        const auto found = keyToIndex.find(Containers::String{key});
        if(found != keyToIndex.end()) parent = found->second;
    }

    /* A key that no object with an index has: remembered, so that the
       object moves under the record once it gets an index */
    std::string& dangling = _danglingParent[i];
    const bool dangles = !key.isEmpty() && !parent;
    if(!dangling.empty() && (!dangles || Containers::StringView{dangling.data(), dangling.size()} != key)) {
        std::vector<unsigned short>& children = _dangling[dangling];
        children.erase(std::find(children.begin(), children.end(), i));
        if(children.empty()) _dangling.erase(dangling);
        dangling.clear();
    }
    if(dangles && dangling.empty()) {
        dangling.assign(key.data(), key.size());
        _dangling[dangling].push_back(i);
    }

    const bool changed = _tree.namedParent(i) != parent;
    _tree.setNamedParent(i, parent);
    return changed;
}

void SceneKeeper::warnCycles(const std::vector<ObjectTree::Cycle>& cycles) {
    const Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    for(const ObjectTree::Cycle& cycle: cycles) {
        std::string members;
        for(const unsigned short i: cycle)
            members += (members.empty() ? "" : ", ") + std::string{graph.storedObjectKey(i)};
        warnOnce("Objects " + members + " are parents of each other, showing " + graph.storedObjectKey(cycle[0]) + " under the root");
    }
}

void SceneKeeper::warnOnce(std::string message) {
    /* Problems of the document would otherwise show at every refresh until
       fixed */
    if(_warnings.insert(message).second) Utility::Warning{} << message;
}

bool SceneKeeper::wasLaidOut(const unsigned short i) const {
    return i/32 < _live.size() && (_live[i/32] >> (i % 32)) & 1u;
}

void SceneKeeper::markChanged(const unsigned short i) {
    if(_changed[i]) return;
    _changed[i] = 1;
    _touched.push_back(i);
    /* Where it was is where the layout first differs, at the latest, and
       its old subtree where the old layout may still differ */
    if(!wasLaidOut(i)) return;
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    const std::size_t position = graph.storedIndexToPosition()[i];
    _from = std::min(_from, position);
    _lastOldPosition = std::max<std::size_t>(_lastOldPosition, position + graph.storedHierarchy()[position].descendants);
}

void SceneKeeper::layOut(const std::size_t from, const bool changesOnly) {
    Data::DynamicSceneGraph<unsigned short>& graph = *_editor.scene->sceneGraph;
    TreeChanges changes{_changed.data(), _lastOldPosition, 0};
    if(changesOnly) for(const unsigned short i: _touched)
        changes.liveCount += _used[i] && _tree.isLive(i);
    const SceneLayout::Range laidOut = _layout.layOut(_tree, graph, from, _live, changesOnly ? &changes : nullptr);
    /* The other positions kept their objects and were warned about */
    const Containers::ArrayView<const unsigned short> positionToIndex = graph.storedPositionToIndex();
    for(std::size_t p = laidOut.begin; p != laidOut.end; ++p)
        if(_tree.hasMalformedTransformation(positionToIndex[p]))
            warnOnce(std::string{"Object "} + graph.storedObjectKey(positionToIndex[p]) + " has a transformation that is not 16 numbers, using the identity");
    ++_changeCount;
}

void SceneKeeper::fillSelection(const bool laidOut) {
    _editor.data.resizeSelection(_indexCount);
    /* Objects without a position can't stay selected: those that lost it,
       and those selected since the last time */
    if(!laidOut && _editor.data.selectCount() == _maskedAt) return;
    _editor.data.keepSelected({_live.data(), _live.size()});
    _maskedAt = _editor.data.selectCount();
}

}
