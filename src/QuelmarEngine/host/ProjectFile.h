#ifndef QuelmarEngine_host_ProjectFile_h
#define QuelmarEngine_host_ProjectFile_h
/* The project file: the project document with its indices, the root
   accessor that the tools start from, loading and atomic saving, and fresh
   keys. */

#include <functional>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/MemberIndex.h"
#include "QuelmarEngine/host/FileStamp.h"
#include "QuelmarEngine/host/HostPointer.h"
#include "QuelmarEngine/host/JsonFileLayout.h"
#include "QuelmarEngine/host/JsonObject.h"
#include "QuelmarEngine/host/KeyGenerator.h"
#include "QuelmarEngine/host/NameIndex.h"

namespace QuelmarEngine {

/**
@brief The project document and what the tools need of it

Also the @ref ValueAccess on the document's root. Not copyable or movable, as
accessors made from it point back to it.

Lookups in the top-level maps of the document (@ref findMember(),
@ref getValue(), the accessors and the change manager) answer from a
@ref MemberIndex owned by the project file, which the change manager and the
accessors' setters keep in step; @ref resourceByName() answers likewise from
a name index. A host may replace @ref document or edit it directly: the
indices notice a replaced document, a map's member array or count that
changed, a member that isn't where it says and a record that lost its name,
and rebuild what they need, so they never read freed memory or answer the
wrong record. What they can't notice is a member renamed in place, a record
given a name, or a replacement document whose maps happen to sit where the
old ones did with as many members: after such an edit, call
@ref documentChanged().
*/
class ProjectFile: public ValueAccess {
    public:
        /**
         * @brief Most records "objects" may hold
         *
         * Object indices are 16-bit, and the scene's positions, the root's
         * included, are counted in 16 bits too.
         */
        static constexpr std::size_t MaxObjects = 65534;

        /** Holds the empty document @cb{.json} {} @ce */
        ProjectFile();
        ~ProjectFile() override;

        ProjectFile(const ProjectFile&) = delete;
        ProjectFile& operator=(const ProjectFile&) = delete;

        /**
         * @brief Replaces the document by one parsed from @p json
         *
         * Refuses text that is not JSON, is nested deeper than @ref MaxDepth,
         * whose root is not an object, whose "objects" or "skins" are not
         * objects, or whose top-level names or record keys hold "/", "~",
         * "\"", "\\" or a control character. A refusal prints one line
         * through @ref Utility::Error and returns false; the document stays
         * as it was.
         */
        bool loadFromString(Containers::StringView json);

        /**
         * @brief As @ref loadFromString(), reading the file at @p path
         *
         * Remembers how the file is laid out, for @ref saveToFile(); a
         * document loaded from a string is saved in the default layout.
         */
        bool loadFromFile(Containers::StringView path);

        /**
         * @brief Writes the document to @p path atomically
         *
         * Lays it out as the file it was loaded from was laid out. Writes a
         * temporary file beside the target, syncs it and renames it over the
         * target. On failure prints one line through @ref Utility::Error,
         * returns false and leaves the target as it was.
         */
        bool saveToFile(Containers::StringView path) const;

        /** The file as last loaded or saved; one that doesn't exist when the document came from a string */
        const FileStamp& fileStamp() const { return _fileStamp; }

        /** The document as compact JSON text */
        Containers::String toJson() const;

        /**
         * @brief A fresh key
         *
         * No resource map holds it and no earlier call returned it. Keys are
         * a per-session prefix and a counter in base 36, so that they sort by
         * creation.
         */
        Containers::String generateId();

        /**
         * @brief Makes @ref generateId() take its keys from @p generator
         *
         * Keys that a record already has are skipped; a thousand of them in
         * a row is a fatal error. An empty generator restores the default.
         */
        void setIdGenerator(std::function<Containers::String()> generator);

        /**
         * @brief A record of the map @p type whose "name" is @p name, or @cpp nullptr @ce
         *
         * One lookup in a name index that @ref valueChanged() keeps up to
         * date, so that looking for a free name doesn't scan the map. Records
         * flagged deleted count too.
         */
        const rapidjson::Value* resourceByName(const Containers::String& type, const Containers::String& name) const;

        /**
         * @brief The value at the JSON Pointer @p path, or @cpp nullptr @ce
         *
         * Hosts with a schema may give defaults for absent values when
         * @p useDefaults is set; this host has none, so the flag changes
         * nothing.
         */
        rapidjson::Value* getValue(const char* path, bool useDefaults) const;

        /** The document's allocator */
        virtual JsonAllocator& allocator();

        /**
         * @brief The member of @p object named @p name, or @cpp nullptr @ce
         *
         * From the member index when @p object is a large top-level map of
         * the document, else by a scan. Expects an object.
         */
        rapidjson::Value* findMember(const rapidjson::Value& object, Containers::StringView name) const;

        /** The member index of the document held now */
        MemberIndex& memberIndex() const;

        /**
         * @brief Tells the indices that the value at @p pointer was set, made or removed
         *
         * The change manager calls it for every change it applies, and the
         * accessors' setters for every write.
         */
        void valueChanged(const JsonPointer& pointer);

        /**
         * @brief Tells the indices that the document was edited directly
         *
         * Needed after a host renamed a member of a top-level map in place,
         * replaced the document by one whose maps may sit at the old ones'
         * addresses, or gave a record a "name" other than through the change
         * manager or the accessors; everything else is noticed.
         */
        void documentChanged();

        /** The document; null only when a host unset it */
        HostPointer<rapidjson::Document> document;

    private:
        mutable MemberIndex _memberIndex;
        mutable NameIndex _names;
        JsonFileLayout _layout;
        /* What the last save wrote is a record of the file, not of the document */
        mutable FileStamp _fileStamp;
        std::function<Containers::String()> _idGenerator;
        KeyGenerator _keys;
};

}

#endif
