/* The table of the program's commands and what a command is handed. */
#ifndef quelmar_Command_h
#define quelmar_Command_h

#include <cstddef>
#include <string>
#include <vector>

namespace quelmar {

struct Program;

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
    bool(*run)(Program&, const Arguments&);
};

/** Every command, in the order "help" lists them */
const std::vector<Command>& commands();

/** The command called @p name, or null */
const Command* findCommand(const std::string& name);

/* The commands, one file per concern */
bool runHelp(Program&, const Arguments&);
bool runTree(Program&, const Arguments&);
bool runStatus(Program&, const Arguments&);
bool runGet(Program&, const Arguments&);
bool runSet(Program&, const Arguments&);
bool runRemove(Program&, const Arguments&);
bool runAdd(Program&, const Arguments&);
bool runSelect(Program&, const Arguments&);
bool runSelection(Program&, const Arguments&);
bool runDelete(Program&, const Arguments&);
bool runReparent(Program&, const Arguments&);
bool runCopy(Program&, const Arguments&);
bool runPaste(Program&, const Arguments&);
bool runDuplicate(Program&, const Arguments&);
bool runDuplicateResource(Program&, const Arguments&);
bool runDeleteResource(Program&, const Arguments&);
bool runUndo(Program&, const Arguments&);
bool runRedo(Program&, const Arguments&);
bool runHistory(Program&, const Arguments&);
bool runSave(Program&, const Arguments&);
bool runQuit(Program&, const Arguments&);
bool runForceQuit(Program&, const Arguments&);

}

#endif
