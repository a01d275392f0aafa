#ifndef QuelmarEngine_host_DocumentRules_h
#define QuelmarEngine_host_DocumentRules_h
/* The rules that every edit of a project document keeps, so that the saved
   file loads again and its scene stays sound: usable keys, the object limit,
   no parent cycle, transformations of 16 numbers, maps of object records. */

#include <cstddef>
#include <string>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Whether @p key can be a top-level name or a record key

It has to stand unescaped in a change path and a clipboard text: no "/",
"~", "\"", "\\" or control character.
*/
bool isUsableKey(Containers::StringView key);

/** Why @p project can't take @p count more objects, or an empty string */
std::string objectRoomProblem(const ProjectFile& project, std::size_t count);

/** Why @p transformation can't be the "transformation" of object @p key, or an empty string */
std::string transformationProblem(Containers::StringView key, const rapidjson::Value& transformation);

/** Why @p parent can't be the parent of object @p key in @p project, or an empty string */
std::string parentProblem(const ProjectFile& project, Containers::StringView key, Containers::StringView parent);

/**
@brief Why a change of @p project has no place to go, or an empty string

The change sets a value at the parsed, valid @p pointer, whose text is
@p path, or removes the value there. To set a value, its parent has to exist
and be an object or an array, an array index has to be at most the size or
"-", and a new top-level name or record key has to be usable. To remove one,
it has to exist. Neither may be of the whole document.
*/
std::string changeTargetProblem(const ProjectFile& project, const JsonPointer& pointer, Containers::StringView path, bool removal);

/**
@brief Why a change of @p project would break a rule, or an empty string

The change sets @p value at @p pointer, or removes the value there when
@p value is null. Checks @ref changeTargetProblem() first.
*/
std::string changeProblem(const ProjectFile& project, const JsonPointer& pointer, Containers::StringView path, const rapidjson::Value* value);

/** Why the records of a clipboard text @p clipboard, a JSON object, can't be pasted, or an empty string */
std::string clipboardProblem(const rapidjson::Value& clipboard);

}

#endif
