/* quelmar: a headless editor for project files, run from the command line. */
#include <iostream>
#include <unistd.h>

#include "Diagnostics.h"
#include "Files.h"
#include "Input.h"
#include "Options.h"
#include "Program.h"
#include "Runner.h"
#include "Signals.h"

using namespace quelmar;

namespace {

/* Commands of -c or of a script: the first failure ends the run */
int runAll(Program& program, const std::vector<std::string>& lines, const std::string& source) {
    for(std::size_t i = 0; i != lines.size(); ++i) {
        program.location = source.empty() ? std::string{} : source + ":" + std::to_string(i + 1) + ": ";
        if(!runLine(program, lines[i])) return 1;
        if(program.quitRequested) return 0;
    }
    program.location.clear();
    return finish(program);
}

/* Standard input: a person at a terminal gets a prompt and may go on after
   a failure, a pipe is treated like a script */
int runInput(Program& program) {
    const bool terminal = ::isatty(0);
    std::string line;
    for(;;) {
        if(terminal) std::cout << "quelmar> " << std::flush;
        if(!std::getline(std::cin, line)) break;
        if(!runLine(program, line) && !terminal) return 1;
        if(program.quitRequested) return 0;
    }
    if(terminal) std::cout << std::endl;
    return finish(program);
}

/* The lines of a script, without the byte order mark some editors write */
std::vector<std::string> scriptLines(const std::string& text) {
    std::vector<std::string> lines{""};
    for(std::size_t i = text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0; i != text.size(); ++i) {
        if(text[i] == '\n') lines.emplace_back();
        else lines.back() += text[i];
    }
    return lines;
}

}

int main(int argc, char** argv) {
    const Diagnostics diagnostics;
    cleanUpOnSignals();

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
    if(options.hasHistoryLimit) program.session.setHistoryBudget(options.historyLimit);
    if(!options.project.empty() && !program.report(program.session.open(view(options.project)))) return 1;

    if(options.hasCommands) return runAll(program, splitCommands(options.commands), {});
    if(!options.script.empty()) {
        std::string text;
        if(!readInputFile(options.script, text, error)) {
            program.fail(error);
            return 1;
        }
        return runAll(program, scriptLines(text), options.script);
    }
    return runInput(program);
}
