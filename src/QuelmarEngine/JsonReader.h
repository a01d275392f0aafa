#ifndef QuelmarEngine_JsonReader_h
#define QuelmarEngine_JsonReader_h
/* Parsing of untrusted JSON text without recursion and with a bound on the
   nesting, so that no text can overflow the stack. */

#include <cstddef>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** Deepest nesting of arrays and objects that @ref parseJson() accepts */
constexpr unsigned JsonMaxDepth = 256;

/** Why a text was refused */
struct JsonParseError {
    /** Byte offset in the text */
    std::size_t offset{};
    /** What is wrong, in a few words */
    Containers::String reason;
};

/**
@brief Parses strict JSON text into @p document

Accepts exactly what the default RapidJSON parse accepts (no comments, no
trailing commas, nothing but whitespace after the root value), but parses
iteratively, refuses nesting deeper than @p maxDepth and converts numbers with
full precision, so that every number written by the printer reads back the
same. A NUL byte inside
@p text is an error. On failure fills @p error, leaves @p document null and
returns false.
*/
bool parseJson(rapidjson::Document& document, Containers::StringView text, JsonParseError& error, unsigned maxDepth = JsonMaxDepth);

}

#endif
