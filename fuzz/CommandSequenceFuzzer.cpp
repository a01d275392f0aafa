/* Edits, undos and redos that the input picks, through the edit session on a
   fixed project. After every action the document is the one recorded for its
   place in the history, byte for byte: a refused action changes nothing, an
   action that changes the document is one step, undo and redo go back to
   the recorded documents, and undoing everything gives the fixed project. */

#include <cstdint>
#include <utility>
#include <Corrade/Containers/ArrayView.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/Vector3.h>

#include "FuzzSession.h"

using namespace QuelmarFuzz;

namespace {

/* Reads bytes from the front of the input; zeros once it runs out */
struct Input {
    const std::uint8_t* data;
    std::size_t size, position;

    bool isEmpty() const { return position == size; }

    std::uint8_t byte() { return position == size ? 0 : data[position++]; }

    /* Text up to a NUL byte or the end, at most @p max bytes */
    std::string text(std::size_t max = 64) {
        std::string out;
        for(char c; position != size && out.size() != max && (c = char(data[position++])); ) out += c;
        return out;
    }

    /* A small number, whole or with one decimal, negative or not */
    double number() {
        const std::uint8_t b = byte();
        return (b & 0x80 ? -1.0 : 1.0)*(b & 0x40 ? (b & 0x3f)/10.0 : (b & 0x3f));
    }
};

/* One of the keys of "objects", the root, a name, a pattern or something
   that names nothing */
std::string pickObject(EditSession& session, Input& input) {
    const std::vector<std::string> keys = objectKeys(session);
    const std::uint8_t b = input.byte();
    static const char* const others[]{"", "Hips", "H*", "nobody"};
    if(b % 8 < 4) return others[b % 8];
    return keys.empty() ? "" : keys[(b/8) % keys.size()];
}

Containers::StringView view(const std::string& text) { return {text.data(), text.size()}; }

EditResult selectSome(EditSession& session, Input& input) {
    std::vector<std::string> names(input.byte() % 4);
    for(std::string& name: names) name = pickObject(session, input);
    std::vector<Containers::StringView> references;
    for(const std::string& name: names) references.push_back(view(name));
    return session.select({references.data(), references.size()});
}

EditResult transform(EditSession& session, Input& input, const std::uint8_t which) {
    const std::string object = pickObject(session, input);
    /* A braced list reads the numbers in order */
    const Magnum::Vector3d vector{input.number(), input.number(), input.number()};
    const std::uint8_t flags = input.byte();
    const TransformSpace space = flags & 1 ? TransformSpace::World : TransformSpace::Local;
    const TransformAmount amount = flags & 2 ? TransformAmount::By : TransformAmount::To;
    if(which == 0) return session.move(view(object), vector, space, amount);
    if(which == 1) return session.rotate(view(object), vector, space, amount);
    return session.scale(view(object), vector, space, amount);
}

/* A pointer into a record of the project, or one the input spells */
std::string pickPointer(EditSession& session, Input& input) {
    const std::uint8_t b = input.byte();
    const std::string key = pickObject(session, input);
    static const char* const members[]{"/name", "/parent", "/transformation", "/deleted"};
    if(b % 6 < 4) return "/objects/" + key + members[b % 6];
    if(b % 6 == 4) return "/skins/heroSkin/joints/" + std::to_string(input.byte() % 4);
    return input.text();
}

/* Past this, duplicates and copies are skipped, so that an input that keeps
   doubling the scene stays fast */
constexpr std::size_t MaxRecords = 512;

EditResult act(EditSession& session, Input& input, const std::uint8_t action) {
    if((action % 16 == 3 || action % 16 == 4) && objectKeys(session).size() > MaxRecords) return {};
    switch(action % 16) {
        case 0: {
            const std::string name = input.text(16);
            return session.addObject(view(name), view(pickObject(session, input)));
        }
        case 1: return session.deleteObject(view(pickObject(session, input)));
        case 2: return session.deleteSelection();
        case 3: return session.duplicate(input.byte() & 1 ? SelectionExtent::Trees : SelectionExtent::Objects);
        case 4: {
            const EditResult copied = session.copy(input.byte() & 1 ? SelectionExtent::Trees : SelectionExtent::Objects);
            if(!copied) return copied;
            return session.paste(view(copied.text()), input.byte() & 1 ? PastePlacement::Under : PastePlacement::Beside);
        }
        case 5: return session.paste(view(input.text(256)), input.byte() & 1 ? PastePlacement::Under : PastePlacement::Beside);
        case 6: return session.reparentSelection(view(pickObject(session, input)), input.byte() & 1 ? ReparentMode::KeepWorld : ReparentMode::KeepLocal);
        case 7: case 8: case 9: return transform(session, input, action % 16 - 7);
        case 10: {
            const std::string object = pickObject(session, input);
            return session.renameObject(view(object), view(input.text(16)));
        }
        case 11: {
            const std::string pointer = pickPointer(session, input);
            return session.set(view(pointer), view(input.text()));
        }
        case 12: return session.remove(view(pickPointer(session, input)));
        case 13: {
            const std::string key = pickObject(session, input);
            const char* const type = input.byte() & 1 ? "skins" : "objects";
            if(input.byte() & 1) return session.deleteResource(type, view(key), DanglingReferences::Leave);
            return session.duplicateResource(type, view(key));
        }
        case 14: return session.purge({}, input.byte() & 1 ? DanglingReferences::Leave : DanglingReferences::Refuse);
        default: return selectSome(session, input);
    }
}

/* Undoes or redoes one to four steps as @p action says; the document has to
   be the one recorded where that lands */
void travel(EditSession& session, const std::uint8_t action, const std::vector<std::string>& documents) {
    const std::size_t position = session.undoCount();
    const std::size_t count = 1 + (action & 3);
    const bool forward = action & 4;
    const EditResult result = forward ? session.redo(count) : session.undo(count);
    if(result) check(session.undoCount() == (forward ? position + count : position - count), "an undo or redo went elsewhere than asked");
    else check(session.undoCount() == position, "a refused undo or redo moved in the history");
    check(documentOf(session) == documents[session.undoCount()], "an undo or redo didn't give the recorded document");
}

/* Runs the action @p action; a new step replaces what could be redone in
   @p documents with the document it made */
void actAndRecord(EditSession& session, Input& input, const std::uint8_t action, std::vector<std::string>& documents) {
    const std::size_t position = session.undoCount();
    const std::size_t redoable = session.redoCount();
    const EditResult result = act(session, input, action);
    std::string document = documentOf(session);
    if(session.undoCount() == position) {
        check(document == documents[position], "an action that left no step changed the document");
        check(session.redoCount() == redoable, "an action that left no step dropped the redo history");
        return;
    }
    check(bool(result), "a refused action left a step");
    check(session.undoCount() == position + 1 && session.redoCount() == 0, "an action left other than one step");
    documents.resize(position + 1);
    documents.push_back(std::move(document));
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Quiet quiet;
    EditSession session;
    check(bool(session.openText(FixedScene)), "the fixed project doesn't load");
    countKeys(session);
    /* The document at each place in the history, the fixed project first */
    std::vector<std::string> documents{documentOf(session)};

    Input input{data, size, 0};
    for(std::size_t actions = 0; !input.isEmpty() && actions != 64; ++actions) {
        const std::uint8_t action = input.byte();
        if(action >= 0xe0) travel(session, action, documents);
        else actAndRecord(session, input, action, documents);
    }

    const std::string last = documentOf(session);
    const std::size_t position = session.undoCount();
    if(position) check(bool(session.undo(position)), "undoing everything failed");
    check(documentOf(session) == documents[0], "undoing everything didn't give the fixed project back");
    if(position) check(bool(session.redo(position)), "redoing everything failed");
    check(documentOf(session) == last, "redoing everything didn't give the last document back");
    return 0;
}
