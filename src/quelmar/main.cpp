/* quelmar: a headless editor for project files, run from the command line. */
#include <iostream>
#include <unistd.h>

#include "Diagnostics.h"
#include "Files.h"
#include "Input.h"
#include "Options.h"
#include "Runner.h"
#include "Session.h"

using namespace quelmar;

namespace {

/* Commands of -c or of a script: the first failure ends the run */
int runAll(Session& session, const std::vector<std::string>& lines, const std::string& source) {
    for(std::size_t i = 0; i != lines.size(); ++i) {
        session.location = source.empty() ? std::string{} : source + ":" + std::to_string(i + 1) + ": ";
        if(!runLine(session, lines[i])) return 1;
        if(session.quitRequested) return 0;
    }
    session.location.clear();
    return finish(session);
}

/* Standard input: a person at a terminal gets a prompt and may go on after
   a failure, a pipe is treated like a script */
int runInput(Session& session) {
    const bool terminal = ::isatty(0);
    std::string line;
    for(;;) {
        if(terminal) std::cout << "quelmar> " << std::flush;
        if(!std::getline(std::cin, line)) break;
        if(!runLine(session, line) && !terminal) return 1;
        if(session.quitRequested) return 0;
    }
    if(terminal) std::cout << std::endl;
    return finish(session);
}

}

int main(int argc, char** argv) {
    const Diagnostics diagnostics;

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

    Session session;
    if(!options.project.empty() && !session.open(options.project)) return 1;

    if(options.hasCommands) return runAll(session, splitCommands(options.commands), {});
    if(!options.script.empty()) {
        std::string text;
        if(!readFile(options.script, text, error)) {
            session.fail(error);
            return 1;
        }
        std::vector<std::string> lines{""};
        for(const char c: text) {
            if(c == '\n') lines.emplace_back();
            else lines.back() += c;
        }
        return runAll(session, lines, options.script);
    }
    return runInput(session);
}
