/* save, save!, recover, discard-journal, quit and quit!. */
#include <iostream>

#include "Command.h"
#include "History.h"
#include "Program.h"

namespace quelmar {

namespace {

bool save(Program& program, const Arguments& arguments, const QuelmarEngine::DiskChanges changes) {
    EditSession& session = program.session;
    if(arguments.positional.empty() && session.path().empty())
        return program.fail("the project has no file yet; give one: save PATH");
    const EditResult result = arguments.positional.empty() ? session.save(changes) : session.saveAs(view(arguments.positional[0]));
    if(!result && session.isReadOnly())
        return program.fail(result.message() + "; use recover or discard-journal");
    if(!result && arguments.positional.empty() && !session.fileChangeOnDisk().empty())
        return program.fail(result.message() + "; save! writes over it");
    if(!program.report(result)) return false;
    std::cout << "saved " << session.path() << std::endl;
    /* A pause after a save is expected: the moment to give what the pool
       wasted back to the system, not only to the next allocations */
    session.compactIfWasteful(QuelmarEngine::FreedMemory::Release);
    return true;
}

}

bool runSave(Program& program, const Arguments& arguments) {
    return save(program, arguments, QuelmarEngine::DiskChanges::Refuse);
}

bool runForceSave(Program& program, const Arguments& arguments) {
    return save(program, arguments, QuelmarEngine::DiskChanges::Overwrite);
}

bool runRecover(Program& program, const Arguments&) {
    const EditResult result = program.session.recover();
    if(!program.report(result)) return false;
    std::cout << result.text() << std::endl;
    return true;
}

bool runDiscardJournal(Program& program, const Arguments&) {
    const bool wasReadOnly = program.session.isReadOnly();
    if(!program.report(program.session.discardJournal())) return false;
    std::cout << (wasReadOnly ? "discarded the journal; the project is as saved" : "discarded the journal; a crash now loses the unsaved changes") << std::endl;
    return true;
}

bool runQuit(Program& program, const Arguments&) {
    if(!program.session.isSaved())
        return program.fail(unsavedChangesText(program) + "; save them, or use quit! to discard them");
    program.quitRequested = true;
    return true;
}

bool runForceQuit(Program& program, const Arguments&) {
    /* The changes are given up on purpose: nothing to offer next time */
    if(!program.session.isSaved() && !program.session.isReadOnly()) static_cast<void>(program.session.discardJournal());
    program.quitRequested = true;
    return true;
}

}
