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
    if(!parseNumber(text, count) || !count) return program.fail("the count has to be a positive number, not " + text);
    return true;
}

bool step(Program& program, const Arguments& arguments, const bool redo) {
    EditSession& session = program.session;
    std::size_t count;
    if(!parseCount(program, arguments, count)) return false;
    if(!program.report(redo ? session.redo(count) : session.undo(count))) return false;
    printTravel(program, count, redo, arguments.has("--json"));
    return true;
}

}

bool runUndo(Program& program, const Arguments& arguments) {
    return step(program, arguments, false);
}

bool runRedo(Program& program, const Arguments& arguments) {
    return step(program, arguments, true);
}

bool runHistory(Program& program, const Arguments& arguments) {
    if(arguments.has("--json")) printHistoryJson(program, arguments.has("--changes"));
    else printHistory(program, arguments.has("--changes"));
    return true;
}

}
