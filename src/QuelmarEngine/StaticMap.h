#ifndef QuelmarEngine_StaticMap_h
#define QuelmarEngine_StaticMap_h
/* A sorted map from C string keys to values, filled in bulk and then searched
   by binary search; the change manager keeps its handlers in one. */

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Assert.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Fixed-capacity map from zero-terminated keys to values

Keys are the caller's pointers and are not copied: a key must outlive its
entry unchanged. The map owns the values. After @ref put() the map has to be
@ref compile() "compiled" before it can be searched again. Equal keys are not
merged; which of them a lookup finds is not fixed.
*/
template<class T> class StaticMap {
    public:
        struct Entry {
            const char* key;
            T value;
        };

        /** Empty map of capacity 0, compiled */
        StaticMap() = default;

        /** Number of entries in use */
        std::uint64_t count() const { return _count; }

        /** Number of entries there is room for */
        std::uint64_t capacity() const { return _entries.size(); }

        /** Whether the entries are sorted, so @ref findn() may search them */
        bool isCompiled() const { return _compiled; }

        /** Entries in use, sorted by key when compiled */
        Containers::ArrayView<const Entry> entries() const {
            return {_entries.data(), std::size_t(_count)};
        }

        /** Adds room for @p by more entries, keeping the entries and their order */
        void grow(std::uint64_t by) {
            Containers::Array<Entry> entries{ValueInit, std::size_t(_entries.size() + by)};
            for(std::uint64_t i = 0; i != _count; ++i) {
                entries[i].key = _entries[i].key;
                entries[i].value = std::move(_entries[i].value);
            }
            _entries = std::move(entries);
        }

        /**
         * @brief Stores @p value under @p key
         *
         * Expects that @p key is not null and that there is room. Leaves the
         * map not compiled.
         */
        T& put(const char* key, T&& value) {
            CORRADE_ASSERT(key, "StaticMap::put(): key cannot be nullptr.", _entries[0].value);
            CORRADE_ASSERT(_count < _entries.size(), "StaticMap::put(): capacity exhausted.", _entries[0].value);
            Entry& entry = _entries[_count++];
            entry.key = key;
            /* Through a temporary, so that a value the slot still held is
               destroyed here even when T's move assignment swaps */
            entry.value = T{std::move(value)};
            _compiled = false;
            return entry.value;
        }

        /** Sorts the entries by key, in byte order */
        void compile() {
            std::sort(_entries.begin(), _entries.begin() + _count, [](const Entry& a, const Entry& b) {
                return std::strcmp(a.key, b.key) < 0;
            });
            _compiled = true;
        }

        /**
         * @brief The value whose key starts with the first @p n bytes of @p key
         *
         * With @p n counting the terminating zero only an equal key matches.
         * Returns @cpp nullptr @ce when there is none. Expects a compiled map.
         */
        T* findn(const char* key, std::uint64_t n) {
            CORRADE_ASSERT(_compiled, "StaticMap::find(): Map needs to be compiled.", nullptr);
            Entry* const end = _entries.begin() + _count;
            Entry* const found = std::lower_bound(_entries.begin(), end, key, [n](const Entry& entry, const char* key) {
                return std::strncmp(entry.key, key, n) < 0;
            });
            if(found == end || std::strncmp(found->key, key, n) != 0) return nullptr;
            return &found->value;
        }

        /**
         * @brief The value whose key equals @p key as a whole
         *
         * What @ref findn() finds with a zero-terminated @p key and @p n
         * counting its zero byte, for a key that isn't zero-terminated.
         * Expects a compiled map and no zero byte inside @p key.
         */
        T* find(Containers::StringView key) {
            CORRADE_ASSERT(_compiled, "StaticMap::find(): Map needs to be compiled.", nullptr);
            Entry* const end = _entries.begin() + _count;
            Entry* const found = std::lower_bound(_entries.begin(), end, key, [](const Entry& entry, Containers::StringView key) {
                return compare(entry.key, key) < 0;
            });
            if(found == end || compare(found->key, key) != 0) return nullptr;
            return &found->value;
        }

        /** Destroys every value and empties the map; capacity and compiled state stay */
        void clear() {
            for(std::uint64_t i = 0; i != _count; ++i) {
                _entries[i].key = nullptr;
                _entries[i].value = T{};
            }
            _count = 0;
        }

    private:
        /* As strcmp() of @p a and @p key followed by a zero byte */
        static int compare(const char* a, Containers::StringView key) {
            for(std::size_t i = 0; i != key.size(); ++i) {
                const unsigned char c = a[i], d = key.data()[i];
                if(c != d) return c < d ? -1 : 1;
            }
            return a[key.size()] ? 1 : 0;
        }

        bool _compiled = true;
        std::uint64_t _count = 0;
        Containers::Array<Entry> _entries;
};

}

#endif
