#ifndef QuelmarEngine_JsonPointer_h
#define QuelmarEngine_JsonPointer_h
/* JSON Pointer paths into the project document. Every member lookup that the
   library and the host make goes through findMember() here, which answers
   from a name index in objects of many members, so that a lookup in a
   resource map of tens of thousands of records doesn't scan it. */

#include <cstdint>
#include <string>
#include <vector>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** The member of @p object named @p name, or @cpp nullptr @ce. Expects an object. */
rapidjson::Value* findMember(rapidjson::Value& object, Containers::StringView name);
const rapidjson::Value* findMember(const rapidjson::Value& object, Containers::StringView name);

/**
@brief Lets lookups in the top-level maps of @p document use name indices

Lookups in a map of many members then answer from an index that changes made
through @ref JsonPointer keep valid, instead of scanning the map. Call
@ref forgetMemberIndices() before the document is destroyed or replaced.
*/
void indexMembersOf(const rapidjson::Value& document);

/** Stops indexing the maps of @p document and drops every index */
void forgetMemberIndices(const rapidjson::Value& document);

/** Position of the member of @p object named @p name, or its member count. Expects an object. */
rapidjson::SizeType memberPosition(const rapidjson::Value& object, Containers::StringView name);

/** Adds a member last; @p name has to be a string */
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
        rapidjson::Value* get(rapidjson::Value& root) const;
        const rapidjson::Value* get(const rapidjson::Value& root) const;

        /**
         * @brief The value at the pointer, made where missing
         *
         * Missing values are made as JSON null. @p alreadyExists, if not null,
         * tells whether nothing had to be made. Expects a valid pointer.
         */
        rapidjson::Value& create(rapidjson::Value& root, JsonAllocator& allocator, bool* alreadyExists = nullptr) const;

        /**
         * @brief Makes what is missing below @p value along tokens @p first to @p end
         *
         * As @ref create() does it for the part of the pointer below the
         * @p value that the first @p first tokens lead to.
         */
        rapidjson::Value& createBelow(rapidjson::Value& value, std::size_t first, std::size_t end, JsonAllocator& allocator) const;

        /**
         * @brief Removes the value at the pointer
         *
         * An object member is erased keeping the order of the others, an array
         * element moves the later ones down. Returns false when the pointer
         * does not resolve or is the root. Expects a valid pointer.
         */
        bool erase(rapidjson::Value& root) const;

    private:
        /* The value at the first @p tokenCount tokens, or null */
        rapidjson::Value* resolve(rapidjson::Value& root, std::size_t tokenCount) const;

        std::string _names;
        std::vector<Token> _tokens;
        std::size_t _errorOffset{};
        bool _valid{};
};

}

#endif
