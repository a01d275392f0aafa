/* The clipboard reader on any text, pasted into a fixed project beside one
   object and under another: a refused paste changes nothing, an accepted one
   is one step that undo takes back byte for byte and redo brings back. */

#include <cstdint>
#include <Corrade/Containers/ArrayView.h>

#include "FuzzSession.h"

using namespace QuelmarFuzz;

namespace {

void pasteAndUndo(EditSession& session, const std::string& fixed, const Containers::StringView text, const char* const selected, const PastePlacement placement) {
    const Containers::StringView reference = selected;
    check(bool(session.select({&reference, 1})), "selecting an object of the fixed project failed");
    const EditResult pasted = session.paste(text, placement);
    check(pasted || session.undoCount() == 0, "a refused paste left a step");
    checkOneStep(session, fixed, 0, "a paste");
    const StringArray selection = session.selection();
    check(pasted || (selection.size() == 1 && std::string{selection.get(0)} == selected), "a refused paste changed the selection");
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Quiet quiet;
    const Containers::StringView text{reinterpret_cast<const char*>(data), size};
    EditSession session;
    check(bool(session.openText(FixedScene)), "the fixed project doesn't load");
    countKeys(session);
    const std::string fixed = documentOf(session);
    pasteAndUndo(session, fixed, text, "hips", PastePlacement::Beside);
    pasteAndUndo(session, fixed, text, "camera", PastePlacement::Under);
    return 0;
}
