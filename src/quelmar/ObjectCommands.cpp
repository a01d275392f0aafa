/* add, select, selection, delete and reparent: editing objects by key and
   through the selection. */
#include <iostream>

#include "Command.h"
#include "Objects.h"
#include "Program.h"

namespace quelmar {

bool runAdd(Program& program, const Arguments& arguments) {
    const std::string parent = arguments.positional.size() == 2 ? arguments.positional[1] : std::string{};
    const EditResult result = program.session.addObject(view(arguments.positional[0]), view(parent));
    if(!program.report(result)) return false;
    std::cout << result.keys()[0] << std::endl;
    return true;
}

bool runSelect(Program& program, const Arguments& arguments) {
    std::vector<Corrade::Containers::StringView> keys;
    for(const std::string& key: arguments.positional) keys.push_back(view(key));
    return program.report(program.session.select({keys.data(), keys.size()}));
}

bool runSelection(Program& program, const Arguments&) {
    const QuelmarEngine::StringArray keys = program.session.selection();
    if(keys.isEmpty()) {
        std::cout << "nothing is selected" << std::endl;
        return true;
    }
    for(std::size_t i = 0; i != keys.size(); ++i)
        std::cout << keys.get(i) << ' ' << displayName(program, keys.get(i)) << '\n';
    std::cout.flush();
    return true;
}

bool runDelete(Program& program, const Arguments& arguments) {
    const EditResult result = arguments.positional.empty() ? program.session.deleteSelection() : program.session.deleteObject(view(arguments.positional[0]));
    if(!program.report(result)) return false;
    const std::size_t count = result.keys().size();
    std::cout << "deleted " << count << (count == 1 ? " object" : " objects") << std::endl;
    return true;
}

bool runReparent(Program& program, const Arguments& arguments) {
    const std::string& parent = arguments.positional[0];
    /* The library prints a line for every object it moves */
    return program.report(program.session.reparentSelection(parent == "root" ? Corrade::Containers::StringView{""} : view(parent),
        arguments.has("--keep-transform") ? QuelmarEngine::ReparentMode::KeepWorld : QuelmarEngine::ReparentMode::KeepLocal));
}

}
