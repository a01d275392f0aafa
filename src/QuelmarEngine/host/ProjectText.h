#ifndef QuelmarEngine_host_ProjectText_h
#define QuelmarEngine_host_ProjectText_h
/* Reading project text: parsing it and checking that it makes a project that
   the tools and the program can work on. */

#include <string>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Parses and checks a project text

Refuses text that is not JSON, is nested deeper than @ref JsonMaxDepth, whose
root is not an object, whose "objects" or "skins" are not objects, whose
top-level names or record keys hold "/", "~", "\"", "\\" or a control
character or are there twice, or whose "objects" holds more than
@ref ProjectFile::MaxObjects records. A refusal prints one line that names
@p source and the reason through @ref Utility::Error and returns
@cpp nullptr @ce.
*/
Containers::Pointer<rapidjson::Document> parseProject(Containers::StringView json, const std::string& source);

}

#endif
