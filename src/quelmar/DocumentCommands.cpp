/* get, set and remove: any value of the document, through the history. */
#include <iostream>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"
#include "Command.h"
#include "DocumentCheck.h"
#include "OneStep.h"
#include "Session.h"

namespace quelmar {

using QuelmarEngine::JsonPointer;

bool runGet(Session& session, const Arguments& arguments) {
    const std::string& text = arguments.positional[0];
    const JsonPointer pointer{{text.data(), text.size()}};
    if(!checkPointer(session, pointer, text)) return false;
    const rapidjson::Value* const value = pointer.get(*session.editor.data.project.document);
    if(!value) return session.fail("there is no value at " + text);
    std::cout << QuelmarEngine::writeJson(*value, QuelmarEngine::JsonLayout::Indented) << std::endl;
    return true;
}

bool runSet(Session& session, const Arguments& arguments) {
    const std::string& text = arguments.positional[0];
    const JsonPointer pointer{{text.data(), text.size()}};
    if(!checkPointer(session, pointer, text) || !checkSetTarget(session, pointer, text)) return false;

    /* The document as a whole stays within the nesting a load accepts */
    rapidjson::Document value;
    QuelmarEngine::JsonParseError error;
    const std::string& json = arguments.raw;
    if(!QuelmarEngine::parseJson(value, {json.data(), json.size()}, error, unsigned(QuelmarEngine::JsonMaxDepth - pointer.tokenCount())))
        return session.fail("invalid JSON at byte " + std::to_string(error.offset) + ": " + std::string{error.reason.data(), error.reason.size()});
    if(!checkSetValue(session, pointer, value)) return false;

    inOneStep(session.editor, [&]{
        session.editor.changeManager->pushChange(text.data(), value, false);
    });
    return true;
}

bool runRemove(Session& session, const Arguments& arguments) {
    const std::string& text = arguments.positional[0];
    const JsonPointer pointer{{text.data(), text.size()}};
    if(!checkPointer(session, pointer, text) || !checkRemoveTarget(session, pointer, text)) return false;
    inOneStep(session.editor, [&]{
        session.editor.changeManager->pushRemoval(text.data());
    });
    return true;
}

}
