#ifndef QuelmarEngine_JsonWriter_h
#define QuelmarEngine_JsonWriter_h
/* Writing JSON values as text, the counterpart of JsonReader.h: compact for
   debug output and the clipboard, indented for project files. Numbers are
   written in their shortest form that reads back to the same value. */

#include <string>
#include <Corrade/Utility/Debug.h>
#include <rapidjson/document.h>

namespace QuelmarEngine {

enum class JsonLayout: unsigned char {
    /** No whitespace at all */
    Compact,
    /** Two-space indentation, arrays on one line */
    Indented
};

/**
@brief The JSON text of @p value

Non-finite numbers, which JSON cannot hold, are written as null.
*/
std::string writeJson(const rapidjson::Value& value, JsonLayout layout = JsonLayout::Compact);

}

namespace rapidjson {

/** Prints @p value as one compact JSON text */
Corrade::Utility::Debug& operator<<(Corrade::Utility::Debug& debug, const Value& value);

}

#endif
