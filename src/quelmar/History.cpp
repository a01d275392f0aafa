/* Showing the history: the listing of every change, and the unsaved ones. */
#include "History.h"

#include <iostream>
#include <unordered_set>
#include <vector>

#include "Program.h"

namespace quelmar {

using QuelmarEngine::EditHistory;
using QuelmarEngine::EditStep;

std::string unsavedChangesText(const Program& program) {
    const EditSession& session = program.session;
    const auto steps = session.history().steps();
    const std::pair<std::size_t, std::size_t> unsaved = session.history().unsavedSteps();
    std::vector<std::string> paths;
    std::unordered_set<std::string> seen;
    for(std::size_t s = unsaved.first; s != unsaved.second; ++s)
        for(std::size_t i = steps[s].firstRecord; i != steps[s].firstRecord + steps[s].recordCount; ++i) {
            std::string path = session.recordPath(i);
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

void printHistory(const Program& program) {
    const EditSession& session = program.session;
    const EditHistory& history = session.history();
    const auto steps = history.steps();
    const std::size_t count = session.recordCount();
    const std::size_t saved = history.savedPosition();

    std::cout << count << (count == 1 ? " change in " : " changes in ") << steps.size() << (steps.size() == 1 ? " step: " : " steps: ")
              << session.undoCount() << " to undo, " << session.redoCount() << " to redo";
    if(saved == EditHistory::NotInHistory) std::cout << "; the saved state is no longer in the history";
    std::cout << std::endl;

    /* Markers after the steps that the position and the saved state count */
    const auto marker = [&](const std::size_t applied) {
        std::string text;
        if(applied == session.undoCount()) text = "now";
        if(applied == saved) text += text.empty() ? "saved" : ", saved";
        if(!text.empty()) std::cout << "      --- " << text << " ---" << std::endl;
    };
    marker(0);
    for(std::size_t s = 0; s != steps.size(); ++s) {
        const EditStep& step = steps[s];
        for(std::size_t i = step.firstRecord; i != step.firstRecord + step.recordCount; ++i) {
            const std::string number = std::to_string(i + 1);
            std::cout << std::string(number.size() < 4 ? 4 - number.size() : 0, ' ') << number
                      << " [" << step.serial << "] " << session.recordText(i)
                      << (s >= session.undoCount() ? " (undone)" : "") << std::endl;
        }
        marker(s + 1);
    }
}

}
