/* Drawing the live object hierarchy with box-drawing characters. */
#include "Tree.h"

#include <string>
#include <vector>

#include "Objects.h"
#include "Program.h"

namespace quelmar {

namespace {

/* Deeper levels share one marker, so that a long chain of objects doesn't
   print a quadratic amount of indentation */
constexpr std::size_t DrawnDepth = 32;

}

void printTree(Program& program, std::ostream& out) {
    QuelmarEngine::QuelmarEditor& editor = program.session.editor();
    const auto& graph = *editor.scene->sceneGraph;
    const std::size_t count = graph.header().objectCount;
    const auto hierarchy = graph.hierarchy();
    const auto positionToIndex = graph.positionToIndex();

    out << "(root)\n";
    /* Whether the ancestor at each depth is the last of its siblings, which
       decides between a continuing line and blank space below it */
    std::vector<bool> lastAtDepth(DrawnDepth + 1);
    std::string line;
    for(std::size_t p = 1; p < count; ++p) {
        const std::size_t parent = hierarchy[p].parent;
        const bool last = p + hierarchy[p].descendants == parent + hierarchy[parent].descendants;
        const std::size_t depth = hierarchy[p].depth;
        const std::size_t drawn = depth < DrawnDepth ? depth : DrawnDepth;
        lastAtDepth[drawn] = last;

        line.clear();
        for(std::size_t d = 1; d < drawn; ++d) line += lastAtDepth[d] ? "    " : "│   ";
        if(depth > DrawnDepth) line += "··· ";
        line += last ? "└── " : "├── ";

        const unsigned short index = positionToIndex[p];
        const char* const key = graph.objectKeys().get(index);
        line += key;
        line += ' ';
        line += displayName(program, key);
        if(depth > DrawnDepth) line += " (depth " + std::to_string(depth) + ")";
        if(editor.data.isSelected(index)) line += " *";
        out << line << '\n';
    }
    out.flush();
}

}
