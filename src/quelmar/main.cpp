/* quelmar: a headless editor for project files, run from the command line. */
#include <iostream>
#include <unistd.h>

#include "Colour.h"
#include "Diagnostics.h"
#include "Files.h"
#include "Input.h"
#include "LineEditor.h"
#include "Lines.h"
#include "Options.h"
#include "Program.h"
#include "Runs.h"
#include "Signals.h"

using namespace quelmar;

namespace {

/* Standard input: a person at a terminal gets a prompt, with line editing
   when the output goes to the terminal too, and may go on after a failure;
   a pipe is treated like a script */
int runStandardInput(Program& program) {
    const bool terminal = ::isatty(0);
    if(terminal && ::isatty(1) && !program.echo)
        if(Corrade::Containers::Pointer<LineEditor> editor = LineEditor::create(program))
            return runInput(program, *editor, true);
    PlainLines lines{0, terminal ? "quelmar> " : nullptr};
    return runInput(program, lines, terminal);
}

}

int main(int argc, char** argv) {
    const Diagnostics diagnostics;
    catchSignals();

    Options options;
    std::string error;
    if(!parseOptions(argc, argv, options, error)) {
        std::cerr << "error: " << error << "; see quelmar --help" << std::endl;
        return 2;
    }
    if(options.help) {
        std::cout << usageText();
        return 0;
    }
    if(options.version) {
        std::cout << "quelmar " QUELMAR_VERSION << std::endl;
        return 0;
    }

    Program program;
    program.session.setJournalling(options.journal);
    program.echo = options.echo;
    program.colourOut = wantsColour(1);
    program.colourErr = wantsColour(2);
    if(options.hasHistoryLimit) program.session.setHistoryBudget(options.historyLimit);
    if(!options.project.empty() && !program.report(program.session.open(view(options.project)))) return 1;
    if(program.session.isReadOnly())
        std::cerr << "warning: recover replays the journal, discard-journal drops it" << std::endl;

    if(options.hasCommands) return runAll(program, splitCommands(options.commands), {});
    if(options.script == "-") {
        PlainLines lines{0};
        return runInput(program, lines, false);
    }
    if(!options.script.empty()) {
        std::string text;
        if(!readInputFile(options.script, text, error)) {
            program.fail(error);
            return 1;
        }
        return runAll(program, scriptLines(text), options.script);
    }
    return runStandardInput(program);
}
