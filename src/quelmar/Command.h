/* The table of the program's commands and what a command is handed. */
#ifndef quelmar_Command_h
#define quelmar_Command_h

#include <cstddef>
#include <string>
#include <vector>

namespace quelmar {

class Session;

/** The words that followed a command's name, sorted into flags and the rest */
struct Arguments {
    std::vector<std::string> positional;
    std::vector<std::string> flags;
    /** For a command that takes raw text: everything after its first word */
    std::string raw;

    bool has(const char* flag) const;
};

struct Command {
    const char* name;
    const char* usage;
    const char* summary;
    /** More about it, for "help NAME"; may be empty */
    const char* details;
    /** Flags it accepts, up to two, null where unused */
    const char* flags[2];
    std::size_t minArguments;
    std::size_t maxArguments;
    /** The text after the first argument is one raw argument */
    bool rawRest;
    /** Returns false when the command failed, having printed why */
    bool(*run)(Session&, const Arguments&);
};

/** Every command, in the order "help" lists them */
const std::vector<Command>& commands();

/** The command called @p name, or null */
const Command* findCommand(const std::string& name);

/* The commands, one file per concern */
bool runHelp(Session&, const Arguments&);
bool runTree(Session&, const Arguments&);
bool runStatus(Session&, const Arguments&);
bool runGet(Session&, const Arguments&);
bool runSet(Session&, const Arguments&);
bool runRemove(Session&, const Arguments&);
bool runAdd(Session&, const Arguments&);
bool runSelect(Session&, const Arguments&);
bool runSelection(Session&, const Arguments&);
bool runDelete(Session&, const Arguments&);
bool runReparent(Session&, const Arguments&);
bool runCopy(Session&, const Arguments&);
bool runPaste(Session&, const Arguments&);
bool runDuplicate(Session&, const Arguments&);
bool runDuplicateResource(Session&, const Arguments&);
bool runDeleteResource(Session&, const Arguments&);
bool runUndo(Session&, const Arguments&);
bool runRedo(Session&, const Arguments&);
bool runHistory(Session&, const Arguments&);
bool runSave(Session&, const Arguments&);
bool runQuit(Session&, const Arguments&);
bool runForceQuit(Session&, const Arguments&);

}

#endif
