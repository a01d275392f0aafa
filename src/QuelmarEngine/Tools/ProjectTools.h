#ifndef QuelmarEngine_Tools_ProjectTools_h
#define QuelmarEngine_Tools_ProjectTools_h
/* The editing commands: objects and resources, reparenting, selection,
   copy, paste and duplicate. Each takes the editor context first and writes
   only by pushing changes to its change manager. */

#include <initializer_list>
#include <string>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/QuelmarEngine.h"
#include "QuelmarEngine/host/BitSetView.h"
#include "QuelmarEngine/host/StringArray.h"

namespace QuelmarEngine {

/** @{ @name Objects and resources */

/** Whether @p objectId or one of its ancestors is flagged deleted; false for a key that names no object */
bool isObjectDeleted(EditorData& data, const char* objectId);

/**
@brief Adds an object named @p name under @p parent

The name is made unique with a ".000", ".001" ... suffix when taken. An
empty @p parent means the root. Returns the new object's key.
*/
Containers::String addObject(QuelmarEditor& editor, const Containers::String& name, const Containers::String& parent);

/** Flags @p objectId deleted; everything below it counts as deleted too */
void deleteObject(QuelmarEditor& editor, const char* objectId);

/** Copies record @p id of the resource map @p type under a new key, which it returns */
Containers::String duplicateResource(QuelmarEditor& editor, const char* type, const char* id);

/** Removes record @p id of the resource map @p type */
void deleteResource(QuelmarEditor& editor, const char* type, const char* id);

/** Flags every selected object and everything below it deleted, as one group */
void deleteSelectedObjects(QuelmarEditor& editor);

/** Makes @p parent the parent of @p objectId; a null @p parent is the root */
void reparentObject(QuelmarEditor& editor, const char* objectId, const char* parent);

/** @} */

/** @{ @name Reparenting that keeps the world placement */

/** Moves @p object under @p newParent (null: the root) and rewrites its local transformation so that it stays where it was */
void reparentObjectKeepTransform(QuelmarEditor& editor, const char* object, const char* newParent);

/** Moves every object of @p objectBits whose ancestors are not in it under @p newParent, keeping world placements, as one group */
void reparentObjectsKeepTransform(QuelmarEditor& editor, const BitSetView& objectBits, const char* newParent);

/** @} */

/** @{ @name Selection */

/** Makes exactly the objects with these keys selected */
void selectObjects(QuelmarEditor& editor, std::initializer_list<const char*> keys);
void selectObjects(QuelmarEditor& editor, StringArrayView& keys);

/** Keys of the selected objects in tree order */
StringArray selectedObjectKeys(QuelmarEditor& editor);

/** Keys of the selected objects and everything below them in tree order, each once */
StringArray selectedObjectKeysWithTrees(QuelmarEditor& editor);

/** @} */

/** @{ @name Clipboard */

/** The map @p name of the document restricted to @p keys, one member per line */
std::string toString(QuelmarEditor& editor, const char* name, const StringArrayView& keys);

/** Clipboard text of the selected objects and the skins they use */
std::string copySelected(QuelmarEditor& editor);

/** Clipboard text of the selected objects with everything below them, and the skins they use */
std::string copySelectedTrees(QuelmarEditor& editor);

/**
@brief Adds the objects and skins of a clipboard text under fresh keys

References between pasted records are rewired to the new keys; pasted
objects whose parent was not pasted go under @p parent (null: the root). One
change group. Returns the new object keys in the order of the text; text that
can't be read is reported and adds nothing.
*/
StringArray addFromString(QuelmarEditor& editor, const char* parent, const std::string& text);

/** Pastes @p text beside the first selected object and selects what was pasted */
void paste(QuelmarEditor& editor, const std::string& text);

/** Pastes @p text under the first selected object and selects what was pasted */
void pasteChild(QuelmarEditor& editor, const std::string& text);

/** Duplicates the selected objects beside the first one and selects the copies */
void duplicate(QuelmarEditor& editor);

/** Duplicates the selected trees beside the first selected object, selects the copies and returns their keys */
StringArray duplicateTrees(QuelmarEditor& editor);

/** @} */

}

#endif
