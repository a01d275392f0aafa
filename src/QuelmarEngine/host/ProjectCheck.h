#ifndef QuelmarEngine_host_ProjectCheck_h
#define QuelmarEngine_host_ProjectCheck_h
/* The inconsistencies a project can hold that its rules don't refuse, or
   that a file edited by other means brings: references that name nothing,
   parent cycles, transformations the scene can't use, live objects sharing a
   name. Found in the whole project, or around one change. */

#include <string>
#include <vector>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Every inconsistency of the project of @p editor, one line each

First, record by record in the order of the maps, an object's "parent",
"skin" or mesh component's "skin" that names no record, a "transformation"
that isn't 16 numbers single precision can hold, a skin's joint that names no
object; then every parent cycle; then every name that live objects share, in
tree order.
*/
std::vector<std::string> findInconsistencies(QuelmarEditor& editor);

/**
@brief The inconsistencies that involve what a change at @p pointer touches

For a change below a record of "objects" or "skins", the references of that
record that name nothing and, for a record that is gone, the references to
it; for an object whose name, parent or deleted flag changed, the live
objects that share its name. For a change of a whole map, everything, as
@ref findInconsistencies(). Nothing for other changes, which can't make one.
*/
std::vector<std::string> findInconsistenciesAround(QuelmarEditor& editor, const JsonPointer& pointer);

}

#endif
