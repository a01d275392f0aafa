#ifndef QuelmarEngine_Tools_Implementation_Clipboard_h
#define QuelmarEngine_Tools_Implementation_Clipboard_h
/* Clipboard helpers that only the commands use. */

#include "QuelmarEngine/QuelmarEngine.h"
#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarEngine { namespace Implementation {

/** Distinct keys of the skins that @p objectKeys reference through their own "skin", in order of first reference */
StringArray referencedSkins(QuelmarEditor& editor, const StringArrayView& objectKeys);

}}

#endif
