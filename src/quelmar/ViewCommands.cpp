/* help, tree and status: looking without changing anything. */
#include <algorithm>
#include <cstring>
#include <iostream>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "Command.h"
#include "History.h"
#include "Session.h"
#include "Tree.h"

namespace quelmar {

bool runHelp(Session& session, const Arguments& arguments) {
    if(!arguments.positional.empty()) {
        const Command* const command = findCommand(arguments.positional[0]);
        if(!command) return session.fail("unknown command " + arguments.positional[0] + "; \"help\" lists the commands");
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

bool runTree(Session& session, const Arguments&) {
    printTree(session, std::cout);
    return true;
}

bool runStatus(Session& session, const Arguments&) {
    QuelmarEditor& editor = session.editor;
    const QuelmarEngine::ChangeManager& manager = *editor.changeManager;
    const rapidjson::Value* const objects = QuelmarEngine::findMember(*editor.data.project.document, "objects");
    const std::size_t records = objects && objects->IsObject() ? objects->MemberCount() : 0;
    const std::size_t live = editor.scene->sceneGraph->header().objectCount - 1u;

    std::cout << "file: " << (session.file.empty() ? std::string{"none yet"} : session.file) << '\n'
              << "objects: " << live << " in the scene";
    if(records > live) std::cout << ", " << records - live << " deleted";
    std::cout << '\n'
              << "selected: " << QuelmarEngine::selectedObjectKeys(editor).size() << '\n'
              << "history: " << undoSteps(manager) << (undoSteps(manager) == 1 ? " step" : " steps") << " to undo, " << redoSteps(manager) << " to redo ("
              << manager.lastChangeIndex() + 1 << " of " << manager.changeCount() << " changes applied)\n"
              << (session.hasUnsavedChanges() ? "unsaved changes" : "saved") << std::endl;
    return true;
}

}
