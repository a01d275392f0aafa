/* Reading the change history: undo steps, the unsaved changes, the listing. */
#include "History.h"

#include <iostream>
#include <sstream>
#include <unordered_set>
#include <Corrade/Utility/Debug.h>

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/JsonWriter.h"
#include "Session.h"

namespace quelmar {

using QuelmarEngine::ChangeManager;

namespace {

/* The manager undoes records of one group together; ungrouped records carry
   -1 and go alone */
bool sameStep(const ChangeManager& manager, const std::size_t a, const std::size_t b) {
    const int group = manager.change(a).group;
    return group > 0 && group == manager.change(b).group;
}

std::size_t stepsIn(const ChangeManager& manager, const std::size_t begin, const std::size_t end) {
    std::size_t steps = 0;
    for(std::size_t i = begin; i < end; ++i)
        if(i == begin || !sameStep(manager, i - 1, i)) ++steps;
    return steps;
}

std::string pathOf(const QuelmarEngine::Change& change) {
    /* The stored path ends with a zero byte, which its size counts */
    return change.path.isEmpty() ? std::string{} : std::string{change.path.data()};
}

}

std::size_t undoSteps(const ChangeManager& manager) {
    return stepsIn(manager, 0, std::size_t(manager.lastChangeIndex() + 1));
}

std::size_t redoSteps(const ChangeManager& manager) {
    return stepsIn(manager, std::size_t(manager.lastChangeIndex() + 1), manager.changeCount());
}

std::size_t recordsInStep(const ChangeManager& manager, const bool redo) {
    const int position = manager.lastChangeIndex();
    std::size_t count = 0;
    if(redo) {
        for(std::size_t i = std::size_t(position + 1); i < manager.changeCount(); ++i, ++count)
            if(count && !sameStep(manager, i - 1, i)) break;
    } else {
        for(int i = position; i >= 0; --i, ++count)
            if(count && !sameStep(manager, std::size_t(i), std::size_t(i + 1))) break;
    }
    return count;
}

std::string unsavedChangesText(const Session& session) {
    const ChangeManager& manager = *session.editor.changeManager;
    int first, last;
    session.unsavedRecords(first, last);
    std::vector<std::string> paths;
    std::unordered_set<std::string> seen;
    for(int i = first; i <= last; ++i) {
        std::string path = pathOf(manager.change(std::size_t(i)));
        if(seen.insert(path).second) paths.push_back(std::move(path));
    }
    if(paths.empty()) return "there are unsaved changes";

    constexpr std::size_t Named = 4;
    std::string text = "there are unsaved changes to ";
    for(std::size_t i = 0; i != paths.size() && i != Named; ++i)
        text += (i ? ", " : "") + paths[i];
    if(paths.size() > Named) text += " and " + std::to_string(paths.size() - Named) + " more paths";
    return text;
}

void printHistory(const Session& session) {
    const ChangeManager& manager = *session.editor.changeManager;
    const std::size_t count = manager.changeCount();
    const int position = manager.lastChangeIndex();
    const int saved = session.savedPosition();

    const std::size_t steps = undoSteps(manager) + redoSteps(manager);
    std::cout << count << (count == 1 ? " change in " : " changes in ") << steps << (steps == 1 ? " step: " : " steps: ")
              << undoSteps(manager) << " to undo, " << redoSteps(manager) << " to redo";
    if(saved == NoSavedPosition) std::cout << "; the saved state is no longer in the history";
    std::cout << std::endl;

    const auto marker = [&](const int after) {
        std::string text;
        if(after == position) text = "now";
        if(after == saved) text += text.empty() ? "saved" : ", saved";
        if(!text.empty()) std::cout << "      --- " << text << " ---" << std::endl;
    };
    marker(-1);
    for(std::size_t i = 0; i != count; ++i) {
        const QuelmarEngine::Change& change = manager.change(i);
        std::ostringstream text;
        {
            Corrade::Utility::Debug out{&text, Corrade::Utility::Debug::Flag::NoNewlineAtTheEnd};
            out << change;
        }
        const std::string number = std::to_string(i + 1);
        std::cout << std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') << number
                  << " [" << (change.group < 0 ? std::string{"-"} : std::to_string(change.group)) << "] "
                  << text.str() << (int(i) > position ? " (undone)" : "") << std::endl;
        marker(int(i));
    }
}

}
