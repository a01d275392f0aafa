/* Line editing at a terminal: the arrow keys, the command history of this
   and earlier sessions, and Tab completion. */
#include "LineEditor.h"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <utility>
#include <vector>
#include <histedit.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Completion.h"
#include "Input.h"
#include "Program.h"
#include "Signals.h"

namespace quelmar {

namespace {

/* Lines kept in the history file; it is cut down to these when it has
   grown to twice as many */
constexpr std::size_t HistoryLines = 1000;

/* More candidates than this are counted, not listed */
constexpr std::size_t ListedCandidates = 100;

bool makeDirectories(const std::string& path) {
    for(std::size_t slash = path.find('/', 1); ; slash = path.find('/', slash + 1)) {
        if(::mkdir(path.substr(0, slash).data(), 0700) != 0 && errno != EEXIST) return false;
        if(slash == std::string::npos) return true;
    }
}

/* Reads a byte at a time as libedit asks, waiting in a way that a signal
   ends: the line being typed then comes back as cancelled or ended */
int readCharacter(EditLine*, wchar_t* const character) {
    std::mbstate_t state{};
    for(;;) {
        if(!waitForInput(0)) {
            errno = EINTR;
            return -1;
        }
        char byte;
        const ssize_t size = ::read(0, &byte, 1);
        if(size < 0 && errno == EINTR) continue;
        if(size <= 0) return int(size);
        const std::size_t decoded = std::mbrtowc(character, &byte, 1, &state);
        if(decoded == std::size_t(-2)) continue;
        /* A byte that isn't part of a character of the locale stands for itself */
        if(decoded == std::size_t(-1)) *character = wchar_t(static_cast<unsigned char>(byte));
        return 1;
    }
}

const char* prompt(EditLine*) {
    return "quelmar> ";
}

}

std::string historyFilePath() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    if(state && state[0] == '/') return state + std::string{"/quelmar/history"};
    const char* const home = std::getenv("HOME");
    if(home && *home) return home + std::string{"/.local/state/quelmar/history"};
    return {};
}

struct LineEditor::State {
    Program& program;
    EditLine* editLine{};
    History* history{};
    std::string historyPath, lastLine;
    bool cancelled{}, historyFailed{};

    void loadHistory();
    void remember(const std::string& line);
    unsigned char completeWord();
    void list(const std::vector<std::string>& candidates);
};

void LineEditor::State::loadHistory() {
    historyPath = historyFilePath();
    if(historyPath.empty()) return;
    std::vector<std::string> lines;
    std::ifstream file{historyPath, std::ios::binary};
    for(std::string line; std::getline(file, line); ) if(!line.empty()) lines.push_back(line);
    HistEvent event;
    for(std::size_t i = lines.size() > HistoryLines ? lines.size() - HistoryLines : 0; i < lines.size(); ++i)
        ::history(history, &event, H_ENTER, lines[i].data());
    if(!lines.empty()) lastLine = lines.back();
    if(lines.size() < 2*HistoryLines) return;
    /* Written beside it and renamed over it, so that no session reads half */
    const std::string temporary = historyPath + "." + std::to_string(::getpid());
    {
        std::ofstream out{temporary, std::ios::binary|std::ios::trunc};
        for(std::size_t i = lines.size() - HistoryLines; i != lines.size(); ++i) out << lines[i] << '\n';
    }
    if(std::rename(temporary.data(), historyPath.data()) != 0) std::remove(temporary.data());
}

void LineEditor::State::remember(const std::string& line) {
    if(isBlankOrComment(line) || line == lastLine) return;
    lastLine = line;
    HistEvent event;
    ::history(history, &event, H_ENTER, line.data());
    if(historyPath.empty() || historyFailed) return;
    /* Appended at once, so that a session that ends abruptly keeps it */
    const std::size_t slash = historyPath.rfind('/');
    std::ofstream file;
    if(makeDirectories(historyPath.substr(0, slash))) file.open(historyPath, std::ios::binary|std::ios::app);
    if(file && file << line << '\n' && file.flush()) return;
    historyFailed = true;
    program.warn("can't add to the command history in " + historyPath + "; it is kept for this session only");
}

void LineEditor::State::list(const std::vector<std::string>& candidates) {
    std::string text = "\n";
    if(candidates.size() > ListedCandidates) text += std::to_string(candidates.size()) + " possibilities; type more of the word\n";
    else for(const std::string& candidate: candidates) text += candidate + "\n";
    std::fputs(text.data(), stdout);
    std::fflush(stdout);
}

