/* duplicate-resource and delete-resource: records of any resource map. */
#include <iostream>

#include "Command.h"
#include "Program.h"
#include "Removals.h"

namespace quelmar {

bool runDuplicateResource(Program& program, const Arguments& arguments) {
    const EditResult result = program.session.duplicateResource(view(arguments.positional[0]), view(arguments.positional[1]));
    if(!program.report(result)) return false;
    std::cout << result.keys()[0] << std::endl;
    return true;
}

bool runDeleteResource(Program& program, const Arguments& arguments) {
    const bool force = arguments.has("--force");
    return reportRemoval(program, program.session.deleteResource(view(arguments.positional[0]), view(arguments.positional[1]),
        force ? QuelmarEngine::DanglingReferences::Leave : QuelmarEngine::DanglingReferences::Refuse), force);
}

}
