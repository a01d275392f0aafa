/* Drawing the live object hierarchy with box-drawing characters. */
#ifndef quelmar_Tree_h
#define quelmar_Tree_h

#include <ostream>

namespace quelmar {

struct Program;

/** Draws every live object: key, name and a "*" when it is selected */
void printTree(Program& program, std::ostream& out);

}

#endif
