/* The table of the program's commands: names, usage and help texts. */
#include "Command.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quelmar {

namespace {

constexpr std::size_t Many = SIZE_MAX;

}

bool Arguments::has(const char* const flag) const {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

const std::string* Arguments::option(const char* const option) const {
    for(const auto& given: options) if(given.first == option) return &given.second;
    return nullptr;
}

bool parseNumber(const std::string& text, std::size_t& number) {
    number = 0;
    for(const char c: text) {
        /* Anything beyond this is more than any history or tree holds anyway */
        if(c < '0' || c > '9' || number > 100000000) return false;
        number = number*10 + std::size_t(c - '0');
    }
    return !text.empty();
}

const std::vector<Command>& commands() {
    static const std::vector<Command> table{
        {"help", "help [COMMAND]", "list the commands, or describe one", "", {}, 0, 1, false, runHelp},
        {"tree", "tree [OBJECT] [--depth N] [--json]", "draw the live objects: key, name, * when selected",
            "Deleted objects and everything below them are left out. With OBJECT only\n"
            "it and what lies below it; with --depth only N levels, an object whose\n"
            "children are left out saying how many objects lie below it.", {"--depth=", "--json"}, 0, 1, false, runTree},
        {"status", "status [--json]", "file, object count, history position, saved or not", "", {"--json"}, 0, 0, false, runStatus},
        {"check", "check", "list every inconsistency of the project; fail if there is one",
            "References that name nothing (an object's parent or skin, a mesh's skin, a\n"
            "skin's joints), parent cycles, transformations that aren't 16 numbers single\n"
            "precision can hold, and objects in the scene that share a name. set and\n"
            "remove warn of those they make.", {}, 0, 0, false, runCheck},
        {"get", "get POINTER", "print the value at a JSON Pointer (\"\": everything)",
            "Example: get /objects/hero/name", {}, 1, 1, false, runGet},
        {"set", "set POINTER JSON", "set the value at a JSON Pointer to a JSON text",
            "The parent of the value has to exist. In an array, an index may replace an\n"
            "element or, equal to the size, append; \"-\" appends too. Examples:\n"
            "  set /objects/hero/name \"Knight\"\n"
            "  set /objects/hero/transformation/12 2.5", {}, 2, 2, true, runSet},
        {"remove", "remove POINTER", "remove the value at a JSON Pointer",
            "Containers that the removal leaves empty are removed too, except top-level\n"
            "members.", {}, 1, 1, false, runRemove},
        {"add", "add NAME [PARENT] [--json]", "add an object under PARENT or the root; print its key",
            "A name that is taken gets a suffix: Cube, Cube.000, Cube.001 ...", {"--json"}, 1, 2, false, runAdd},
        {"rename", "rename OBJECT NAME", "rename an object; print the name it got",
            "A name that another object has gets a suffix, as with add.", {}, 2, 2, false, runRename},
        {"select", "select [[+|-]OBJECT|PATTERN...]", "select exactly these objects; none: nothing",
            "A PATTERN selects every object whose name it matches (*, ?, [...]). With\n"
            "every word marked + or -, the objects are added to or taken from the\n"
            "selection instead. Example: select +Crate* -Crate.001", {}, 0, Many, false, runSelect},
        {"selection", "selection [--json]", "list the selected objects in tree order", "", {"--json"}, 0, 0, false, runSelection},
        {"find", "find PATTERN [--json]", "list the objects whose names match: key, name, path",
            "*, ? and [...] work as in file names. Objects are listed in tree order,\n"
            "each with the names from the root down to it. Example: find \"Crate*\"", {"--json"}, 1, 1, false, runFind},
        {"delete", "delete [OBJECT]", "delete an object, or the selected ones, and all below",
            "Deleted objects keep their records, flagged \"deleted\", so undo brings them back.", {}, 0, 1, false, runDelete},
        {"reparent", "reparent OBJECT|root [--keep-transform]", "move the selected objects under PARENT or the root",
            "Without the flag every selected object keeps its local transformation and\n"
            "so moves along with its new parent. With --keep-transform the objects stay\n"
            "where they are in the world; a selected object whose ancestor is selected\n"
            "too then moves along with that ancestor.", {"--keep-transform"}, 1, 1, false, runReparent},
        {"show", "show OBJECT", "print an object's local and world translation, rotation and scale",
            "Rotations are given as angles in degrees about the X, then the Y, then the Z\n"
            "axis of the parent's space (for the local one) or of the world's, and as a\n"
            "quaternion.", {}, 1, 1, false, runShow},
        {"move", "move OBJECT X Y Z [--world] [--by]", "set an object's translation, or add to it with --by",
            "In the parent's space, or with --world in the world's.", {"--world", "--by"}, 4, 4, false, runMove},
        {"rotate", "rotate OBJECT X Y Z [--world] [--by]", "set an object's rotation, or rotate it further with --by",
            "X Y Z are degrees about the X, then the Y, then the Z axis of the parent's\n"
            "space, or with --world of the world's; --by turns the object about those\n"
            "axes around its origin.", {"--world", "--by"}, 4, 4, false, runRotate},
        {"scale", "scale OBJECT X [Y Z] [--world] [--by]", "set an object's scale, or multiply it with --by",
            "One number scales all three axes. With --world the scale is the one in the\n"
            "world.", {"--world", "--by"}, 2, 4, false, runScale},
        {"copy", "copy [--trees] [--force] [FILE]", "copy the selected objects and their skins",
            "With --trees everything below the selected objects is copied too. With FILE\n"
            "the clipboard text is also written there; an existing file only with\n"
            "--force, and never the project file.", {"--trees", "--force"}, 0, 1, false, runCopy},
        {"paste", "paste [--child] [FILE] [--json]", "paste the clipboard, or FILE, beside the selection",
            "With --child the pasted objects go under the first selected object instead.\n"
            "Every pasted object and skin gets a new key; the pasted objects end up\n"
            "selected.", {"--child", "--json"}, 0, 1, false, runPaste},
        {"duplicate", "duplicate [--trees] [--json]", "duplicate the selected objects and select the copies",
            "With --trees everything below the selected objects is duplicated too.", {"--trees", "--json"}, 0, 0, false, runDuplicate},
        {"duplicate-resource", "duplicate-resource TYPE KEY", "copy a record under a new key and print it",
            "Example: duplicate-resource materials stone", {}, 2, 2, false, runDuplicateResource},
        {"delete-resource", "delete-resource TYPE KEY [--force]", "remove record KEY of the map TYPE",
            "A record of objects or skins that others still name (as a parent, a joint,\n"
            "a skin) is removed only with --force, which leaves those references naming\n"
            "nothing.", {"--force"}, 2, 2, false, runDeleteResource},
        {"purge", "purge [KEY...] [--force]", "remove deleted objects for good, with all below",
            "With no KEY, every deleted object. Otherwise the objects KEY, each deleted or\n"
            "below a deleted object, with everything below them. A skin that would still\n"
            "name a purged object as a joint stops the purge, unless --force. Purging\n"
            "makes room under the limit of 65,534 objects; undo brings the records back.",
            {"--force"}, 0, Many, false, runPurge},
        {"undo", "undo [N] [--json]", "undo the last N commands (default 1) and name them", "", {"--json"}, 0, 1, false, runUndo},
        {"redo", "redo [N] [--json]", "redo the last N undone commands (default 1) and name them", "", {"--json"}, 0, 1, false, runRedo},
        {"history", "history [--changes] [--json]", "list the steps, the position and the saved state",
            "Every command that changes the project is one step, listed with its number,\n"
            "what it was and how many changes it made. With --changes every change\n"
            "instead, with the number of its step.", {"--changes", "--json"}, 0, 0, false, runHistory},
        {"save", "save [PATH]", "write the project to PATH or to its file, atomically",
            "Saving to PATH makes PATH the project's file. Saving to the project's file\n"
            "is refused when another program changed it since it was opened or saved,\n"
            "naming what changed; save! writes over it.", {}, 0, 1, false, runSave},
        {"save!", "save! [PATH]", "save, writing over changes made to the file by others", "", {}, 0, 1, false, runForceSave},
        {"recover", "recover", "replay the journal of unsaved work left by a session that ended",
            "Rebuilds the document, the steps to undo and redo, and the saved state from\n"
            "the journal found beside the project when it was opened. A damaged last\n"
            "entry is dropped with a warning.", {}, 0, 0, false, runRecover},
        {"discard-journal", "discard-journal", "drop the journal of unsaved work",
            "After opening: forget the work it holds, keeping the project as saved.\n"
            "During a session: a crash would then lose the unsaved changes.", {}, 0, 0, false, runDiscardJournal},
        {"quit", "quit", "leave; refused while there are unsaved changes", "", {}, 0, 0, false, runQuit},
        {"quit!", "quit!", "leave, discarding unsaved changes", "", {}, 0, 0, false, runForceQuit},
    };
    return table;
}

const Command* findCommand(const std::string& name) {
    for(const Command& command: commands())
        if(name == command.name) return &command;
    return nullptr;
}

}
