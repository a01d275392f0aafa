/* save, quit and quit!. */
#include <iostream>

#include "Command.h"
#include "History.h"
#include "Session.h"

namespace quelmar {

bool runSave(Session& session, const Arguments& arguments) {
    const std::string path = arguments.positional.empty() ? session.file : arguments.positional[0];
    if(path.empty()) return session.fail("the project has no file yet; give one: save PATH");
    /* It writes a temporary file and renames it over the target, and says
       why when it can't */
    if(!session.editor.data.project.saveToFile({path.data(), path.size()})) return false;
    session.file = path;
    session.markSaved();
    std::cout << "saved " << path << std::endl;
    return true;
}

bool runQuit(Session& session, const Arguments&) {
    if(session.hasUnsavedChanges())
        return session.fail(unsavedChangesText(session) + "; save them, or use quit! to discard them");
    session.quitRequested = true;
    return true;
}

bool runForceQuit(Session& session, const Arguments&) {
    session.quitRequested = true;
    return true;
}

}
