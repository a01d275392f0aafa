/* Drawing the live object hierarchy with box-drawing characters, or listing
   it as JSON. */
#ifndef quelmar_Tree_h
#define quelmar_Tree_h

#include <cstddef>
#include <ostream>
#include <string>

namespace quelmar {

struct Program;

/** What of the tree to show */
struct TreeView {
    /** Key of the live object at the top; empty for the root, with everything */
    std::string top;
    /** Levels below the top to show */
    std::size_t depth;
};

/** Draws the live objects of @p view: key, name and a "*" when selected */
void printTree(Program& program, const TreeView& view, std::ostream& out);

/** Prints the live objects of @p view as one JSON document */
void printTreeJson(Program& program, const TreeView& view);

}

#endif
