#ifndef QuelmarEngine_Tools_Implementation_Selection_h
#define QuelmarEngine_Tools_Implementation_Selection_h
/* Selection queries that only the commands use. */

#include <utility>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine { namespace Implementation {

/**
@brief The selected object with the lowest index and its parent's key

Either may be null: both when nothing or the root is selected, the parent's
when the object hangs under the root. The strings point into the scene
graph's object keys and live until the next rebuild.
*/
std::pair<const char*, const char*> selectedObjectAndParent(QuelmarEditor& editor);

}}

#endif
