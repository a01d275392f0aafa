#ifndef QuelmarEngine_host_NameIndex_h
#define QuelmarEngine_host_NameIndex_h
/* Records of a document's resource maps by their "name", so that looking for
   a free name costs one lookup per candidate instead of a scan of the map.
   Owned by the project file whose document it indexes. */

#include <string>
#include <vector>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Name index of a document's resource maps

A map is indexed at the first lookup in it and then kept up to date by
@ref valueChanged(), which the change manager calls for every change it
applies and the accessors' setters for every write. A record it finds is
checked to still have the name; when one doesn't (a host edited the
document directly), the map is indexed again. A record that a direct edit
gave a name is found only after @ref clear().
*/
class NameIndex {
    public:
        NameIndex();
        ~NameIndex();

        NameIndex(const NameIndex&) = delete;
        NameIndex& operator=(const NameIndex&) = delete;

        /** Makes @p root the document to index; forgets everything when it isn't the root given last */
        void bind(const rapidjson::Value& root);

        /** Forgets every map's index */
        void clear();

        /**
         * @brief A record of the map @p type whose "name" is @p name, or @cpp nullptr @ce
         *
         * @p members is the member index of the bound document.
         */
        const rapidjson::Value* find(MemberIndex& members, Containers::StringView type, Containers::StringView name);

        /**
         * @brief The value at @p pointer was set, made or removed
         *
         * With the containers that the change made or erased on the way.
         */
        void valueChanged(MemberIndex& members, const JsonPointer& pointer);

    private:
        class Map;

        Map* mapOf(Containers::StringView type);

        const rapidjson::Value* _root{};
        std::vector<Containers::Pointer<Map>> _maps;
};

}

#endif
