/* Translation between the selection (bits over object indices) and object
   keys: selecting by key, listing selected keys, finding the attach point. */

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Selection.h"

#include <cstdint>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

void selectObjects(QuelmarEditor& editor, const std::initializer_list<const char*> keys) {
    /* A null key is the root, which has no key to look up */
    StringArray array{keys.size()};
    bool root = false;
    for(const char* key: keys) {
        if(key) array.add(key, -1);
        else root = true;
    }
    selectObjects(editor, array);
    if(root) editor.data.selectObject(0, true);
}

void selectObjects(QuelmarEditor& editor, StringArrayView& keys) {
    /* Cleared word by word: selectObject() would only reach bits below the
       size, and the words are what the queries scan */
    for(std::uint32_t& word: editor.data.selectionWords()) word = 0;
    if(keys.isEmpty()) return;

    for(std::size_t i = 0; i != keys.size(); ++i) {
        ObjectLookup& lookup = *editor.objectLookup;
        editor.data.selectObject(lookup.keyToIndex()[Containers::String{keys.get(i)}], true);
    }
}

StringArray selectedObjectKeys(QuelmarEditor& editor) {
    StringArray out{24};
    Scene& scene = *editor.scene;
    const Data::DynamicSceneGraph<unsigned short>& graph = *scene.sceneGraph;
    for(std::size_t p = 1; p < graph.header().objectCount; ++p) {
        const unsigned short i = graph.positionToIndex()[p];
        if(editor.data.isSelected(i))
            out.add(editor.scene->sceneGraph->objectKeys().get(i), -1);
    }
    return out;
}

StringArray selectedObjectKeysWithTrees(QuelmarEditor& editor) {
    StringArray out{24};
    Scene& scene = *editor.scene;
    const Data::DynamicSceneGraph<unsigned short>& graph = *scene.sceneGraph;
    for(std::size_t p = 1; p < graph.header().objectCount; ) {
        const unsigned short i = graph.positionToIndex()[p];
        if(!editor.data.isSelected(i)) {
            ++p;
            continue;
        }

        out.add(graph.objectKeys().get(i), -1);
        const std::size_t last = p + graph.hierarchy()[p].descendants;
        for(std::size_t q = p + 1; q <= last; ++q) {
            const Data::DynamicSceneGraph<unsigned short>& again = *editor.scene->sceneGraph;
            out.add(again.objectKeys().get(again.positionToIndex()[q]), -1);
        }
        /* A selected object inside this subtree is already listed */
        p = last + 1;
    }
    return out;
}

namespace Implementation {

std::pair<const char*, const char*> selectedObjectAndParent(QuelmarEditor& editor) {
    const std::uint64_t size = editor.data.selectionSize();
    if(!size) return {};

    /* Lowest set bit, ignoring the last word's bits at or beyond the size */
    const Containers::ArrayView<std::uint32_t> words = editor.data.selectionWords();
    const std::uint64_t wordCount = (size + 31)/32;
    std::uint64_t found = 0;
    bool any = false;
    for(std::uint64_t w = 0; w < wordCount && w < words.size() && !any; ++w) {
        std::uint32_t word = words[w];
        if(w == wordCount - 1 && size % 32)
            word &= (std::uint32_t{1} << (size % 32)) - 1;
        if(!word) continue;
        unsigned bit = 0;
        while(!(word & (std::uint32_t{1} << bit))) ++bit;
        found = w*32 + bit;
        any = true;
    }
    /* With the root selected there is nothing to attach beside */
    if(!any || found == 0) return {};

    Scene& scene = *editor.scene;
    const Data::DynamicSceneGraph<unsigned short>& graph = *scene.sceneGraph;
    const std::size_t i = std::size_t(found);
    const char* const key = graph.objectKeys().get(i);
    const unsigned short parentPosition = graph.hierarchy()[graph.indexToPosition()[i]].parent;
    const unsigned short parent = graph.positionToIndex()[parentPosition];
    if(!parent) return {key, nullptr};
    return {key, graph.objectKeys().get(parent)};
}

}

}
