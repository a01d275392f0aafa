#include "QuelmarEngine/host/QuelmarEditor.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/ChangeHandler.h"
#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine {

namespace {

/* Never an object index, as there are at most 65534 */
constexpr unsigned short NoIndex = 0xffff;

void refreshEditor(void* editor) {
    static_cast<QuelmarEditor*>(editor)->refresh();
}

typedef Magnum::Math::Matrix4<Magnum::Float> Matrix4;

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

}

QuelmarEditor::QuelmarEditor():
    scene{Containers::pointer<Scene>()},
    changeManager{Containers::pointer<ChangeManager>(data.project)},
    objectLookup{Containers::pointer<ObjectLookup>()}
{
    scene->sceneGraph = Containers::pointer<Data::DynamicSceneGraph<unsigned short>>();
    reset();
}

QuelmarEditor::~QuelmarEditor() = default;

bool QuelmarEditor::loadFromString(const Containers::StringView json) {
    if(!data.project.loadFromString(json)) return false;
    reset();
    return true;
}

bool QuelmarEditor::loadFromFile(const Containers::StringView path) {
    if(!data.project.loadFromFile(path)) return false;
    reset();
    return true;
}

void QuelmarEditor::reset() {
    changeManager->reset(data.project);
    /* A fresh history matches the file as it was opened */
    changeManager->markSave();
    changeManager->addChangeHandler("", [](const Change&, Containers::ArrayView<const Containers::String> path, void* self) {
        /* The graph is made from "objects" alone; the root path has one
           component, everything else starts with an empty one */
        if(path.size() < 2 || std::strcmp(path[1].data(), "objects") == 0)
            static_cast<QuelmarEditor*>(self)->_dirty = true;
    }, this);

    const RefreshHook hook{refreshEditor, this};
    data.setRefreshHook(hook);
    scene->sceneGraph->setRefreshHook(hook);
    objectLookup->setRefreshHook(hook);

    objectLookup->storedKeyToIndex().clear();
    _indexCount = 1;
    _freeIndices.clear();
    _seen.clear();
    _warnings.clear();
    data.resizeSelection(0);
    _dirty = true;
    refresh();
}

void QuelmarEditor::refresh() {
    /* A host that took a part away gets the fatal error where a command
       reaches for it, not here */
    if(!_dirty || _rebuilding || !scene || !scene->sceneGraph || !objectLookup) return;
    _rebuilding = true;
    _dirty = false;
    rebuild();
    _rebuilding = false;
}

void QuelmarEditor::warnOnce(std::string message) {
    if(_warnings.insert(message).second) Utility::Warning{} << message;
}

