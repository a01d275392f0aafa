/* Finding objects and records by the keys the user names. */
#ifndef quelmar_Objects_h
#define quelmar_Objects_h

#include <string>
#include <vector>
#include <rapidjson/document.h>

namespace quelmar {

class Session;

/**
@brief Finds the live object @p key

Live means shown in the tree: a record of "objects" that neither it nor an
ancestor flags deleted. Prints why not and returns false otherwise.
*/
bool findLiveObject(Session& session, const std::string& key, unsigned short& index);

/** The record of the map @p type with key @p key, or null having printed why */
const rapidjson::Value* findRecord(Session& session, const std::string& type, const std::string& key);

/** The record of every object index, null where an index has none */
std::vector<const rapidjson::Value*> recordsByIndex(Session& session);

/** A record's name as listings show it: a JSON string, or "(no name)" */
std::string displayName(const rapidjson::Value* record);

/** Whether the project can take @p count more objects; prints why not */
bool checkRoomForObjects(Session& session, std::size_t count);

/** Whether @p key can stand in a change path and a clipboard text as it is */
bool isUsableKey(const std::string& key);

}

#endif