unsigned char LineEditor::State::completeWord() {
    const LineInfo* const info = ::el_line(editLine);
    const std::string line{info->buffer, std::size_t(info->cursor - info->buffer)};
    const Completion completion = complete(program, line);
    const std::string typed = line.substr(completion.start);
    const std::vector<std::string>& candidates = completion.candidates;
    if(candidates.empty()) return CC_REFRESH_BEEP;

    std::string common = commonStart(candidates);
    /* A word typed in quotes may complete to the same word unquoted */
    if(common.compare(0, typed.size(), typed) != 0) {
        if(candidates.size() != 1) return CC_REFRESH_BEEP;
        ::el_deletestr(editLine, int(typed.size()));
        common = candidates[0];
        ::el_insertstr(editLine, common.data());
    } else if(common.size() > typed.size()) ::el_insertstr(editLine, common.data() + typed.size());
    else if(candidates.size() != 1) {
        list(candidates);
        return CC_REDISPLAY;
    }
    if(candidates.size() == 1 && common.back() != '/') ::el_insertstr(editLine, " ");
    return CC_REFRESH;
}

LineEditor::LineEditor(State* const state): _state{state} {}

LineEditor::~LineEditor() {
    if(_state->editLine) ::el_end(_state->editLine);
    if(_state->history) ::history_end(_state->history);
}

Corrade::Containers::Pointer<LineEditor> LineEditor::create(Program& program) {
    /* Characters of more than a byte are edited as one */
    std::setlocale(LC_CTYPE, "");
    Corrade::Containers::Pointer<LineEditor> editor{new LineEditor{new State{program, nullptr, nullptr, {}, {}, false, false}}};
    State& state = *editor->_state;
    state.editLine = ::el_init("quelmar", stdin, stdout, stderr);
    state.history = ::history_init();
    if(!state.editLine || !state.history) return nullptr;

    HistEvent event;
    ::history(state.history, &event, H_SETSIZE, int(HistoryLines));
    ::history(state.history, &event, H_SETUNIQUE, 1);
    state.loadHistory();

    EditLine* const editLine = state.editLine;
    ::el_set(editLine, EL_CLIENTDATA, &state);
    ::el_set(editLine, EL_EDITOR, "emacs");
    ::el_set(editLine, EL_PROMPT, prompt);
    ::el_set(editLine, EL_HIST, ::history, state.history);
    ::el_set(editLine, EL_GETCFN, readCharacter);
    /* The wide form keeps these names as they are; the narrow one copies
       them and never frees the copies */
    ::el_wset(editLine, EL_ADDFN, L"quelmar-complete", L"complete the word", +[](EditLine* const editLine, int) -> unsigned char {
        void* state;
        ::el_get(editLine, EL_CLIENTDATA, &state);
        return static_cast<State*>(state)->completeWord();
    });
    ::el_wset(editLine, EL_ADDFN, L"quelmar-cancel", L"cancel the line", +[](EditLine* const editLine, int) -> unsigned char {
        void* state;
        ::el_get(editLine, EL_CLIENTDATA, &state);
        static_cast<State*>(state)->cancelled = true;
        return CC_EOF;
    });
    ::el_set(editLine, EL_BIND, "^I", "quelmar-complete", nullptr);
    ::el_set(editLine, EL_BIND, "^C", "quelmar-cancel", nullptr);
    /* Keys that terminals send and the default bindings leave out */
    for(const auto& binding: {std::pair{"\\e[1;5C", "em-next-word"}, {"\\e[1;5D", "ed-prev-word"}, {"\\e[H", "ed-move-to-beg"},
        {"\\e[F", "ed-move-to-end"}, {"\\e[1~", "ed-move-to-beg"}, {"\\e[4~", "ed-move-to-end"}, {"\\e[3~", "ed-delete-next-char"}})
        ::el_set(editLine, EL_BIND, binding.first, binding.second, nullptr);
    return editor;
}

ReadStatus LineEditor::read(std::string& line) {
    State& state = *_state;
    state.cancelled = false;
    int count;
    const char* const text = ::el_gets(state.editLine, &count);
    if(state.cancelled) return ReadStatus::Cancelled;
    /* A whole line goes first; a signal that came with it waits for its command */
    if(text && count > 0 && text[count - 1] == '\n') {
        line.assign(text, std::size_t(count - 1));
        state.remember(line);
        return ReadStatus::Line;
    }
    return isSignalPending() ? ReadStatus::Signal : ReadStatus::End;
}

}
