/* How listings show objects. */
#ifndef quelmar_Objects_h
#define quelmar_Objects_h

#include <string>

namespace quelmar {

struct Program;

/** The name of object @p key as listings show it: a JSON string, or "(no name)" */
std::string displayName(const Program& program, const char* key);

}

#endif
