#ifndef QuelmarEngine_host_Implementation_StepLabels_h
#define QuelmarEngine_host_Implementation_StepLabels_h
/* The pieces of the labels that the edit session gives its steps, which read
   like the commands that made them. */

#include <string>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine { namespace Implementation {

/* @p text as one word of a command: as it is, or as a JSON string when it is
   empty or holds a blank, a quote, a backslash, a semicolon or a control
   character */
std::string labelWord(Containers::StringView text);

/* @p value as compact JSON, cut short with "..." past a few dozen bytes so
   that a listing stays one readable line */
std::string labelValue(const rapidjson::Value& value);

}}

#endif
