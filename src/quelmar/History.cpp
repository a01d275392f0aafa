/* Showing the history: its steps or its changes, the steps that an undo or
   redo went through, and the unsaved ones. */
#include "History.h"

#include <iostream>
#include <vector>

#include "JsonOutput.h"
#include "Program.h"

namespace quelmar {

using QuelmarEngine::EditHistory;
using QuelmarEngine::EditStep;

namespace {

/* Labels that one line names before it says how many more */
constexpr std::size_t NamedSteps = 4;

std::string countText(const std::size_t count, const char* const what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/* Labels of @p steps, at most NamedSteps of them, those past the position marked as undone */
std::string labelList(const Program& program, const std::vector<std::size_t>& steps) {
    const auto all = program.session.history().steps();
    std::string text;
    for(std::size_t i = 0; i != steps.size() && i != NamedSteps; ++i)
        text += (i ? ", " : "") + all[steps[i]].label + (steps[i] >= program.session.undoCount() ? " (undone)" : "");
    if(steps.size() > NamedSteps) text += " and " + std::to_string(steps.size() - NamedSteps) + " more";
    return text;
}

}

std::string unsavedChangesText(const Program& program) {
    const std::pair<std::size_t, std::size_t> unsaved = program.session.history().unsavedSteps();
    /* Nothing between them when the saved state was dropped from the history
       right where the current one parted from it */
    if(unsaved.first == unsaved.second) return "there are unsaved changes";
    std::vector<std::size_t> steps;
    for(std::size_t s = unsaved.first; s != unsaved.second; ++s) steps.push_back(s);
    return "there are unsaved changes (" + countText(steps.size(), "step") + ": " + labelList(program, steps) + ")";
}

void printHistory(const Program& program, const bool changes) {
    const EditSession& session = program.session;
    const EditHistory& history = session.history();
    const auto steps = history.steps();
    const std::size_t count = session.recordCount();
    const std::size_t saved = history.savedPosition();

    std::cout << countText(count, "change") << " in " << countText(steps.size(), "step") << ": "
              << session.undoCount() << " to undo, " << session.redoCount() << " to redo";
    if(saved == EditHistory::NotInHistory) std::cout << "; the saved state is no longer in the history";
    std::cout << '\n';

    /* Markers after the steps that the position and the saved state count */
    const auto marker = [&](const std::size_t applied) {
        std::string text;
        if(applied == session.undoCount()) text = "now";
        if(applied == saved) text += text.empty() ? "saved" : ", saved";
        if(!text.empty()) std::cout << "      --- " << text << " ---\n";
    };
    const auto number = [](const std::size_t n) {
        const std::string text = std::to_string(n);
        return std::string(text.size() < 4 ? 4 - text.size() : 0, ' ') + text;
    };
    marker(0);
    for(std::size_t s = 0; s != steps.size(); ++s) {
        const EditStep& step = steps[s];
        const char* const undone = s >= session.undoCount() ? " (undone)" : "";
        if(!changes) std::cout << number(step.serial) << ' ' << step.label << " (" << countText(step.recordCount, "change") << ")" << undone << '\n';
        else for(std::size_t i = step.firstRecord; i != step.firstRecord + step.recordCount; ++i)
            std::cout << number(i + 1) << " [" << step.serial << "] " << session.recordText(i) << undone << '\n';
        marker(s + 1);
    }
    std::cout.flush();
}

void printHistoryJson(const Program& program, const bool changes) {
    const EditSession& session = program.session;
    const auto steps = session.history().steps();
    const std::size_t saved = session.history().savedPosition();

    JsonOutput output;
    rapidjson::Value list{rapidjson::kArrayType};
    for(std::size_t s = 0; s != steps.size(); ++s) {
        const EditStep& step = steps[s];
        const bool undone = s >= session.undoCount();
        if(!changes) {
            rapidjson::Value object = JsonOutput::object();
            output.add(object, "number", rapidjson::Value{std::uint64_t(step.serial)})
                  .add(object, "label", output.string(step.label))
                  .add(object, "changes", rapidjson::Value{std::uint64_t(step.recordCount)})
                  .add(object, "undone", rapidjson::Value{undone});
            list.PushBack(object, output.allocator());
        } else for(std::size_t i = step.firstRecord; i != step.firstRecord + step.recordCount; ++i) {
            rapidjson::Value object = JsonOutput::object();
            output.add(object, "number", rapidjson::Value{std::uint64_t(i + 1)})
                  .add(object, "step", rapidjson::Value{std::uint64_t(step.serial)})
                  .add(object, "path", output.string(session.recordPath(i)))
                  .add(object, "text", output.string(session.recordText(i)))
                  .add(object, "undone", rapidjson::Value{undone});
            list.PushBack(object, output.allocator());
        }
    }
    output.set(changes ? "changes" : "steps", std::move(list))
          .set("undo", session.undoCount()).set("redo", session.redoCount())
          .set("saved", saved == EditHistory::NotInHistory ? rapidjson::Value{} : rapidjson::Value{std::uint64_t(saved)})
          .print();
}

void printTravel(const Program& program, const std::size_t count, const bool redo, const bool json) {
    const EditSession& session = program.session;
    const auto all = session.history().steps();
    /* The steps gone through lie right after the position after an undo,
       newest first, and right before it after a redo, oldest first */
    std::vector<std::size_t> steps;
    std::size_t changes = 0;
    for(std::size_t i = 0; i != count; ++i) {
        steps.push_back(redo ? session.undoCount() - count + i : session.undoCount() + count - 1 - i);
        changes += all[steps.back()].recordCount;
    }

    if(json) {
        JsonOutput output;
        rapidjson::Value list{rapidjson::kArrayType};
        for(const std::size_t s: steps) {
            rapidjson::Value object = JsonOutput::object();
            output.add(object, "number", rapidjson::Value{std::uint64_t(all[s].serial)})
                  .add(object, "label", output.string(all[s].label))
                  .add(object, "changes", rapidjson::Value{std::uint64_t(all[s].recordCount)});
            list.PushBack(object, output.allocator());
        }
        output.set("steps", std::move(list)).set("changes", changes).print();
        return;
    }
    /* Undone steps are named without their "(undone)" mark, which every one
       of them would carry */
    std::string labels;
    for(std::size_t i = 0; i != steps.size() && i != NamedSteps; ++i) labels += (i ? ", " : "") + all[steps[i]].label;
    if(steps.size() > NamedSteps) labels += " and " + std::to_string(steps.size() - NamedSteps) + " more";
    std::cout << (redo ? "redid " : "undid ") << countText(count, "step") << " (" << countText(changes, "change") << "): " << labels << std::endl;
}

}
