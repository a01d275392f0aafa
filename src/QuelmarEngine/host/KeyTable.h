#ifndef QuelmarEngine_host_KeyTable_h
#define QuelmarEngine_host_KeyTable_h
/* Object keys by object index, each replaceable on its own, so that a new or
   removed object costs its own key and not a copy of every other one. */

#include <cstddef>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarEngine {

/**
@brief A @ref StringArrayView whose strings are set by index

Every entry starts as the empty string. A replaced key leaves its old
characters behind until they outweigh the live ones, then the storage is
packed again.
*/
class KeyTable: public StringArrayView {
    public:
        KeyTable();

        /** Copies the strings of @p keys */
        explicit KeyTable(const StringArrayView& keys);

        KeyTable(KeyTable&& other) noexcept;
        KeyTable& operator=(KeyTable&& other) noexcept;
        ~KeyTable() override;

        /** Sets the number of entries; new ones are empty */
        void resize(std::size_t size);

        /** Replaces entry @p i, which has to exist, by a copy of @p key */
        void set(std::size_t i, Containers::StringView key);

    private:
        void pack();

        Containers::Array<char> _storage;
        std::size_t _unused{};
};

}

#endif
