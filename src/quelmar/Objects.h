/* How listings show objects. */
#ifndef quelmar_Objects_h
#define quelmar_Objects_h

#include <string>
#include <vector>

namespace quelmar {

struct Program;

/** The name of object @p key as listings show it: a JSON string, or "(no name)" */
std::string displayName(Program& program, const char* key);

/** Where an object is, as listings show it: the names from the root down, each after a "/" */
std::string displayPath(const std::vector<std::string>& path);

}

#endif
