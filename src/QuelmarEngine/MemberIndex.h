#ifndef QuelmarEngine_MemberIndex_h
#define QuelmarEngine_MemberIndex_h
/* Member positions by name in the large top-level maps of one document, so
   that a lookup in a map of tens of thousands of records doesn't scan it.
   Owned by the project file whose document it indexes. */

#include <cstdint>
#include <vector>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Name index of a document's top-level maps

Answers which position a member has in a top-level map (a member of the
document root that is an object) of at least @ref IndexedMemberCount members,
in O(1) while no member was removed from or inserted into the middle of it and
in O(log n) after, and scans every other object. The edits below keep it in
step with the document at O(log n) each: a map keeps a stable slot per name
and counts live slots before a slot to find its position, so a removal kills
one slot and the undo of that removal revives it between the same neighbours.

Every answer is checked cheaply: a map's index is used only while the map's
member array and count are the ones it knows (the index rebuilds itself
otherwise), and a found position only when the member there has that name.
Members appended behind its back are picked up. What such checks can't see
is a member renamed in place, or a document replaced by one whose maps
happen to sit at the same addresses with the same counts: after such a
direct edit, call @ref clear() (@ref ProjectFile::documentChanged() does).

Not thread-safe: lookups update the index.
*/
class MemberIndex {
    public:
        /** Maps with at least this many members are indexed; a scan of fewer is as fast */
        static constexpr rapidjson::SizeType IndexedMemberCount = 64;

        MemberIndex();
        ~MemberIndex();

        MemberIndex(const MemberIndex&) = delete;
        MemberIndex& operator=(const MemberIndex&) = delete;

        /**
         * @brief Makes @p root the document to index
         *
         * Forgets everything when it isn't the root given last.
         */
        void bind(const rapidjson::Value& root);

        /** Forgets every map's index; they are rebuilt when next needed */
        void clear();

        /**
         * @brief How many times a map's index was built from the map
         *
         * Edits made through the index never make it build again; a host
         * can watch this to see that it keeps the index in step.
         */
        std::size_t buildCount() const { return _buildCount; }

        /** Position of the member of @p object named @p name, or its member count. Expects an object. */
        rapidjson::SizeType find(const rapidjson::Value& object, Containers::StringView name);

        /** Adds a member last; @p name has to be a string */
        rapidjson::Value& append(rapidjson::Value& object, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator);

        /** Adds a member at @p position, moving the later ones up */
        rapidjson::Value& insert(rapidjson::Value& object, rapidjson::SizeType position, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator);

        /** Takes the member at @p position out into @p name and @p value */
        void erase(rapidjson::Value& object, rapidjson::SizeType position, rapidjson::Value& name, rapidjson::Value& value);

    private:
        class Map;

        /* The index of a top-level map, made when @p create; null for any
           other object */
        Map* mapOf(const rapidjson::Value& object, bool create);
        /* The index of @p object when it is in step with it; an index out of
           step is marked for a rebuild and null returned */
        Map* mapInStep(const rapidjson::Value& object);

        const rapidjson::Value* _root{};
        std::size_t _buildCount{};
        std::vector<Containers::Pointer<Map>> _maps;
};

}

#endif
