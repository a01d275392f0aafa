/* Adds a lantern under the object "stage" of a project as one undo step,
   undoes and redoes it, and saves: quelmar-embed scene.json */
#include <cstdio>
#include <QuelmarEngine/host/EditSession.h>

using namespace QuelmarEngine;

int fail(const EditResult& result) {
    std::fprintf(stderr, "error: %s\n", result.message().data());
    return 1;
}

int main(int argc, char** argv) {
    if(argc != 2) {
        std::fprintf(stderr, "usage: %s project.json\n", argv[0]);
        return 2;
    }
    EditSession session;
    if(EditResult r = session.open(argv[1]); !r) return fail(r);

    std::string key;
    EditResult added = session.step("add Lantern stage", [&] {
        EditResult r = session.addObject("Lantern", "stage");
        if(r) key = r.keys().front();
        return r;
    });
    if(!added) return fail(added);
    if(EditResult r = session.undo(); !r) return fail(r);
    if(EditResult r = session.redo(); !r) return fail(r);
    if(EditResult r = session.save(); !r) return fail(r);
    std::printf("added %s, %zu step to undo, saved %s\n", key.data(), session.undoCount(), session.path().data());
}
