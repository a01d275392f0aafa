#ifndef QuelmarEngine_host_JsonFileLayout_h
#define QuelmarEngine_host_JsonFileLayout_h
/* The layout of a project file as it was written, found when it is opened
   and kept when it is saved, so that saving after an edit changes only the
   lines of that edit. */

#include <string>
#include <unordered_map>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief How a JSON file is laid out

The default rule puts an array that holds no object or array on one line,
an empty object or array on one line, and every other object or array over
several lines, one member or element a line, indented one step deeper than
the line that opens it. The default-constructed layout is that rule with two
spaces as the step, line feeds and a final one.
*/
struct JsonFileLayout {
    /** One step of indentation: spaces or tabs */
    std::string indent{"  "};
    /** What ends a line */
    std::string lineEnd{"\n"};
    /** Whether the text ends with a line end */
    bool finalLineEnd{true};
    /** Whether the text starts with a UTF-8 byte order mark */
    bool byteOrderMark{};
    /** Whether a space follows the colon after a member name */
    bool spaceAfterColon{true};
    /** Whether a space follows a comma inside an object or array on one line */
    bool spaceAfterComma{true};
    /**
     * Objects and arrays, by JSON Pointer, laid out against the default
     * rule: true for one on one line, false for one over several. Those
     * inside an object or array on one line are not listed, as they are on
     * that line too.
     */
    std::unordered_map<std::string, bool> exceptions;
};

/**
@brief The layout of the JSON text @p text

Expects valid JSON. The indentation step is the leading whitespace of the
first line that holds a member or element of the root; the spacing is that
after the first colon, and after the first comma that a line end doesn't
follow.
*/
JsonFileLayout detectJsonFileLayout(Containers::StringView text);

/**
@brief @p value as the text of a file laid out as @p layout says

An integer is written as one, and a double in the shortest form that reads
back as the same double (a whole one with ".0"), so that a number keeps its
kind and its value through a save and a load. Numbers that aren't finite,
which JSON can't hold, are written as null.
*/
std::string writeJsonFile(const rapidjson::Value& value, const JsonFileLayout& layout);

}

#endif
