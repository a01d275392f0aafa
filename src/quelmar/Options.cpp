/* The program's command line. */
#include "Options.h"

namespace quelmar {

namespace {

/* Up to a million megabytes, which no machine has to spare */
bool parseMegabytes(const std::string& text, std::size_t& bytes) {
    if(text.empty() || text.size() > 7 || text.find_first_not_of("0123456789") != std::string::npos) return false;
    bytes = std::size_t(std::stoul(text)) << 20;
    return true;
}

}

bool parseOptions(const int argc, const char* const* const argv, Options& options, std::string& error) {
    for(int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if(argument == "--help" || argument == "-h") options.help = true;
        else if(argument == "--version") options.version = true;
        else if(argument == "--no-journal") options.journal = false;
        else if(argument == "--echo") options.echo = true;
        else if(argument == "--history-limit") {
            if(i + 1 == argc || !parseMegabytes(argv[i + 1], options.historyLimit)) {
                error = "--history-limit needs a whole number of megabytes";
                return false;
            }
            options.hasHistoryLimit = true;
            ++i;
        } else if(argument == "-c" || argument == "-s") {
            if(i + 1 == argc) {
                error = argument + " needs " + (argument == "-c" ? "commands" : "a script file");
                return false;
            }
            if(options.hasCommands || !options.script.empty()) {
                error = "give either -c or -s, once";
                return false;
            }
            if(argument == "-c") {
                options.commands = argv[++i];
                options.hasCommands = true;
            } else {
                options.script = argv[++i];
                if(options.script.empty()) {
                    error = "-s needs a script file";
                    return false;
                }
            }
        } else if(argument.size() > 1 && argument[0] == '-') {
            error = "unknown option " + argument;
            return false;
        } else if(!options.project.empty()) {
            error = "give at most one project file";
            return false;
        } else if(argument.empty()) {
            error = "the project file name is empty";
            return false;
        } else options.project = argument;
    }
    return true;
}

const char* usageText() {
    return
        "usage: quelmar [PROJECT.json] [-c \"COMMAND; COMMAND...\" | -s SCRIPT] [--echo] [--history-limit MB] [--no-journal]\n"
        "\n"
        "Opens PROJECT.json (a new one, written at the first save, when the file\n"
        "doesn't exist yet), or an empty project, and runs commands on it: those of\n"
        "-c, those of SCRIPT (one a line, # starts a comment), or those typed on the\n"
        "standard input. \"help\" lists the commands.\n"
        "\n"
        "  -c COMMANDS  run these commands, separated by semicolons, and exit\n"
        "  -s SCRIPT    run the commands of SCRIPT (- for standard input) and exit\n"
        "  --echo       show each command, after \"> \", before its output\n"
        "  --no-journal keep no recovery journal beside the project\n"
        "  --history-limit MB\n"
        "               keep at most MB megabytes of undo history (default 256);\n"
        "               past it the oldest steps are dropped\n"
        "  --help       show this text\n"
        "  --version    show the version\n"
        "\n"
        "At a terminal, lines are edited with the arrow keys, Tab completes commands,\n"
        "options, objects and JSON Pointers, and the commands are remembered in\n"
        "$XDG_STATE_HOME/quelmar/history. Commands given with -c or -s, or through a\n"
        "pipe, stop at the first one that fails, and errors name its line. The end\n"
        "of the commands behaves like \"quit\"; so do SIGTERM and SIGHUP, which in a\n"
        "script end it between two commands. Exit status: 0 on success, 1 when a\n"
        "command failed or changes were left unsaved, 2 for a wrong command line.\n";
}

}
