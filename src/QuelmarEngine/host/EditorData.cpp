#include "QuelmarEngine/host/EditorData.h"

#include <algorithm>
#include <cstring>

namespace QuelmarEngine {

EditorData::EditorData() = default;

bool EditorData::isSelected(const Data::Id id) const {
    return selection()[id];
}

void EditorData::selectObject(const Data::Id id, const bool selected) {
    _refresh();
    if(id >= _selectionSize) return;
    const std::uint32_t bit = 1u << (id % 32);
    if(selected) {
        _selectionWords[id/32] |= bit;
        ++_selectCount;
    }
    else _selectionWords[id/32] &= ~bit;
}

std::uint64_t EditorData::selectionSize() const {
    _refresh();
    return _selectionSize;
}

Containers::ArrayView<std::uint32_t> EditorData::selectionWords() {
    _refresh();
    return _selectionWords;
}

BitSetView EditorData::selection() const {
    _refresh();
    return {_selectionSize, _selectionWords.data()};
}

void EditorData::resizeSelection(const std::uint64_t size) {
    if(size == _selectionSize) return;
    Containers::Array<std::uint32_t> words{ValueInit, std::size_t((size + 31)/32)};
    const std::size_t kept = std::min(words.size(), _selectionWords.size());
    if(kept) std::memcpy(words.data(), _selectionWords.data(), kept*sizeof(std::uint32_t));
    /* Bits past the new size in the last word would otherwise survive */
    const std::uint64_t keptBits = std::min(size, _selectionSize);
    if(keptBits % 32 && keptBits/32 < words.size())
        words[keptBits/32] &= (1u << (keptBits % 32)) - 1;
    for(std::size_t i = (keptBits + 31)/32; i < words.size(); ++i) words[i] = 0;
    _selectionWords = std::move(words);
    _selectionSize = size;
}

void EditorData::keepSelected(const Containers::ArrayView<const std::uint32_t> kept) {
    const std::size_t common = std::min(kept.size(), _selectionWords.size());
    for(std::size_t i = 0; i != common; ++i) _selectionWords[i] &= kept[i];
    for(std::size_t i = common; i < _selectionWords.size(); ++i) _selectionWords[i] = 0;
}

}
