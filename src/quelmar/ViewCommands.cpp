/* help, tree and status: looking without changing anything. */
#include <algorithm>
#include <cstring>
#include <iostream>

#include "Command.h"
#include "Program.h"
#include "Tree.h"

namespace quelmar {

bool runHelp(Program& program, const Arguments& arguments) {
    if(!arguments.positional.empty()) {
        const Command* const command = findCommand(arguments.positional[0]);
        if(!command) return program.fail("unknown command " + arguments.positional[0] + "; \"help\" lists the commands");
        std::cout << "usage: " << command->usage << '\n' << command->summary << '\n';
        if(*command->details) std::cout << command->details << '\n';
        std::cout.flush();
        return true;
    }
    std::size_t width = 0;
    for(const Command& command: commands()) width = std::max(width, std::strlen(command.usage));
    std::cout << "Commands (KEY is an object's key, as \"tree\" shows it):\n";
    for(const Command& command: commands())
        std::cout << "  " << command.usage << std::string(width + 2 - std::strlen(command.usage), ' ') << command.summary << '\n';
    std::cout.flush();
    return true;
}

bool runTree(Program& program, const Arguments&) {
    printTree(program, std::cout);
    return true;
}

bool runStatus(Program& program, const Arguments&) {
    EditSession& session = program.session;
    const rapidjson::Value* const objects = session.value("/objects");
    const std::size_t records = objects && objects->IsObject() ? objects->MemberCount() : 0;
    const std::size_t live = session.editor().scene->sceneGraph->header().objectCount - 1u;
    const std::size_t undo = session.undoCount();

    std::cout << "file: " << (session.path().empty() ? std::string{"none yet"} : session.path()) << '\n'
              << "objects: " << live << " in the scene";
    if(records > live) std::cout << ", " << records - live << " deleted";
    std::cout << '\n'
              << "selected: " << session.selection().size() << '\n'
              << "history: " << undo << (undo == 1 ? " step" : " steps") << " to undo, " << session.redoCount() << " to redo ("
              << session.history().appliedRecordCount() << " of " << session.recordCount() << " changes applied)\n"
              << (session.isSaved() ? "saved" : "unsaved changes") << std::endl;
    return true;
}

}
