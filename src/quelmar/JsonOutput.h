/* What --json prints: one JSON document per command, on one line of the
   standard output. */
#ifndef quelmar_JsonOutput_h
#define quelmar_JsonOutput_h

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>
#include <rapidjson/document.h>

namespace quelmar {

/** A JSON object being filled, printed compact on one line */
class JsonOutput {
    public:
        JsonOutput();

        /** Sets member @p name of the document's root to @p value */
        JsonOutput& set(const char* name, rapidjson::Value&& value);
        JsonOutput& set(const char* name, const std::string& value) { return set(name, string(value)); }
        JsonOutput& set(const char* name, std::size_t value) { return set(name, rapidjson::Value{std::uint64_t(value)}); }
        JsonOutput& set(const char* name, bool value) { return set(name, rapidjson::Value{value}); }

        /** A string value, copied */
        rapidjson::Value string(const std::string& text);

        /** A string value, copied, or null when @p text is */
        rapidjson::Value stringOrNull(const std::string* text);

        /** An array of strings, copied */
        rapidjson::Value strings(const std::vector<std::string>& texts);

        /** An empty object to fill with @ref add() */
        static rapidjson::Value object() { return rapidjson::Value{rapidjson::kObjectType}; }

        /** Sets member @p name of @p object to @p value */
        JsonOutput& add(rapidjson::Value& object, const char* name, rapidjson::Value&& value);

        rapidjson::Document::AllocatorType& allocator() { return _document.GetAllocator(); }

        /** Prints the document and a line feed */
        void print() const;

    private:
        rapidjson::Document _document;
};

}

#endif
