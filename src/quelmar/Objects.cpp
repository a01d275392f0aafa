/* How listings show objects. */
#include "Objects.h"

#include "QuelmarEngine/JsonWriter.h"
#include "Program.h"

namespace quelmar {

std::string displayName(Program& program, const char* const key) {
    const std::string* const name = program.session.objectName(key);
    if(!name) return "(no name)";
    /* Quoted and escaped, so that no name can break a listing's lines */
    return QuelmarEngine::writeJson(rapidjson::Value{rapidjson::StringRef(name->data(), name->size())});
}

std::string displayPath(const std::vector<std::string>& path) {
    std::string out;
    /* Escaped as in a JSON string, without the quotes: a line feed in a
       name stays on the line */
    for(const std::string& name: path) {
        const std::string escaped = QuelmarEngine::writeJson(rapidjson::Value{rapidjson::StringRef(name.data(), name.size())});
        out += "/" + escaped.substr(1, escaped.size() - 2);
    }
    return out;
}

}
