#ifndef QuelmarEngine_JsonReader_h
#define QuelmarEngine_JsonReader_h
/* Parsing of untrusted JSON text without recursion and with a bound on the
   nesting, so that no text can overflow the stack, and with numbers read
   exactly. */

#include <cstddef>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** Deepest nesting of arrays and objects that @ref parseJson() accepts */
constexpr unsigned JsonMaxDepth = 256;

/** Why a text was refused, and where */
struct JsonParseError {
    /** Byte offset in the text as given, a byte order mark included */
    std::size_t offset{};
    /** Line of @ref offset, counted from 1; lines end at line feeds */
    std::size_t line{};
    /**
     * Column of @ref offset in bytes, counted from 1. A byte order mark is
     * not counted, as editors don't show it.
     */
    std::size_t column{};
    /** What is wrong, in a few words */
    Containers::String reason;
};

/**
@brief Parses strict JSON text into @p document

Accepts exactly what the default RapidJSON parse accepts (no comments, no
trailing commas, nothing but whitespace after the root value), and a UTF-8
byte order mark at the very start, but parses iteratively and refuses nesting
deeper than @p maxDepth.

Numbers are read exactly. An integer that fits 32 or 64 bits is stored as
one, as the default parse does (`-0` too, which makes it the integer 0);
every other number is converted to the nearest double, so that every double
written in its shortest form reads back bit for bit. A number beyond the
largest double is refused as out of range; one too close to zero for a
normal double rounds to the nearest subnormal, or to zero keeping its sign.

A NUL byte inside @p text is an error. On failure fills @p error, leaves
@p document null and returns false.
*/
bool parseJson(rapidjson::Document& document, Containers::StringView text, JsonParseError& error, unsigned maxDepth = JsonMaxDepth);

}

#endif
