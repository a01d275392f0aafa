/* purge, and what purge and delete-resource say when references stop them. */
#include "Removals.h"

#include <iostream>

#include "Command.h"

namespace quelmar {

bool reportRemoval(const Program& program, const EditResult& result, const bool forced) {
    if(result || forced || result.message().rfind("references to ", 0) != 0) return program.report(result);
    for(const std::string& warning: result.warnings()) std::cerr << "warning: " << warning << std::endl;
    return program.fail(result.message() + "; --force removes all the same");
}

bool runPurge(Program& program, const Arguments& arguments) {
    std::vector<Corrade::Containers::StringView> keys;
    for(const std::string& key: arguments.positional) keys.push_back(view(key));
    const bool force = arguments.has("--force");
    const EditResult result = program.session.purge({keys.data(), keys.size()},
        force ? QuelmarEngine::DanglingReferences::Leave : QuelmarEngine::DanglingReferences::Refuse);
    if(!reportRemoval(program, result, force)) return false;
    const std::size_t count = result.keys().size();
    std::cout << "purged " << count << (count == 1 ? " object" : " objects") << std::endl;
    return true;
}

}
