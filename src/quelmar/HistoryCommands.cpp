/* undo, redo and history. */
#include <iostream>

#include "Command.h"
#include "History.h"
#include "Program.h"

namespace quelmar {

namespace {

/* N of "undo N" and "redo N": a positive decimal number */
bool parseCount(const Program& program, const Arguments& arguments, std::size_t& count) {
    count = 1;
    if(arguments.positional.empty()) return true;
    const std::string& text = arguments.positional[0];
    count = 0;
    for(const char c: text) {
        /* Anything beyond this is more than any history holds anyway */
        if(c < '0' || c > '9' || count > 100000000) return program.fail("the count has to be a positive number, not " + text);
        count = count*10 + std::size_t(c - '0');
    }
    if(!count) return program.fail("the count has to be a positive number, not " + text);
    return true;
}

bool step(Program& program, const Arguments& arguments, const bool redo) {
    EditSession& session = program.session;
    std::size_t count;
    if(!parseCount(program, arguments, count)) return false;
    if(!program.report(redo ? session.redo(count) : session.undo(count))) return false;

    /* The steps gone through lie right after the position after an undo,
       right before it after a redo */
    const std::size_t first = redo ? session.undoCount() - count : session.undoCount();
    std::size_t changes = 0;
    for(std::size_t i = first; i != first + count; ++i) changes += session.history().steps()[i].recordCount;
    std::cout << (redo ? "redid " : "undid ") << count << (count == 1 ? " step" : " steps")
              << " (" << changes << (changes == 1 ? " change)" : " changes)") << std::endl;
    return true;
}

}

bool runUndo(Program& program, const Arguments& arguments) {
    return step(program, arguments, false);
}

bool runRedo(Program& program, const Arguments& arguments) {
    return step(program, arguments, true);
}

bool runHistory(Program& program, const Arguments&) {
    printHistory(program);
    return true;
}

}
