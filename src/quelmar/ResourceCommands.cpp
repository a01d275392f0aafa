/* duplicate-resource and delete-resource: records of any resource map. */
#include <iostream>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/Tools/ProjectTools.h"
#include "Command.h"
#include "Objects.h"
#include "OneStep.h"
#include "Session.h"

namespace quelmar {

bool runDuplicateResource(Session& session, const Arguments& arguments) {
    const std::string& type = arguments.positional[0];
    const std::string& key = arguments.positional[1];
    if(!findRecord(session, type, key)) return false;
    if(type == "objects" && !checkRoomForObjects(session, 1)) return false;

    Corrade::Containers::String newKey;
    inOneStep(session.editor, [&]{
        newKey = QuelmarEngine::duplicateResource(session.editor, type.data(), key.data());
    });
    std::cout << newKey.data() << std::endl;
    return true;
}

bool runDeleteResource(Session& session, const Arguments& arguments) {
    const std::string& type = arguments.positional[0];
    const std::string& key = arguments.positional[1];
    if(!findRecord(session, type, key)) return false;
    inOneStep(session.editor, [&]{
        QuelmarEngine::deleteResource(session.editor, type.data(), key.data());
    });
    return true;
}

}