void QuelmarEditor::rebuild() {
    ++_rebuildCount;
    ObjectKeyMap& keyToIndex = objectLookup->storedKeyToIndex();
    const rapidjson::Value* objects = findMember(*data.project.document, "objects");
    if(objects && !objects->IsObject()) objects = nullptr;
    const std::size_t recordCount = objects ? objects->MemberCount() : 0;

    /* Keys that keep their index first, marking records that need one */
    ++_generation;
    _seen.resize(_indexCount);
    std::vector<unsigned short*> slot(recordCount);
    for(std::size_t r = 0; r != recordCount; ++r) {
        const rapidjson::Value& name = (objects->MemberBegin() + r)->name;
        unsigned short& index = keyToIndex[Containers::String{name.GetString(), name.GetStringLength()}];
        if(index) _seen[index] = _generation;
        else index = NoIndex;
        slot[r] = &index;
    }

    /* Free the indices of keys that no longer name a record, and forget
       keys that a lookup entered with index 0, before handing out new ones */
    for(auto it = keyToIndex.begin(); it != keyToIndex.end(); ) {
        const unsigned short index = it->second;
        if(index == NoIndex || (index && _seen[index] == _generation)) {
            ++it;
            continue;
        }
        if(index) {
            data.selectObject(index, false);
            _freeIndices.push_back(index);
        }
        it = keyToIndex.erase(it);
    }

    std::vector<unsigned short> recordIndex(recordCount);
    for(std::size_t r = 0; r != recordCount; ++r) {
        unsigned short& index = *slot[r];
        if(index == NoIndex) {
            if(!_freeIndices.empty()) {
                index = _freeIndices.back();
                _freeIndices.pop_back();
            } else if(_indexCount <= ProjectFile::MaxObjects) {
                index = (unsigned short)(_indexCount++);
            } else {
                /* Looked up as 0 until an index is free */
                index = 0;
                warnOnce("Objects past the " + std::to_string(ProjectFile::MaxObjects) + "th are left out of the scene, as a project can't have more");
                continue;
            }
        }
        recordIndex[r] = index;
    }
    data.resizeSelection(_indexCount);

    /* Per index: record, parent, flag, order in the map */
    const std::size_t indexCount = _indexCount;
    std::vector<const rapidjson::Value*> record(indexCount);
    std::vector<const char*> key(indexCount, "");
    std::vector<unsigned short> parent(indexCount, 0);
    std::vector<std::size_t> order(indexCount, 0);
    std::vector<char> deleted(indexCount, 0);
    for(std::size_t r = 0; r != recordCount; ++r) if(const unsigned short index = recordIndex[r]) {
        const auto member = objects->MemberBegin() + r;
        record[index] = &member->value;
        key[index] = member->name.GetString();
        order[index] = r;
        if(!member->value.IsObject()) continue;
        const rapidjson::Value* const flag = findMember(member->value, "deleted");
        deleted[index] = flag && flag->IsBool() && flag->GetBool();
        const rapidjson::Value* const parentKey = findMember(member->value, "parent");
        if(parentKey && parentKey->IsString() && parentKey->GetStringLength()) {
            const auto found = keyToIndex.find(Containers::String{parentKey->GetString(), parentKey->GetStringLength()});
            if(found != keyToIndex.end()) parent[index] = found->second;
        }
    }

    /* Break parent cycles: walk up from every object; a walk that comes back
       onto itself has found a cycle, which is hung under the root at its
       member that comes first in the map */
    {
        enum: char { Unvisited, OnPath, Done };
        std::vector<char> state(indexCount, Unvisited);
        state[0] = Done;
        std::vector<unsigned short> path;
        for(std::size_t r = 0; r != recordCount; ++r) {
            unsigned short current = recordIndex[r];
            if(!current || state[current] == Done) continue;
            path.clear();
            while(state[current] == Unvisited) {
                state[current] = OnPath;
                path.push_back(current);
                current = parent[current];
            }
            if(state[current] == OnPath) {
                std::size_t first = path.size();
                while(path[first - 1] != current) --first;
                --first;
                unsigned short earliest = current;
                std::string members;
                for(std::size_t i = first; i != path.size(); ++i) {
                    if(order[path[i]] < order[earliest]) earliest = path[i];
                    members += (members.empty() ? "" : ", ") + std::string{key[path[i]]};
                }
                warnOnce("Objects " + members + " are parents of each other, showing " + key[earliest] + " under the root");
                parent[earliest] = 0;
            }
            for(const unsigned short index: path) state[index] = Done;
        }
    }

    /* Children in map order */
    std::vector<unsigned short> firstChild(indexCount, NoIndex), lastChild(indexCount, NoIndex), nextSibling(indexCount, NoIndex);
    for(std::size_t r = 0; r != recordCount; ++r) if(const unsigned short index = recordIndex[r]) {
        const unsigned short p = parent[index];
        if(lastChild[p] == NoIndex) firstChild[p] = index;
        else nextSibling[lastChild[p]] = index;
        lastChild[p] = index;
    }

    /* Depth-first pre-order, leaving out deleted objects with everything
       below them */
    std::vector<unsigned short> positionIndex{0}, positionParent{0}, positionDepth{0};
    std::vector<unsigned short> positionOf(indexCount, 0);
    std::vector<unsigned short> cursor(indexCount, NoIndex);
    {
        std::vector<unsigned short> stack{0};
        cursor[0] = firstChild[0];
        while(!stack.empty()) {
            const unsigned short node = stack.back();
            const unsigned short child = cursor[node];
            if(child == NoIndex) {
                stack.pop_back();
                continue;
            }
            cursor[node] = nextSibling[child];
            if(deleted[child]) continue;
            positionOf[child] = (unsigned short)positionIndex.size();
            positionIndex.push_back(child);
            positionParent.push_back(positionOf[node]);
            positionDepth.push_back((unsigned short)(positionDepth[positionOf[node]] + 1));
            cursor[child] = firstChild[child];
            stack.push_back(child);
        }
    }

    const std::size_t positionCount = positionIndex.size();
    Containers::Array<Data::DynamicSceneGraph<unsigned short>::Hierarchy> hierarchy{positionCount};
    Containers::Array<unsigned short> positionToIndex{positionCount};
    Containers::Array<Matrix4> local{positionCount};
    for(std::size_t p = 0; p != positionCount; ++p) {
        hierarchy[p].parent = positionParent[p];
        hierarchy[p].depth = positionDepth[p];
        positionToIndex[p] = positionIndex[p];
        if(p && !localTransformation(*record[positionIndex[p]], local[p]))
            warnOnce(std::string{"Object "} + key[positionIndex[p]] + " has a transformation that is not 16 numbers, using the identity");
    }
    /* Positions are pre-order, so every subtree is summed before its parent */
    for(std::size_t p = positionCount - 1; p > 0; --p) {
        hierarchy[positionParent[p]].descendants += hierarchy[p].descendants + 1;
        ++hierarchy[positionParent[p]].childCount;
    }

    Containers::Array<unsigned short> indexToPosition{indexCount};
    StringArray objectKeys{indexCount};
    for(std::size_t i = 0; i != indexCount; ++i) {
        indexToPosition[i] = positionOf[i];
        objectKeys.add(key[i]);
        /* Objects that are in no position can't stay selected */
        if(i && !positionOf[i]) data.selectObject(Data::Id((unsigned short)i), false);
    }

    scene->sceneGraph->setup(std::move(hierarchy), std::move(positionToIndex), std::move(indexToPosition), std::move(objectKeys), std::move(local));
}

}
