/* The ways a run goes: commands given all at once (-c, a script), lines
   from a pipe, or a person typing at a terminal. */
#include "Runs.h"

#include <csignal>
#include <iostream>

#include "History.h"
#include "Input.h"
#include "Lines.h"
#include "Program.h"
#include "Runner.h"
#include "Signals.h"

namespace quelmar {

namespace {

/* Ends a run that isn't a person's session, saying what becomes of the unsaved changes */
[[noreturn]] void stopBy(Program& program, const int signal) {
    program.location.clear();
    program.fail(std::string{"stopped by "} + signalName(signal) +
        (program.session.isSaved() ? std::string{} : "; " + unsavedChangesText(program) + unsavedChangesFate(program)));
    dieOf(signal);
}

/* What a demo shows: comments and blank lines as they are, commands after "> " */
void echo(const std::string& line) {
    std::cout << (isBlankOrComment(line) ? "" : "> ") << trimmed(line) << std::endl;
}

/* The answer of a person's session to Control-D, SIGTERM or SIGHUP: like
   quit, ending only with nothing unsaved */
bool refuseToEnd(Program& program, const std::string& why) {
    if(program.session.isSaved()) return false;
    program.fail(why + unsavedChangesText(program) + "; save them, or use quit! to discard them");
    return true;
}

}

int runAll(Program& program, const std::vector<std::string>& lines, const std::string& source) {
    for(std::size_t i = 0; i != lines.size(); ++i) {
        if(const int signal = takeSignal()) stopBy(program, signal);
        program.location = source.empty() ? std::string{} : source + ":" + std::to_string(i + 1) + ": ";
        if(program.echo && (i + 1 != lines.size() || !lines[i].empty())) echo(lines[i]);
        if(!runLine(program, lines[i])) return 1;
        if(program.quitRequested) return 0;
    }
    program.location.clear();
    return finish(program);
}

int runInput(Program& program, LineSource& source, const bool interactive) {
    bool hungUp = false;
    std::string line;
    for(std::size_t number = 1; ; ) {
        const ReadStatus status = source.read(line);
        int signal = 0;
        if(status == ReadStatus::Line) {
            if(!interactive) program.location = "stdin:" + std::to_string(number++) + ": ";
            if(program.echo) echo(line);
            const bool succeeded = runLine(program, line);
            if(program.quitRequested) return 0;
            if(!succeeded && !interactive) return 1;
            /* What came during the command is answered now that it's done */
            if(!interactive || !(signal = takeSignal())) continue;
            if(signal == SIGINT) {
                program.warn("the interrupt came during the command, which ran to its end");
                continue;
            }
        } else if(status == ReadStatus::Cancelled) {
            std::cout << std::endl;
            continue;
        } else if(status == ReadStatus::Signal) {
            signal = takeSignal();
            if(!interactive) stopBy(program, signal);
            std::cout << std::endl;
            if(signal == SIGINT) continue;
        }

        program.location.clear();
        if(status == ReadStatus::End && (!interactive || hungUp)) return finish(program);
        if(status == ReadStatus::End) std::cout << std::endl;
        /* The terminal is gone after a hangup: its end of input ends the session */
        hungUp |= signal == SIGHUP;
        if(!refuseToEnd(program, signal ? std::string{signalName(signal)} + ": " : std::string{})) return 0;
    }
}

std::vector<std::string> scriptLines(const std::string& text) {
    std::vector<std::string> lines{""};
    for(std::size_t i = text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0; i != text.size(); ++i) {
        if(text[i] == '\n') lines.emplace_back();
        else lines.back() += text[i];
    }
    return lines;
}

}
