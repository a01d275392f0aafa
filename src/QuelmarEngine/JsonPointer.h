#ifndef QuelmarEngine_JsonPointer_h
#define QuelmarEngine_JsonPointer_h
/* JSON Pointer paths into the project document and the member edits they
   make. Walks through a document's member index when given one, so that a
   lookup in a resource map of tens of thousands of records doesn't scan it. */

#include <cstdint>
#include <string>
#include <vector>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief The member of @p object named @p name, or @cpp nullptr @ce

A scan, for records and other small objects; for the resource maps of a
project use @ref ProjectFile::findMember(). Expects an object.
*/
rapidjson::Value* findMember(rapidjson::Value& object, Containers::StringView name);
const rapidjson::Value* findMember(const rapidjson::Value& object, Containers::StringView name);

/** Position of the member of @p object named @p name, or its member count, by a scan. Expects an object. */
rapidjson::SizeType memberPosition(const rapidjson::Value& object, Containers::StringView name);

/** Adds a member last; @p name has to be a string. Use @ref MemberIndex for the maps of an indexed document. */
rapidjson::Value& appendMember(rapidjson::Value& object, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator);

/** Adds a member at @p position, moving the later ones up. Expects @p position not past the end. */
rapidjson::Value& insertMember(rapidjson::Value& object, rapidjson::SizeType position, rapidjson::Value&& name, rapidjson::Value&& value, JsonAllocator& allocator);

/** Takes the member at @p position out into @p name and @p value, keeping the order of the others */
void eraseMember(rapidjson::Value& object, rapidjson::SizeType position, rapidjson::Value& name, rapidjson::Value& value);

/** Adds an element at @p position, moving the later ones up. Expects @p position not past the end. */
rapidjson::Value& insertElement(rapidjson::Value& array, rapidjson::SizeType position, rapidjson::Value&& value, JsonAllocator& allocator);

/** Appends @p name to @p path as one pointer token, escaping "~" and "/" */
void appendPointerToken(std::string& path, Containers::StringView name);

/**
@brief A parsed JSON Pointer

Tokens are unescaped ("~0" is "~", "~1" is "/"). A token of decimal digits
without a leading zero that fits in 32 bits is also an array index. Get,
create and erase follow the usual pointer rules: create pads arrays with nulls
up to an index, appends for "-" on an array, turns a scalar on the way into an
object (name token) or an array (index token) and an array met by a name token
into an empty object.

Each walk takes an optional @ref MemberIndex of the document that @p root is
the root of; its lookups and member edits then go through it.
*/
class JsonPointer {
    public:
        /** Index of a token that is not an array index */
        static constexpr std::uint32_t InvalidIndex = ~std::uint32_t{};

        struct Token {
            Containers::StringView name;
            std::uint32_t index;
        };

        /** An invalid pointer, to be assigned a parsed one */
        JsonPointer() = default;

        /** Parses @p path. The empty text is the root. */
        explicit JsonPointer(Containers::StringView path);

        JsonPointer(const JsonPointer&) = delete;
        JsonPointer& operator=(const JsonPointer&) = delete;
        JsonPointer(JsonPointer&& other) noexcept;
        JsonPointer& operator=(JsonPointer&& other) noexcept;

        /** Whether the path parsed */
        bool isValid() const { return _valid; }

        /** Byte offset of the parse error, if any */
        std::size_t errorOffset() const { return _errorOffset; }

        std::size_t tokenCount() const { return _tokens.size(); }
        const Token& token(std::size_t i) const { return _tokens[i]; }

        /** The value at the pointer, or @cpp nullptr @ce. Expects a valid pointer. */
        rapidjson::Value* get(rapidjson::Value& root, MemberIndex* index = nullptr) const;
        const rapidjson::Value* get(const rapidjson::Value& root, MemberIndex* index = nullptr) const;

        /**
         * @brief The value at the pointer, made where missing
         *
         * Missing values are made as JSON null. @p alreadyExists, if not null,
         * tells whether nothing had to be made. Expects a valid pointer.
         */
        rapidjson::Value& create(rapidjson::Value& root, JsonAllocator& allocator, bool* alreadyExists = nullptr, MemberIndex* index = nullptr) const;

        /**
         * @brief Makes what is missing below @p value along tokens @p first to @p end
         *
         * As @ref create() does it for the part of the pointer below the
         * @p value that the first @p first tokens lead to.
         */
        rapidjson::Value& createBelow(rapidjson::Value& value, std::size_t first, std::size_t end, JsonAllocator& allocator, MemberIndex* index = nullptr) const;

        /**
         * @brief Removes the value at the pointer
         *
         * An object member is erased keeping the order of the others, an array
         * element moves the later ones down. Returns false when the pointer
         * does not resolve or is the root. Expects a valid pointer.
         */
        bool erase(rapidjson::Value& root, MemberIndex* index = nullptr) const;

    private:
        /* The value at the first @p tokenCount tokens, or null */
        rapidjson::Value* resolve(rapidjson::Value& root, std::size_t tokenCount, MemberIndex* index) const;

        std::string _names;
        std::vector<Token> _tokens;
        std::size_t _errorOffset{};
        bool _valid{};
};

}

#endif
