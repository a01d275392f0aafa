#ifndef QuelmarEngine_host_StringArray_h
#define QuelmarEngine_host_StringArray_h
/* Lists of NUL-terminated strings in one character buffer: the view that
   commands take and the owning array that they return. */

#include <cstddef>
#include <Corrade/Containers/Array.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief A list of NUL-terminated strings

String i starts at start position i of the character data and ends with a
NUL byte. There is one start position more than there are strings.
*/
class StringArrayView {
    public:
        /** An empty view */
        StringArrayView();
        virtual ~StringArrayView();

        StringArrayView(const StringArrayView&) = delete;
        StringArrayView& operator=(const StringArrayView&) = delete;

        /** Number of strings */
        std::size_t size() const { return _starts.size() - 1; }

        /** Whether there is no string */
        bool isEmpty() const { return _starts.size() == 1; }

        /**
         * @brief String @p i
         *
         * Expects that @p i is less than @ref size().
         */
        const char* get(std::size_t i) const;

    protected:
        StringArrayView(StringArrayView&& other) noexcept;
        StringArrayView& operator=(StringArrayView&& other) noexcept;

        const char* _data;
        Containers::Array<std::size_t> _starts;
};

/** A @ref StringArrayView that owns its characters and grows as strings are added */
class StringArray: public StringArrayView {
    public:
        /** An empty array with room for @p capacity strings */
        explicit StringArray(std::size_t capacity = 24);

        StringArray(StringArray&& other) noexcept;
        StringArray& operator=(StringArray&& other) noexcept;
        ~StringArray() override;

        /**
         * @brief Appends a copy of a string
         *
         * @p length of -1 means up to the NUL byte.
         */
        void add(const char* string, int length = -1);

    private:
        Containers::Array<char> _storage;
};

}

#endif
