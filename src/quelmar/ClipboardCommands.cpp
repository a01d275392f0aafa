/* copy, paste and duplicate: the session's clipboard and clipboard files. */
#include <iostream>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "Command.h"
#include "Files.h"
#include "Objects.h"
#include "Session.h"

namespace quelmar {

namespace {

/* Number of records in the map @p name of a parsed clipboard text */
std::size_t recordCount(const rapidjson::Value& clipboard, const char* const name) {
    const rapidjson::Value* const map = QuelmarEngine::findMember(clipboard, name);
    return map && map->IsObject() ? map->MemberCount() : 0;
}

std::string countText(const std::size_t count, const char* const what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/* The keys of what a paste or duplicate added, which it left selected */
void printAdded(Session& session, const char* const verb) {
    const QuelmarEngine::StringArray keys = QuelmarEngine::selectedObjectKeys(session.editor);
    constexpr std::size_t Listed = 8;
    std::cout << verb << ' ' << countText(keys.size(), "object");
    for(std::size_t i = 0; i != keys.size() && i != Listed; ++i)
        std::cout << (i ? " " : ": ") << keys.get(i);
    if(keys.size() > Listed) std::cout << " and " << keys.size() - Listed << " more";
    std::cout << std::endl;
}

/* The library reports text it can't read and then still clears the
   selection, so unreadable text is refused before it gets there */
bool checkClipboard(Session& session, const std::string& text, const std::string& source, rapidjson::Document& parsed) {
    if(text.find('\0') != std::string::npos)
        return session.fail(source + " holds a NUL byte");
    QuelmarEngine::JsonParseError error;
    if(!QuelmarEngine::parseJson(parsed, {text.data(), text.size()}, error))
        return session.fail(source + " is not valid JSON: byte " + std::to_string(error.offset) + ": " + std::string{error.reason.data(), error.reason.size()});
    if(!parsed.IsObject())
        return session.fail(source + " is not a JSON object");
    return checkRoomForObjects(session, recordCount(parsed, "objects"));
}

}

bool runCopy(Session& session, const Arguments& arguments) {
    QuelmarEditor& editor = session.editor;
    if(QuelmarEngine::selectedObjectKeys(editor).isEmpty()) return session.fail("nothing is selected");
    const std::string text = arguments.has("--trees") ? QuelmarEngine::copySelectedTrees(editor) : QuelmarEngine::copySelected(editor);

    if(arguments.positional.size() == 1) {
        std::string error;
        if(!writeFile(arguments.positional[0], text, error)) return session.fail(error);
    }
    session.clipboard = text;

    rapidjson::Document parsed;
    QuelmarEngine::JsonParseError error;
    QuelmarEngine::parseJson(parsed, {text.data(), text.size()}, error);
    std::cout << "copied " << countText(recordCount(parsed, "objects"), "object");
    if(const std::size_t skins = recordCount(parsed, "skins")) std::cout << " and " << countText(skins, "skin");
    std::cout << std::endl;
    return true;
}

bool runPaste(Session& session, const Arguments& arguments) {
    QuelmarEditor& editor = session.editor;
    std::string text, source;
    if(arguments.positional.size() == 1) {
        source = arguments.positional[0];
        std::string error;
        if(!readFile(source, text, error)) return session.fail(error);
    } else {
        if(session.clipboard.empty()) return session.fail("the clipboard is empty; copy something first");
        text = session.clipboard;
        source = "the clipboard";
    }
    rapidjson::Document parsed;
    if(!checkClipboard(session, text, source, parsed)) return false;

    /* Both make their own group */
    if(arguments.has("--child")) {
        if(QuelmarEngine::selectedObjectKeys(editor).isEmpty())
            return session.fail("nothing is selected to paste under");
        QuelmarEngine::pasteChild(editor, text);
    } else QuelmarEngine::paste(editor, text);
    printAdded(session, "pasted");
    return true;
}

bool runDuplicate(Session& session, const Arguments& arguments) {
    QuelmarEditor& editor = session.editor;
    const bool trees = arguments.has("--trees");
    const std::size_t count = trees ? QuelmarEngine::selectedObjectKeysWithTrees(editor).size() : QuelmarEngine::selectedObjectKeys(editor).size();
    if(!count) return session.fail("nothing is selected");
    if(!checkRoomForObjects(session, count)) return false;

    /* Both make their own group */
    if(trees) QuelmarEngine::duplicateTrees(editor);
    else QuelmarEngine::duplicate(editor);
    printAdded(session, "duplicated");
    return true;
}

}
