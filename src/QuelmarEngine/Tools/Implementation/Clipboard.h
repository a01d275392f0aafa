#ifndef QuelmarEngine_Tools_Implementation_Clipboard_h
#define QuelmarEngine_Tools_Implementation_Clipboard_h
/* Clipboard helpers that only the commands use. */

#include <string>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"
#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarEngine { namespace Implementation {

/** Distinct keys of the skins that @p objectKeys reference through their own "skin", in order of first reference */
StringArray referencedSkins(QuelmarEditor& editor, const StringArrayView& objectKeys);

/** Clipboard text of the objects @p objectKeys and the skins they use */
std::string clipboardText(QuelmarEditor& editor, const StringArrayView& objectKeys);

/**
@brief What reading @ref clipboardText() back gives, without the text

Into @p out, which has to be fresh. Its records share what they hold with the
project document instead of copying it, so @p out is only good until the
project's records change. False, with @p out left unusable, when a record
holds something that the text would change or refuse (a number JSON can't
hold, nesting too deep for the reader): then only the text gives the same
result.
*/
bool clipboardDocument(QuelmarEditor& editor, const StringArrayView& objectKeys, rapidjson::Document& out);

/** Adds the records of a read clipboard text under fresh keys, as @ref addFromString() does */
StringArray addFromDocument(QuelmarEditor& editor, const char* parent, const rapidjson::Value& document);

/** Duplicates @p objectKeys with the skins they use under @p parent, as pasting their clipboard text does */
StringArray duplicateObjects(QuelmarEditor& editor, const char* parent, const StringArrayView& objectKeys);

}}

#endif
