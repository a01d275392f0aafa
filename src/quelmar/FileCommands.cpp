/* save, quit and quit!. */
#include <iostream>

#include "Command.h"
#include "History.h"
#include "Program.h"

namespace quelmar {

bool runSave(Program& program, const Arguments& arguments) {
    EditSession& session = program.session;
    if(arguments.positional.empty() && session.path().empty())
        return program.fail("the project has no file yet; give one: save PATH");
    if(!program.report(arguments.positional.empty() ? session.save() : session.saveAs(view(arguments.positional[0])))) return false;
    std::cout << "saved " << session.path() << std::endl;
    /* A pause after a save is expected: the moment to give what the pool
       wasted back to the system, not only to the next allocations */
    session.compactIfWasteful(QuelmarEngine::FreedMemory::Release);
    return true;
}

bool runQuit(Program& program, const Arguments&) {
    if(!program.session.isSaved())
        return program.fail(unsavedChangesText(program) + "; save them, or use quit! to discard them");
    program.quitRequested = true;
    return true;
}

bool runForceQuit(Program& program, const Arguments&) {
    program.quitRequested = true;
    return true;
}

}
