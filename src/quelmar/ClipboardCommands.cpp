/* copy, paste and duplicate: the program's clipboard and clipboard files. */
#include <iostream>

#include "Command.h"
#include "Files.h"
#include "JsonOutput.h"
#include "Program.h"

namespace quelmar {

namespace {

std::string countText(const std::size_t count, const char* const what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/* The keys of what a paste or duplicate added, the first of which $_ names from now on */
void printAdded(Program& program, const Arguments& arguments, const EditResult& result, const char* const verb) {
    const std::vector<std::string>& keys = result.keys();
    if(!keys.empty()) program.lastAdded = keys[0];
    if(arguments.has("--json")) {
        JsonOutput output;
        output.set("keys", output.strings(keys)).print();
        return;
    }
    constexpr std::size_t Listed = 8;
    std::cout << verb << ' ' << countText(keys.size(), "object");
    for(std::size_t i = 0; i != keys.size() && i != Listed; ++i)
        std::cout << (i ? " " : ": ") << keys[i];
    if(keys.size() > Listed) std::cout << " and " << keys.size() - Listed << " more";
    std::cout << std::endl;
}

}

bool runCopy(Program& program, const Arguments& arguments) {
    const EditResult result = program.session.copy(arguments.has("--trees") ? QuelmarEngine::SelectionExtent::Trees : QuelmarEngine::SelectionExtent::Objects);
    if(!program.report(result)) return false;
    if(arguments.positional.size() == 1) {
        std::string error;
        if(!writeClipboardFile(arguments.positional[0], program.session.path(), result.text(), arguments.has("--force"), error))
            return program.fail(error);
    }
    program.clipboard = result.text();

    std::cout << "copied " << countText(result.keys().size(), "object");
    if(const std::size_t skins = result.skinKeys().size()) std::cout << " and " << countText(skins, "skin");
    std::cout << std::endl;
    return true;
}

bool runPaste(Program& program, const Arguments& arguments) {
    std::string text, source;
    if(arguments.positional.size() == 1) {
        source = arguments.positional[0];
        std::string error;
        if(!readInputFile(source, text, error)) return program.fail(error);
    } else {
        if(program.clipboard.empty()) return program.fail("the clipboard is empty; copy something first");
        text = program.clipboard;
        source = "the clipboard";
    }
    const EditResult result = program.session.paste(view(text),
        arguments.has("--child") ? QuelmarEngine::PastePlacement::Under : QuelmarEngine::PastePlacement::Beside, view(source));
    if(!program.report(result)) return false;
    printAdded(program, arguments, result, "pasted");
    return true;
}

bool runDuplicate(Program& program, const Arguments& arguments) {
    const EditResult result = program.session.duplicate(arguments.has("--trees") ? QuelmarEngine::SelectionExtent::Trees : QuelmarEngine::SelectionExtent::Objects);
    if(!program.report(result)) return false;
    printAdded(program, arguments, result, "duplicated");
    return true;
}

}
