#include "QuelmarEngine/host/ObjectTree.h"

#include <algorithm>

namespace QuelmarEngine {

ObjectTree::ObjectTree() {
    resize(1);
}

void ObjectTree::resize(const std::size_t size) {
    _order.resize(size, 0);
    _namedParent.resize(size, 0);
    _parent.resize(size, None);
    _firstChild.resize(size, None);
    _lastChild.resize(size, None);
    _previous.resize(size, None);
    _next.resize(size, None);
    _liveChildren.resize(size, 0);
    _deleted.resize(size, 0);
    _broken.resize(size, 0);
    _malformed.resize(size, 0);
    _mark.resize(size, 0);
}

void ObjectTree::reserve(const std::size_t size) {
    _order.reserve(size);
    _namedParent.reserve(size);
    _parent.reserve(size);
    _firstChild.reserve(size);
    _lastChild.reserve(size);
    _previous.reserve(size);
    _next.reserve(size);
    _liveChildren.reserve(size);
    _deleted.reserve(size);
    _broken.reserve(size);
    _malformed.reserve(size);
    _mark.reserve(size);
}

void ObjectTree::clear() {
    const std::size_t size = this->size();
    _order.clear();
    _namedParent.clear();
    _parent.clear();
    _firstChild.clear();
    _lastChild.clear();
    _previous.clear();
    _next.clear();
    _liveChildren.clear();
    _deleted.clear();
    _broken.clear();
    _malformed.clear();
    _mark.clear();
    _brokenList.clear();
    _stamp = 0;
    resize(size);
}

void ObjectTree::free(const unsigned short i) {
    detach(i);
    _order[i] = 0;
    _namedParent[i] = 0;
    _deleted[i] = 0;
    /* A stale entry of the broken list is skipped, as the flag is clear */
    _broken[i] = 0;
    _malformed[i] = 0;
}

bool ObjectTree::setDeleted(const unsigned short i, const bool deleted) {
    if(bool(_deleted[i]) == deleted) return false;
    if(_parent[i] != None) {
        if(deleted) --_liveChildren[_parent[i]];
        else ++_liveChildren[_parent[i]];
    }
    _deleted[i] = deleted;
    return true;
}

void ObjectTree::attach(const unsigned short i, const unsigned short parent) {
    if(_parent[i] != None) detach(i);
    /* From the back, so that objects attached in map order cost nothing */
    unsigned short after = _lastChild[parent];
    while(after != None && _order[after] > _order[i]) after = _previous[after];
    _previous[i] = after;
    _next[i] = after == None ? _firstChild[parent] : _next[after];
    if(after == None) _firstChild[parent] = i;
    else _next[after] = i;
    if(_next[i] == None) _lastChild[parent] = i;
    else _previous[_next[i]] = i;
    _parent[i] = parent;
    if(!_deleted[i]) ++_liveChildren[parent];
}

void ObjectTree::detach(const unsigned short i) {
    const unsigned short parent = _parent[i];
    if(parent == None) return;
    if(_previous[i] != None) _next[_previous[i]] = _next[i];
    else _firstChild[parent] = _next[i];
    if(_next[i] != None) _previous[_next[i]] = _previous[i];
    else _lastChild[parent] = _previous[i];
    _previous[i] = _next[i] = _parent[i] = None;
    if(!_deleted[i]) --_liveChildren[parent];
}

bool ObjectTree::isLive(unsigned short i) const {
    for(; i != 0; i = _parent[i])
        if(i == None || _deleted[i]) return false;
    return true;
}

std::vector<unsigned short> ObjectTree::children(const unsigned short i) const {
    std::vector<unsigned short> out;
    for(unsigned short c = _firstChild[i]; c != None; c = _next[c]) out.push_back(c);
    return out;
}

unsigned short ObjectTree::previousLiveSibling(const unsigned short i) const {
    unsigned short s = _previous[i];
    while(s != None && _deleted[s]) s = _previous[s];
    return s;
}

unsigned short ObjectTree::nextInPreOrder(unsigned short i) const {
    for(unsigned short c = _firstChild[i]; c != None; c = _next[c])
        if(!_deleted[c]) return c;
    while(i != 0) {
        for(unsigned short s = _next[i]; s != None; s = _next[s])
            if(!_deleted[s]) return s;
        i = _parent[i];
    }
    return None;
}

std::uint32_t ObjectTree::nextStamp() {
    if(_stamp == ~std::uint32_t{}) {
        std::fill(_mark.begin(), _mark.end(), 0);
        _stamp = 0;
    }
    return ++_stamp;
}

auto ObjectTree::cycleThrough(const unsigned short start) -> Cycle {
    const std::uint32_t stamp = nextStamp();
    Cycle cycle{start};
    _mark[start] = stamp;
    unsigned short i = _namedParent[start];
    while(i != 0 && _mark[i] != stamp) {
        _mark[i] = stamp;
        cycle.push_back(i);
        i = _namedParent[i];
    }
    return i == start ? cycle : Cycle{};
}

auto ObjectTree::orderedCycle(const Cycle& members) const -> Cycle {
    std::size_t first = 0;
    for(std::size_t i = 1; i != members.size(); ++i)
        if(_order[members[i]] < _order[members[first]]) first = i;
    Cycle out;
    out.reserve(members.size());
    for(std::size_t i = 0; i != members.size(); ++i)
        out.push_back(members[(first + i) % members.size()]);
    return out;
}

void ObjectTree::breakCycles(const std::vector<unsigned short>& from, std::vector<unsigned short>& moved, std::vector<Cycle>& found) {
    /* A cycle that lost a member is gone; one that took members in may have
       another member first in order now */
    std::vector<unsigned short> before;
    before.swap(_brokenList);
    for(const unsigned short broken: before) {
        if(!_broken[broken]) continue;
        const Cycle cycle = cycleThrough(broken);
        const unsigned short first = cycle.empty() ? 0 : orderedCycle(cycle)[0];
        if(first == broken) {
            _brokenList.push_back(broken);
            continue;
        }
        _broken[broken] = 0;
        moved.push_back(broken);
        if(first && !_broken[first]) {
            _broken[first] = 1;
            _brokenList.push_back(first);
            moved.push_back(first);
            found.push_back(orderedCycle(cycle));
        }
    }
    /* An object listed twice (freed and broken again) stays once */
    std::sort(_brokenList.begin(), _brokenList.end());
    _brokenList.erase(std::unique(_brokenList.begin(), _brokenList.end()), _brokenList.end());

    /* New cycles: a walk up that comes back onto itself. Walks stop where
       an earlier one went, so all of them together see every object at most
       once. */
    const std::uint32_t onPath = nextStamp(), done = nextStamp();
    std::vector<unsigned short> path;
    for(const unsigned short start: from) {
        path.clear();
        unsigned short i = start;
        while(i != 0 && _mark[i] != onPath && _mark[i] != done) {
            _mark[i] = onPath;
            path.push_back(i);
            i = _namedParent[i];
        }
        if(i != 0 && _mark[i] == onPath) {
            const Cycle cycle = orderedCycle(Cycle(std::find(path.begin(), path.end(), i), path.end()));
            if(!_broken[cycle[0]]) {
                _broken[cycle[0]] = 1;
                _brokenList.push_back(cycle[0]);
                moved.push_back(cycle[0]);
            }
            found.push_back(cycle);
        }
        for(const unsigned short member: path) _mark[member] = done;
    }
}

}
