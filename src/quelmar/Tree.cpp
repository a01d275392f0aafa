/* Drawing the live object hierarchy with box-drawing characters, or listing
   it as JSON. */
#include "Tree.h"

#include <iostream>
#include <string>
#include <vector>

#include "Colour.h"
#include "JsonOutput.h"
#include "Objects.h"
#include "Program.h"

namespace quelmar {

namespace {

/* Deeper levels share one marker, so that a long chain of objects doesn't
   print a quadratic amount of indentation */
constexpr std::size_t DrawnDepth = 32;

typedef QuelmarEngine::Data::DynamicSceneGraph<unsigned short> SceneGraph;

/* Calls @p visit with every position of @p view in tree order, its depth
   below the top and how many objects below it are left out */
template<class Visitor> void visitTree(QuelmarEngine::QuelmarEditor& editor, const TreeView& view, const Visitor& visit) {
    const SceneGraph& graph = *editor.scene->sceneGraph;
    std::size_t top = 0;
    if(!view.top.empty()) {
        const auto& keyToIndex = editor.objectLookup->keyToIndex();
        const auto found = keyToIndex.find(Corrade::Containers::String{view.top.data(), view.top.size()});
        top = found == keyToIndex.end() ? 0 : graph.indexToPosition()[found->second];
    }
    const auto hierarchy = graph.hierarchy();
    const std::size_t topDepth = hierarchy[top].depth;
    const std::size_t end = top + hierarchy[top].descendants + 1;
    for(std::size_t p = top; p < end; ++p) {
        const std::size_t depth = hierarchy[p].depth - topDepth;
        const bool cut = depth == view.depth && hierarchy[p].descendants;
        visit(p, depth, cut ? std::size_t(hierarchy[p].descendants) : 0);
        if(cut) p += hierarchy[p].descendants;
    }
}

const char* keyAt(const SceneGraph& graph, const std::size_t position) {
    return graph.objectKeys().get(graph.positionToIndex()[position]);
}

}

void printTree(Program& program, const TreeView& view, std::ostream& out) {
    QuelmarEngine::QuelmarEditor& editor = program.session.editor();
    const SceneGraph& graph = *editor.scene->sceneGraph;
    const auto hierarchy = graph.hierarchy();

    /* Whether the ancestor at each depth is the last of its siblings, which
       decides between a continuing line and blank space below it */
    std::vector<bool> lastAtDepth(DrawnDepth + 1);
    const bool colour = program.colourOut && &out == &std::cout;
    std::string line, guides;
    visitTree(editor, view, [&](const std::size_t p, const std::size_t depth, const std::size_t hidden) {
        line.clear();
        guides.clear();
        if(depth) {
            const std::size_t parent = hierarchy[p].parent;
            const bool last = p + hierarchy[p].descendants == parent + hierarchy[parent].descendants;
            const std::size_t drawn = depth < DrawnDepth ? depth : DrawnDepth;
            lastAtDepth[drawn] = last;
            for(std::size_t d = 1; d < drawn; ++d) guides += lastAtDepth[d] ? "    " : "│   ";
            if(depth > DrawnDepth) guides += "··· ";
            guides += last ? "└── " : "├── ";
            line = painted(colour, Paint::Guide, guides);
        }
        if(p) {
            const char* const key = keyAt(graph, p);
            line += key;
            line += ' ';
            line += displayName(program, key);
            if(depth > DrawnDepth) line += " (depth " + std::to_string(depth) + ")";
            if(editor.data.isSelected(graph.positionToIndex()[p])) line += " " + painted(colour, Paint::Selected, "*");
        } else line += "(root)";
        if(hidden) line += " (" + std::to_string(hidden) + " more below)";
        out << line << '\n';
    });
    out.flush();
}

void printTreeJson(Program& program, const TreeView& view) {
    QuelmarEngine::QuelmarEditor& editor = program.session.editor();
    const SceneGraph& graph = *editor.scene->sceneGraph;
    const auto hierarchy = graph.hierarchy();

    JsonOutput output;
    rapidjson::Value objects{rapidjson::kArrayType};
    visitTree(editor, view, [&](const std::size_t p, const std::size_t depth, const std::size_t hidden) {
        if(!p) return;
        const char* const key = keyAt(graph, p);
        const std::size_t parent = hierarchy[p].parent;
        rapidjson::Value object = JsonOutput::object();
        output.add(object, "key", output.string(key))
              .add(object, "name", output.stringOrNull(program.session.objectName(key)))
              .add(object, "parent", parent ? output.string(keyAt(graph, parent)) : rapidjson::Value{})
              .add(object, "depth", rapidjson::Value{std::uint64_t(depth)})
              .add(object, "selected", rapidjson::Value{editor.data.isSelected(graph.positionToIndex()[p])})
              .add(object, "hidden", rapidjson::Value{std::uint64_t(hidden)});
        objects.PushBack(object, output.allocator());
    });
    output.set("objects", std::move(objects)).print();
}

}
