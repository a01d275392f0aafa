/* What one run of the program works on: the editor, the file, the clipboard
   and where the file's saved state lies in the history. */
#include "Session.h"

#include <algorithm>
#include <iostream>

namespace quelmar {

bool Session::open(const std::string& path) {
    if(!editor.loadFromFile({path.data(), path.size()})) return false;
    file = path;
    markSaved();
    return true;
}

bool Session::fail(const std::string& message) const {
    std::cerr << "error: " << location << message << std::endl;
    return false;
}

void Session::markSaved() {
    editor.changeManager->markSave();
    _savedPosition = editor.changeManager->lastChangeIndex();
    _sharedRecords = _savedPosition + 1;
    _savedReachable = true;
}

void Session::notePushesFrom(const int historyPositionBefore) {
    if(editor.changeManager->lastChangeIndex() == historyPositionBefore) return;
    /* Every record after the old position was replaced */
    _sharedRecords = std::min(_sharedRecords, historyPositionBefore + 1);
    if(_savedPosition > historyPositionBefore) _savedReachable = false;
}

bool Session::hasUnsavedChanges() const {
    return !_savedReachable || editor.changeManager->lastChangeIndex() != _savedPosition;
}

void Session::unsavedRecords(int& first, int& last) const {
    const int position = editor.changeManager->lastChangeIndex();
    const int count = int(editor.changeManager->changeCount());
    /* Applied records past the shared ones, or undone ones up to the save */
    const int saved = _savedReachable ? _savedPosition : _sharedRecords - 1;
    first = std::min(position, saved) + 1;
    last = std::min(std::max(position, saved), count - 1);
}

}
