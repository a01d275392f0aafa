#ifndef QuelmarEngine_host_RecordReferences_h
#define QuelmarEngine_host_RecordReferences_h
/* The references between the records of a project: an object's parent, its
   skin and its mesh components' skins, a skin's joints. Found so that
   removing records never leaves one naming nothing unannounced. */

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>
#include <Corrade/Containers/StringView.h>
#include <rapidjson/document.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/** What makes a reference */
enum class ReferenceKind: unsigned char {
    Parent,     /**< An object's "parent", naming an object; "" names the root */
    Skin,       /**< An object's "skin", naming a skin */
    MeshSkin,   /**< The "mesh" "skin" of an object's component of type "mesh" */
    Joint       /**< An element of a skin's "joints", naming an object */
};

/** One reference of a record to another */
struct RecordReference {
    ReferenceKind kind;
    /** Key of the record that refers: a skin's for a joint, else an object's */
    std::string from;
    /** Index of the component or of the joint; 0 for the others */
    std::size_t index;
    /** The key it names: an object's for a parent or a joint, else a skin's */
    std::string to;

    /** JSON Pointer of the string that refers, as /skins/s/joints/0 */
    std::string path() const;
};

/** Whether references of @p kind name objects, rather than skins */
bool refersToObject(ReferenceKind kind);

/** Visits a reference: kind, the key of the record that refers, the index, the key named */
typedef std::function<void(ReferenceKind, Containers::StringView, std::size_t, Containers::StringView)> ReferenceVisitor;

/** Visits every reference that object @p key, whose record is @p record, makes */
void forEachObjectReference(Containers::StringView key, const rapidjson::Value& record, const ReferenceVisitor& visit);

/** Visits every reference that skin @p key, whose record is @p record, makes */
void forEachSkinReference(Containers::StringView key, const rapidjson::Value& record, const ReferenceVisitor& visit);

/** Visits every reference of every record of "objects" and "skins" in @p document */
void forEachReference(const rapidjson::Value& document, const ReferenceVisitor& visit);

/**
@brief The references that would be left naming removed records

One pass over the records of @p document: the references that name a key of
@p objects or of @p skins from a record that isn't one of them.
*/
std::vector<RecordReference> referencesInto(const rapidjson::Value& document, const std::unordered_set<std::string>& objects, const std::unordered_set<std::string>& skins);

/**
@brief @p references listed in a line

Each as its path, followed by the key it names when @p withTarget is set;
past the tenth, only how many more there are.
*/
std::string listReferences(const std::vector<RecordReference>& references, bool withTarget);

}

#endif
