/* The program's command line. */
#ifndef quelmar_Options_h
#define quelmar_Options_h

#include <cstddef>
#include <string>

namespace quelmar {

struct Options {
    /** Project file to open; empty for a new, empty project */
    std::string project;
    /** Text of -c, commands separated by semicolons */
    std::string commands;
    bool hasCommands{};
    /** File of -s, one command a line; "-" for standard input */
    std::string script;
    /** Whether to keep a recovery journal beside the project */
    bool journal{true};
    /** Bytes the history may keep, from --history-limit in megabytes */
    std::size_t historyLimit{};
    bool hasHistoryLimit{};
    /** Show every command before its output */
    bool echo{};
    bool help{};
    bool version{};
};

/** Fills @p options from the arguments; false with @p error on a usage error */
bool parseOptions(int argc, const char* const* argv, Options& options, std::string& error);

/** The text of --help */
const char* usageText();

}

#endif
