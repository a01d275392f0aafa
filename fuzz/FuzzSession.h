#ifndef Quelmar_fuzz_FuzzSession_h
#define Quelmar_fuzz_FuzzSession_h
/* What the fuzz targets share: sessions with keys from a counter, so that a
   run repeats exactly, the document as text, and a check that aborts with
   what went wrong, which the fuzzer and the corpus replay both report. */

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/host/EditSession.h"

namespace QuelmarFuzz {

using namespace QuelmarEngine;

/* A small scene with every kind of reference: a hierarchy, a skin whose
   joints are objects, a mesh using the skin, a deleted object, a
   transformation single precision can't hold exactly */
constexpr const char FixedScene[] = R"({"objects":{)"
    R"("stage":{"name":"Stage","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},)"
    R"("hero":{"name":"Hero","parent":"stage","skin":"heroSkin","transformation":[0,0,-1,0,0,1,0,0,1,0,0,0,0,0,3,1],)"
    R"("components":[{"type":"mesh","mesh":{"file":"hero.glb","skin":"heroSkin"}}]},)"
    R"("hips":{"name":"Hips","parent":"hero","transformation":[1,0,0,0,0,1,0,0,0,0,1,0,0,1,0,1]},)"
    R"("head":{"name":"Head","parent":"hips"},)"
    R"("camera":{"name":"Camera","transformation":[1,0,0,0,0,0.9701425,0.2425356,0,0,-0.2425356,0.9701425,0,0,2,8,1]},)"
    R"("old":{"name":"Old","parent":"stage","deleted":true}},)"
    R"("skins":{"heroSkin":{"joints":["hips","head"]}},"materials":{"stone":{"color":[0.5,0.5,0.5]}}})";

/* Keeps the library's progress lines out of the fuzzer's output, where they
   would only slow the run; warnings and errors still go through */
struct Quiet {
    Utility::Debug silence{nullptr};
};

/* Aborts, naming @p what, unless @p condition holds */
inline void check(const bool condition, const char* const what) {
    if(condition) return;
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

/* Gives the session's new records the keys f1, f2, ... */
inline void countKeys(EditSession& session) {
    auto counter = std::make_shared<unsigned>(0);
    session.editor().data.project.setIdGenerator([counter]{
        return Containers::String{("f" + std::to_string(++*counter)).data()};
    });
}

inline std::string documentOf(EditSession& session) {
    return session.editor().data.project.toJson().data();
}

/* What an action did since the history held @p undoBefore steps: either no
   step and the document still @p before, or one step that undo takes back to
   @p before and redo brings back; leaves the session at @p before. @p what
   names the action in the messages. */
inline void checkOneStep(EditSession& session, const std::string& before, const std::size_t undoBefore, const std::string& what) {
    const std::string after = documentOf(session);
    if(session.undoCount() == undoBefore) return check(after == before, (what + " left no step but changed the document").data());
    check(session.undoCount() == undoBefore + 1 && session.redoCount() == 0, (what + " left other than one step").data());
    check(session.undo() && documentOf(session) == before, ("undoing " + what + " didn't give the document before it").data());
    check(session.redo() && documentOf(session) == after, ("redoing " + what + " didn't give the document after it").data());
    check(session.undo() && documentOf(session) == before, ("undoing " + what + " again didn't give the document before it").data());
}

/* Keys of the records of "objects", in the order of the map */
inline std::vector<std::string> objectKeys(EditSession& session) {
    std::vector<std::string> keys;
    const rapidjson::Value* objects = session.value("/objects");
    if(!objects || !objects->IsObject()) return keys;
    for(auto it = objects->MemberBegin(); it != objects->MemberEnd(); ++it)
        keys.emplace_back(it->name.GetString(), it->name.GetStringLength());
    return keys;
}

}

#endif
