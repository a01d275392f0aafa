#ifndef QuelmarEngine_host_Implementation_DocumentPaths_h
#define QuelmarEngine_host_Implementation_DocumentPaths_h
/* Texts and JSON Pointer paths that the edit session and its rules build
   from the keys they are given. */

#include <string>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine { namespace Implementation {

inline std::string text(const Containers::StringView view) {
    return {view.data(), view.size()};
}

/* The path of object @p key's record, or of its member @p member */
inline std::string objectPath(const Containers::StringView key, const char* const member = nullptr) {
    std::string path = "/objects";
    appendPointerToken(path, key);
    if(member) appendPointerToken(path, member);
    return path;
}

}}

#endif
