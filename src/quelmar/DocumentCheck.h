/* What get, set and remove accept: pointers and values that can't break
   the document, its history or a later load of the saved file. */
#ifndef quelmar_DocumentCheck_h
#define quelmar_DocumentCheck_h

#include <string>
#include <rapidjson/document.h>

#include "QuelmarEngine/JsonPointer.h"

namespace quelmar {

class Session;

/** Whether @p pointer parsed from @p text; prints why not */
bool checkPointer(Session& session, const QuelmarEngine::JsonPointer& pointer, const std::string& text);

/**
@brief Whether a value can be set at @p pointer

The parent has to exist and be an object or an array; in an array the last
token has to be an index up to the size (which appends) or "-", so nothing
is padded, turned into another type or lost on undo. Resource maps and their
keys stay loadable. Prints why not.
*/
bool checkSetTarget(Session& session, const QuelmarEngine::JsonPointer& pointer, const std::string& text);

/** Whether @p value may be stored at @p pointer; prints why not */
bool checkSetValue(Session& session, const QuelmarEngine::JsonPointer& pointer, const rapidjson::Value& value);

/** Whether the value at @p pointer exists and may be removed; prints why not */
bool checkRemoveTarget(Session& session, const QuelmarEngine::JsonPointer& pointer, const std::string& text);

}

#endif
