#ifndef QuelmarEngine_host_Glob_h
#define QuelmarEngine_host_Glob_h
/* Shell-style wildcard patterns, for finding objects by name. */

#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** Whether @p text holds a wildcard: `*`, `?` or `[` */
bool isGlobPattern(Containers::StringView text);

/**
@brief Whether all of @p text matches @p pattern

`*` matches any run of characters, `?` one character, `[abc]`, `[a-z]` and
`[!abc]` (or `[^abc]`) one character of a set or outside it, and `\` makes
the character after it stand for itself. A `[` without a closing `]` stands
for itself. Characters are UTF-8 sequences; a byte that starts none counts as
one character.
*/
bool matchesGlob(Containers::StringView pattern, Containers::StringView text);

}

#endif
