/* The table of the program's commands and what a command is handed. */
#ifndef quelmar_Command_h
#define quelmar_Command_h

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quelmar {

struct Program;

/** The words that followed a command's name, sorted into flags, options with their values and the rest */
struct Arguments {
    std::vector<std::string> positional;
    std::vector<std::string> flags;
    /** Options that take a value, such as "--depth" */
    std::vector<std::pair<std::string, std::string>> options;
    /** For a command that takes raw text: everything after its first word */
    std::string raw;

    bool has(const char* flag) const;

    /** The value of @p option, or null when not given */
    const std::string* option(const char* option) const;
};

struct Command {
    const char* name;
    const char* usage;
    const char* summary;
    /** More about it, for "help NAME"; may be empty */
    const char* details;
    /**
     * Flags it accepts, up to four, null where unused. One that ends with
     * "=", such as "--depth=", takes a value: "--depth 2" or "--depth=2".
     */
    const char* flags[4];
    std::size_t minArguments;
    std::size_t maxArguments;
    /** The text after the first argument is one raw argument */
    bool rawRest;
    /** Returns false when the command failed, having printed why */
    bool(*run)(Program&, const Arguments&);
};

/** @p text as a decimal number into @p number; false when it isn't one or is past any count the program deals with */
bool parseNumber(const std::string& text, std::size_t& number);

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
bool runFind(Program&, const Arguments&);
bool runRename(Program&, const Arguments&);
bool runDelete(Program&, const Arguments&);
bool runReparent(Program&, const Arguments&);
bool runCopy(Program&, const Arguments&);
bool runPaste(Program&, const Arguments&);
bool runDuplicate(Program&, const Arguments&);
bool runDuplicateResource(Program&, const Arguments&);
bool runDeleteResource(Program&, const Arguments&);
bool runPurge(Program&, const Arguments&);
bool runShow(Program&, const Arguments&);
bool runMove(Program&, const Arguments&);
bool runRotate(Program&, const Arguments&);
bool runScale(Program&, const Arguments&);
bool runForceSave(Program&, const Arguments&);
bool runRecover(Program&, const Arguments&);
bool runDiscardJournal(Program&, const Arguments&);
bool runCheck(Program&, const Arguments&);
bool runUndo(Program&, const Arguments&);
bool runRedo(Program&, const Arguments&);
bool runHistory(Program&, const Arguments&);
bool runSave(Program&, const Arguments&);
bool runQuit(Program&, const Arguments&);
bool runForceQuit(Program&, const Arguments&);

}

#endif
