/* How listings show objects. */
#include "Objects.h"

#include "QuelmarEngine/JsonWriter.h"
#include "Program.h"

namespace quelmar {

std::string displayName(const Program& program, const char* const key) {
    std::string path = "/objects/";
    for(const char* c = key; *c; ++c) {
        if(*c == '~') path += "~0";
        else if(*c == '/') path += "~1";
        else path += *c;
    }
    path += "/name";
    const rapidjson::Value* const name = program.session.value(view(path));
    if(!name || !name->IsString()) return "(no name)";
    /* Quoted and escaped, so that no name can break a listing's lines */
    return QuelmarEngine::writeJson(*name);
}

}
