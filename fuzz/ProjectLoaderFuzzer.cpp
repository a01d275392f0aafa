/* The project loader on any text: a refused text leaves the empty project
   alone; a loaded one writes out as text that loads to itself, its
   consistency check and a purge of its deleted records go through, and
   copying every object and pasting it back is one step that undo takes back
   to the loaded document byte for byte and redo brings back the same way. */

#include <cstdint>
#include <Corrade/Containers/ArrayView.h>

#include "FuzzSession.h"

using namespace QuelmarFuzz;

namespace {

/* Selects every live object, whatever its name; returns how many */
std::size_t selectEverything(EditSession& session) {
    const std::vector<std::string> keys = objectKeys(session);
    std::vector<Containers::StringView> live;
    for(const std::string& key: keys) {
        const EditResult found = session.findObject({key.data(), key.size()});
        if(found && found.keys().size() == 1 && found.keys()[0] == key) live.emplace_back(key.data(), key.size());
    }
    check(bool(session.select({live.data(), live.size()})), "selecting every live object by its key failed");
    return live.size();
}

void copyAndPasteBack(EditSession& session, const std::string& loaded) {
    if(!selectEverything(session)) return;
    const EditResult copied = session.copy(SelectionExtent::Trees);
    check(bool(copied), "copying every live object failed");
    const std::size_t recordsBefore = objectKeys(session).size();
    const EditResult pasted = session.paste({copied.text().data(), copied.text().size()}, PastePlacement::Beside);
    check(pasted || session.undoCount() == 0, "a refused paste of the copy left a step");
    check(!pasted || objectKeys(session).size() == recordsBefore + copied.keys().size(), "pasting the copy didn't add a record per copied object");
    checkOneStep(session, loaded, 0, "pasting the copy");
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Quiet quiet;
    const Containers::StringView text{reinterpret_cast<const char*>(data), size};
    EditSession session;
    const std::string empty = documentOf(session);
    if(!session.openText(text)) {
        check(documentOf(session) == empty, "a refused project changed the document held");
        return 0;
    }
    countKeys(session);
    const std::string loaded = documentOf(session);

    /* What the project writes is what it reads back */
    EditSession reloaded;
    check(bool(reloaded.openText({loaded.data(), loaded.size()})), "the document written from a loaded project doesn't load");
    check(documentOf(reloaded) == loaded, "the document written from a loaded project loads as another");

    /* Looks at every record, whatever it holds */
    static_cast<void>(session.inconsistencies());
    /* Purging every deleted record, references left dangling or not */
    const EditResult purged = session.purge({}, DanglingReferences::Leave);
    check(purged || !session.undoCount(), "a refused purge left a step");
    checkOneStep(session, loaded, 0, "a purge");
    copyAndPasteBack(session, loaded);
    return 0;
}
