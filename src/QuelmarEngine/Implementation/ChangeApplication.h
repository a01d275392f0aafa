#ifndef QuelmarEngine_Implementation_ChangeApplication_h
#define QuelmarEngine_Implementation_ChangeApplication_h
/* Writing a change record into the document and taking it back exactly: what
   one application changed, kept beside the history, and the two directions. */

#include <cstdint>
#include <vector>
#include <Corrade/Containers/Pointer.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"
#include "QuelmarEngine/JsonPointer.h"

namespace QuelmarEngine { namespace Implementation {

/* Most nulls a creation may pad an array with; past it the push is refused,
   as such an index is a typo, not data */
constexpr std::uint64_t MaxArrayPadding = 1000000;

/* What the last application of a record did to the value at `depth` tokens,
   the first value it changed; everything below it is the record's own */
enum class Placement: std::uint8_t {
    /* The value at the path, which existed, was overwritten */
    Replaced,
    /* A member was added last to the object at `depth` */
    AppendedMember,
    /* The array at `depth` grew from `size` elements */
    GrewArray,
    /* An element was inserted at `size` into the array at `depth` */
    InsertedElement,
    /* The value at `depth` was made a container; `old` holds what it was */
    Converted,
    /* A removal: the value at the path (if `erased`) came out of position
       `size` of its parent, then `cleanup` erased the emptied containers */
    Removed
};

/* An empty container that a removal's cleanup erased, innermost first */
struct ErasedContainer {
    std::uint32_t position;
    bool array;
};

/* Beside each history record: its parsed path and what its application
   changed. The document side of the record moves between the document and
   `spare`, so that undoing and redoing again copies nothing. */
struct AppliedChange {
    JsonPointer pointer;
    Placement placement = Placement::Replaced;
    bool erased = false;
    bool hasSpare = false;
    std::uint32_t depth = 0;
    std::uint32_t size = 0;
    std::vector<ErasedContainer> cleanup;
    /* The name of a member taken out by the last undo or removal */
    rapidjson::Value name;
    /* The value that the document held on the other side of the record */
    rapidjson::Value spare;
    rapidjson::Value old;

    /* For another record, keeping what was allocated */
    void reset() {
        placement = Placement::Replaced;
        erased = hasSpare = false;
        depth = size = 0;
        cleanup.clear();
        name.SetNull();
        spare.SetNull();
        old.SetNull();
    }
};

/* Whether applying a creation or replacement at @p pointer would pad an
   array past MaxArrayPadding. Every function here takes the member index of
   the document whose root is @p root. */
bool padsTooMuch(rapidjson::Value& root, MemberIndex& index, const JsonPointer& pointer, bool creation);

/* Applies @p change as documented, recording into @p applied what it did.
   At the push @p oldValue is the record's old value, still empty: a path
   that names a value then makes a replacement, and the value that a
   replacement or removal takes out of the document goes there. Later it is
   null, the record's values decide, and what is taken out goes beside it. */
void applyForward(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied, Containers::Pointer<rapidjson::Value>* oldValue);

/* Takes back the last forward application of @p change, given the document
   as that application left it. Returns false, changing nothing, when the
   document isn't in that state (a host edited it directly). */
bool applyBackward(rapidjson::Value& root, MemberIndex& index, JsonAllocator& allocator, const Change& change, AppliedChange& applied);

}}

#endif
