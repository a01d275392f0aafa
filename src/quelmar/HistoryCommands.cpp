/* undo, redo and history. */
#include <iostream>

#include "QuelmarEngine/ChangeManager.h"
#include "Command.h"
#include "History.h"
#include "Session.h"

namespace quelmar {

namespace {

/* N of "undo N" and "redo N": a positive decimal number */
bool parseCount(Session& session, const Arguments& arguments, std::size_t& count) {
    count = 1;
    if(arguments.positional.empty()) return true;
    const std::string& text = arguments.positional[0];
    count = 0;
    for(const char c: text) {
        /* Anything beyond this is more than any history holds anyway */
        if(c < '0' || c > '9' || count > 100000000) return session.fail("the count has to be a positive number, not " + text);
        count = count*10 + std::size_t(c - '0');
    }
    if(!count) return session.fail("the count has to be a positive number, not " + text);
    return true;
}

bool step(Session& session, const Arguments& arguments, const bool redo) {
    QuelmarEngine::ChangeManager& manager = *session.editor.changeManager;
    std::size_t count;
    if(!parseCount(session, arguments, count)) return false;
    const std::size_t available = redo ? redoSteps(manager) : undoSteps(manager);
    if(!available) return session.fail(redo ? "there is nothing to redo" : "there is nothing to undo");
    if(count > available)
        return session.fail(std::string{"there "} + (available == 1 ? "is" : "are") + " only " + std::to_string(available) + (available == 1 ? " step" : " steps") + " to " + (redo ? "redo" : "undo"));

    /* The program never leaves a group open, which both require */
    const int before = manager.lastChangeIndex();
    for(std::size_t i = 0; i != count; ++i) {
        if(redo) manager.redoLastUndo();
        else manager.undoLast();
    }
    const int changes = redo ? manager.lastChangeIndex() - before : before - manager.lastChangeIndex();
    std::cout << (redo ? "redid " : "undid ") << count << (count == 1 ? " step" : " steps")
              << " (" << changes << (changes == 1 ? " change)" : " changes)") << std::endl;
    return true;
}

}

bool runUndo(Session& session, const Arguments& arguments) {
    return step(session, arguments, false);
}

bool runRedo(Session& session, const Arguments& arguments) {
    return step(session, arguments, true);
}

bool runHistory(Session& session, const Arguments&) {
    printHistory(session);
    return true;
}

}
