/* help, tree and status: looking without changing anything. */
#include <algorithm>
#include <cstring>
#include <iostream>

#include "Command.h"
#include "JsonOutput.h"
#include "Program.h"
#include "Tree.h"

namespace quelmar {

bool runHelp(Program& program, const Arguments& arguments) {
    if(!arguments.positional.empty()) {
        const Command* const command = findCommand(arguments.positional[0]);
        if(!command) return program.fail("unknown command " + arguments.positional[0] + "; \"help\" lists the commands");
        std::cout << "usage: " << command->usage << '\n' << command->summary << '\n';
        if(*command->details) std::cout << command->details << '\n';
        std::cout.flush();
        return true;
    }
    std::size_t width = 0;
    for(const Command& command: commands()) width = std::max(width, std::strlen(command.usage));
    std::cout << "Commands (OBJECT is an object's key, as \"tree\" shows it, or its name when\n"
                 "no other object has it; $_ is the object that the last add, paste or\n"
                 "duplicate made first):\n";
    for(const Command& command: commands())
        std::cout << "  " << command.usage << std::string(width + 2 - std::strlen(command.usage), ' ') << command.summary << '\n';
    std::cout.flush();
    return true;
}

bool runTree(Program& program, const Arguments& arguments) {
    TreeView shown{{}, std::size_t(-1)};
    if(const std::string* const depth = arguments.option("--depth"))
        if(!parseNumber(*depth, shown.depth)) return program.fail("--depth has to be a number, not " + *depth);
    if(!arguments.positional.empty()) {
        const EditResult found = program.session.findObject(view(arguments.positional[0]));
        if(!program.report(found)) return false;
        shown.top = found.keys()[0];
    }
    if(arguments.has("--json")) printTreeJson(program, shown);
    else printTree(program, shown, std::cout);
    return true;
}

bool runStatus(Program& program, const Arguments& arguments) {
    EditSession& session = program.session;
    const rapidjson::Value* const objects = session.value("/objects");
    const std::size_t records = objects && objects->IsObject() ? objects->MemberCount() : 0;
    const std::size_t live = session.editor().scene->sceneGraph->header().objectCount - 1u;
    const std::size_t undo = session.undoCount();
    const std::size_t selected = session.selection().size();
    const std::string diskChange = session.fileChangeOnDisk();
    const std::string journal = session.journalPath();

    if(arguments.has("--json")) {
        JsonOutput output;
        output.set("file", session.path().empty() ? rapidjson::Value{} : output.string(session.path()))
              .set("objects", live).set("deleted", records > live ? records - live : std::size_t{0}).set("selected", selected)
              .set("undo", undo).set("redo", session.redoCount())
              .set("appliedChanges", session.history().appliedRecordCount()).set("changes", session.recordCount())
              .set("saved", session.isSaved()).set("new", session.isNew())
              .set("diskChange", diskChange.empty() ? rapidjson::Value{} : output.string(diskChange))
              .set("readOnly", session.isReadOnly())
              .set("journal", journal.empty() ? rapidjson::Value{} : output.string(journal))
              .set("journalEntries", session.journalEntryCount())
              .print();
        return true;
    }

    std::cout << "file: " << (session.path().empty() ? std::string{"none yet"} : session.path()) << '\n'
              << "objects: " << live << " in the scene";
    if(records > live) std::cout << ", " << records - live << " deleted";
    std::cout << '\n'
              << "selected: " << selected << '\n'
              << "history: " << undo << (undo == 1 ? " step" : " steps") << " to undo, " << session.redoCount() << " to redo ("
              << session.history().appliedRecordCount() << " of " << session.recordCount() << " changes applied)\n"
              << (!session.isSaved() ? "unsaved changes" : session.isNew() ? "new project, not saved yet" : "saved") << '\n';
    const std::size_t entries = session.journalEntryCount();
    const std::string entryText = std::to_string(entries) + (entries == 1 ? " entry" : " entries");
    if(session.isReadOnly())
        std::cout << "read-only: the journal " << journal << " holds unsaved work (" << entryText << "); recover or discard-journal\n";
    else if(entries) std::cout << "journal: " << journal << ", " << entryText << '\n';
    if(!diskChange.empty()) std::cout << "on disk: changed since opened or saved: " << diskChange << '\n';
    std::cout << std::flush;
    return true;
}

}
