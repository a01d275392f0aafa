/* get, set and remove: any value of the document, through the history. */
#include <iostream>

#include "QuelmarEngine/JsonWriter.h"
#include "Command.h"
#include "Program.h"

namespace quelmar {

bool runGet(Program& program, const Arguments& arguments) {
    const rapidjson::Value* value;
    if(!program.report(program.session.findValue(view(arguments.positional[0]), value))) return false;
    std::cout << QuelmarEngine::writeJson(*value, QuelmarEngine::JsonLayout::Indented) << std::endl;
    return true;
}

bool runSet(Program& program, const Arguments& arguments) {
    return program.report(program.session.set(view(arguments.positional[0]), view(arguments.raw)));
}

bool runRemove(Program& program, const Arguments& arguments) {
    return program.report(program.session.remove(view(arguments.positional[0])));
}

}
