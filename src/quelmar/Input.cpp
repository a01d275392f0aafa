/* Splitting what the user types into commands and words. */
#include "Input.h"

namespace quelmar {

namespace {

bool isBlank(const char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}

bool splitWords(const std::string& line, std::vector<Word>& words, std::string& error) {
    words.clear();
    std::size_t i = 0;
    const std::size_t size = line.size();
    for(;;) {
        while(i < size && isBlank(line[i])) ++i;
        if(i == size) return true;

        Word word{{}, 0, false};
        while(i < size && !isBlank(line[i])) {
            const char c = line[i];
            if(c == '"') {
                word.quoted = true;
                const std::size_t start = i++;
                /* JSON escapes other than these two stay as they are, so
                   that a quoted JSON string keeps its meaning when it is
                   passed on whole */
                while(i < size && line[i] != '"') {
                    if(line[i] == '\\' && i + 1 < size && (line[i + 1] == '"' || line[i + 1] == '\\')) ++i;
                    word.text += line[i++];
                }
                if(i == size) {
                    error = "unterminated double quote at column " + std::to_string(start + 1);
                    return false;
                }
                ++i;
            } else if(c == '\'') {
                word.quoted = true;
                const std::size_t start = i++;
                while(i < size && line[i] != '\'') word.text += line[i++];
                if(i == size) {
                    error = "unterminated single quote at column " + std::to_string(start + 1);
                    return false;
                }
                ++i;
            } else word.text += line[i++];
        }
        word.end = i;
        words.push_back(std::move(word));
    }
}

std::vector<std::string> splitCommands(const std::string& text) {
    std::vector<std::string> commands(1);
    char quote = 0;
    for(std::size_t i = 0; i != text.size(); ++i) {
        const char c = text[i];
        if(quote) {
            if(c == '\\' && quote == '"' && i + 1 < text.size()) {
                commands.back() += c;
                commands.back() += text[++i];
                continue;
            }
            if(c == quote) quote = 0;
        } else if(c == '"' || c == '\'') quote = c;
        else if(c == ';') {
            commands.emplace_back();
            continue;
        }
        commands.back() += c;
    }
    return commands;
}

bool isBlankOrComment(const std::string& line) {
    for(const char c: line) {
        if(c == '#') return true;
        if(!isBlank(c)) return false;
    }
    return true;
}

std::string trimmed(const std::string& text) {
    std::size_t begin = 0, end = text.size();
    while(begin < end && isBlank(text[begin])) ++begin;
    while(end > begin && isBlank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

}
