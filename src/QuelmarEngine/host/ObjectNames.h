#ifndef QuelmarEngine_host_ObjectNames_h
#define QuelmarEngine_host_ObjectNames_h
/* Which objects are called what: the "name" of every record of "objects",
   indexed both ways and kept up to date through the change history. */

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Names of the records of "objects"

Counts every record whose "name" is a string, deleted or not. A change
handler notes which records a change touched, and the next query reads
those again, so that a change costs in proportion to the records it touched
rather than to the project.
*/
class ObjectNames {
    public:
        /**
         * @brief Follows the document and the history of @p editor
         *
         * Registers a change handler. Loading a project drops the handlers,
         * so call this again after every load.
         */
        void attach(QuelmarEditor& editor);

        /** The name of record @p key, or null when it has none that is a string */
        const std::string* name(Containers::StringView key);

        /** Keys of the records called @p name, in no particular order */
        const std::vector<std::string>& keys(Containers::StringView name);

        /** Keys of the records whose names match the glob @p pattern, in no particular order */
        std::vector<std::string> keysMatching(Containers::StringView pattern);

    private:
        void noteChange(Containers::ArrayView<const Containers::String> path);
        void update();
        void forget(const std::string& key);
        void enter(const std::string& key, const rapidjson::Value* record);

        /* One entry a name, kept in an array so that a pattern walks
           through them in order instead of hopping between hash nodes */
        struct Named {
            std::string name;
            std::vector<std::string> keys;
        };

        QuelmarEditor* _editor{};
        std::unordered_map<std::string, std::string> _nameOfKey;
        std::vector<Named> _named;
        std::unordered_map<std::string, std::size_t> _indexOfName;
        std::unordered_set<std::string> _staleKeys;
        /* The whole map was replaced, or no project read yet */
        bool _allStale{true};
};

}

#endif
