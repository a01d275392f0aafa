#ifndef QuelmarEngine_host_JsonObject_h
#define QuelmarEngine_host_JsonObject_h
/* Accessors that designate one value of the project document by its JSON
   Pointer path: JsonObject reads and writes it, ValueAccess navigates further,
   SubValueAccess is what navigation hands out. */

#include <cstddef>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief One value of the project document, which may be absent

The value is found by its path each time it is read, so an accessor stays
valid across changes of the document; it never keeps a pointer into it.
*/
class JsonObject {
    public:
        virtual ~JsonObject();

        /** Whether the value is present */
        bool exists() const;

        /** The boolean; false when absent or not a boolean */
        bool asBool() const;

        /** The string's characters, owned by the document; @cpp nullptr @ce when absent or not a string */
        const char* asString() const;

        /** Number of elements of an array; 0 when absent or not an array */
        std::size_t size() const;

        /** The value itself; a null value when absent */
        const rapidjson::Value& readValue() const;

        /**
         * @brief Sets the value to a copy of a string
         *
         * An absent value is created. The flag is accepted for hosts that
         * record such writes elsewhere; here these writes go straight to the
         * document and never into the change history.
         */
        void setString(const char* value, bool record);
        void setString(const Containers::String& value, bool record);

        /** Sets the value to null, creating it when absent */
        void setNull(bool record);

        /** The value, or @cpp nullptr @ce when absent */
        rapidjson::Value* value() const;

    protected:
        explicit JsonObject(ProjectFile& project);
        JsonObject(ProjectFile& project, Containers::StringView path);
        JsonObject(const JsonObject& other);
        JsonObject& operator=(const JsonObject&) = delete;

        /* Makes the value, creating what is missing, and tells the project
           file's indices */
        void setValue(rapidjson::Value&& value);

        ProjectFile* _project;
        /* The path text followed by a NUL byte */
        Containers::Array<char> _path;
        std::size_t _pathLength;
};

/** A @ref JsonObject that navigates to members and elements */
class ValueAccess: public JsonObject {
    public:
        /** A standalone accessor on the same value */
        ValueAccess(const SubValueAccess& other);
        ValueAccess(const ValueAccess& other);
        ~ValueAccess() override;

        /** Member @p key of the designated object */
        SubValueAccess operator[](const char* key) const;

        /** Element @p index of the designated array */
        SubValueAccess operator[](int index) const;

        /** Member @p key of the designated object */
        SubValueAccess subValue(const char* key) const;

        /** The JSON Pointer path from the document root, followed by a NUL byte */
        Containers::StringView path() const;

    protected:
        friend ProjectFile;
        explicit ValueAccess(ProjectFile& project): JsonObject{project} {}
        ValueAccess(ProjectFile& project, Containers::StringView path): JsonObject{project, path} {}
};

/** What navigation hands out; @cpp -> @ce navigates further */
class SubValueAccess: public ValueAccess {
    public:
        ValueAccess* operator->() { return this; }
        const ValueAccess* operator->() const { return this; }

    private:
        friend ValueAccess;
        SubValueAccess(ProjectFile& project, Containers::StringView path): ValueAccess{project, path} {}
};

}

#endif
