/* Copying: the selected objects and the skins they use as clipboard text. */

#include <cstring>
#include <sstream>
#include <string>
#include <Corrade/Utility/DebugStl.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/Tools/Implementation/Clipboard.h"
#include "QuelmarEngine/JsonWriter.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace QuelmarEngine {

namespace Implementation {

StringArray referencedSkins(QuelmarEditor& editor, const StringArrayView& objectKeys) {
    StringArray skins{24};
    if(objectKeys.isEmpty()) return skins;

    for(std::size_t i = 0; i != objectKeys.size(); ++i) {
        const char* const skin = editor.data.project["objects"]->subValue(objectKeys.get(i))->subValue("skin").asString();
        if(!skin) continue;
        /* A copy references a handful of skins, so a linear search is
           cheaper than a hash set */
        bool seen = false;
        for(std::size_t j = 0; j != skins.size() && !seen; ++j)
            seen = std::strcmp(skins.get(j), skin) == 0;
        if(!seen) skins.add(skin, -1);
    }
    return skins;
}

}

std::string toString(QuelmarEditor& editor, const char* const name, StringArrayView& keys) {
    /* The root has no record and is never in a key list, so the empty key is
       a key like any other */
    if(keys.isEmpty()) return "{}";

    std::ostringstream out;
    {
        /* The host's value printer writes only into a Debug, so the whole
           map goes through one redirected to the string */
        Utility::Debug redirect{&out};
        Utility::Debug{} << "{";
        const std::size_t last = keys.size() - 1;
        for(std::size_t i = 0; i != keys.size(); ++i) {
            const char* const key = keys.get(i);
            /* Written as the printer writes strings, so that a key holding a
               quote, a backslash or a control character still makes JSON; any
               other key comes out byte for byte */
            Utility::Debug line{Utility::Debug::Flag::NoSpace};
            line << writeJson(rapidjson::Value{rapidjson::StringRef(key)}) << ": " << editor.data.project[name]->subValue(key).readValue();
            if(i != last) line << ",";
        }
        Utility::Debug{} << "}";
    }
    return out.str();
}

namespace {

std::string clipboardText(QuelmarEditor& editor, StringArray objectKeys) {
    StringArray skins = Implementation::referencedSkins(editor, objectKeys);
    std::string text = "{\"objects\":";
    text += toString(editor, "objects", objectKeys);
    if(!skins.isEmpty()) {
        text += ",\"skins\":";
        text += toString(editor, "skins", skins);
    }
    text += "}";
    return text;
}

}

std::string copySelected(QuelmarEditor& editor) {
    return clipboardText(editor, selectedObjectKeys(editor));
}

std::string copySelectedTrees(QuelmarEditor& editor) {
    return clipboardText(editor, selectedObjectKeysWithTrees(editor));
}

}
