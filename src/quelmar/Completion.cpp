/* What Tab offers for the word being typed: command names, options, object
   keys and names, and the JSON Pointer paths of the open document. */
#include "Completion.h"

#include <algorithm>

#include "Command.h"
#include "Input.h"
#include "Program.h"

namespace quelmar {

namespace {

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

/* A word as it has to be typed to come back whole from splitWords() */
std::string typed(const std::string& word) {
    if(!word.empty() && word.find_first_of(" \t\"';#\\") == std::string::npos) return word;
    if(word.find('\'') == std::string::npos) return "'" + word + "'";
    std::string quoted = "\"";
    for(const char c: word) quoted += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
    return quoted + "\"";
}

/* Where the last word starts: after the last blank outside quotes */
std::size_t lastWordStart(const std::string& line) {
    std::size_t start = 0;
    char quote = 0;
    for(std::size_t i = 0; i != line.size(); ++i) {
        const char c = line[i];
        if(quote) {
            if(c == '\\' && quote == '"' && i + 1 != line.size()) ++i;
            else if(c == quote) quote = 0;
        } else if(c == '"' || c == '\'') quote = c;
        else if(c == ' ' || c == '\t') start = i + 1;
    }
    return start;
}

void addCommands(const std::string& prefix, std::vector<std::string>& out) {
    for(const Command& command: commands()) if(startsWith(command.name, prefix)) out.push_back(command.name);
}

void addOptions(const Command& command, const std::string& prefix, std::vector<std::string>& out) {
    for(const char* const flag: command.flags) {
        if(!flag) continue;
        std::string name = flag;
        if(!name.empty() && name.back() == '=') name.pop_back();
        if(startsWith(name, prefix)) out.push_back(name);
    }
}

/* Keys and names of the live objects; a name only when no other object has it */
void addObjects(Program& program, const std::string& prefix, std::vector<std::string>& out) {
    QuelmarEngine::QuelmarEditor& editor = program.session.editor();
    const auto& graph = *editor.scene->sceneGraph;
    const std::size_t count = graph.hierarchy().size();
    std::vector<std::string> names;
    for(std::size_t p = 1; p < count; ++p) {
        const char* const key = graph.objectKeys().get(graph.positionToIndex()[p]);
        if(startsWith(key, prefix)) out.push_back(key);
        const std::string* const name = program.session.objectName(key);
        if(name && startsWith(*name, prefix)) names.push_back(*name);
    }
    std::sort(names.begin(), names.end());
    for(std::size_t i = 0; i != names.size(); ++i) {
        const bool shared = (i && names[i - 1] == names[i]) || (i + 1 != names.size() && names[i + 1] == names[i]);
        if(!shared) out.push_back(names[i]);
    }
}

std::string unescapedToken(const std::string& token) {
    std::string out;
    for(std::size_t i = 0; i != token.size(); ++i) {
        if(token[i] == '~' && i + 1 != token.size() && (token[i + 1] == '0' || token[i + 1] == '1'))
            out += token[++i] == '0' ? '~' : '/';
        else out += token[i];
    }
    return out;
}

std::string escapedToken(const char* const key, const std::size_t size) {
    std::string out;
    for(std::size_t i = 0; i != size; ++i)
        out += key[i] == '~' ? std::string{"~0"} : key[i] == '/' ? std::string{"~1"} : std::string{key[i]};
    return out;
}

bool isContainer(const rapidjson::Value& value) {
    return (value.IsObject() && value.MemberCount()) || (value.IsArray() && !value.Empty());
}

/* The members one level below the last "/" of @p prefix */
void addPointers(const Program& program, const std::string& prefix, std::vector<std::string>& out) {
    const std::size_t slash = prefix.rfind('/');
    if(slash == std::string::npos) {
        if(prefix.empty()) out.push_back("/");
        return;
    }
    const std::string parent = prefix.substr(0, slash);
    const rapidjson::Value* const value = program.session.value(view(parent));
    if(!value) return;
    const std::string start = unescapedToken(prefix.substr(slash + 1));
    if(value->IsObject()) for(const auto& member: value->GetObject()) {
        const std::string key{member.name.GetString(), member.name.GetStringLength()};
        if(startsWith(key, start))
            out.push_back(parent + "/" + escapedToken(key.data(), key.size()) + (isContainer(member.value) ? "/" : ""));
    } else if(value->IsArray()) for(rapidjson::SizeType i = 0; i != value->Size(); ++i) {
        const std::string index = std::to_string(i);
        if(startsWith(index, start)) out.push_back(parent + "/" + index + (isContainer((*value)[i]) ? "/" : ""));
    }
}

/* Whether word @p index of @p command names an object */
bool takesObject(const std::string& command, const std::size_t index) {
    if(command == "add") return index == 2;
    if(command == "rename") return index == 1;
    for(const char* const name: {"tree", "select", "delete", "reparent", "show", "move", "rotate", "scale", "purge"})
        if(command == name) return command == "select" || command == "purge" || index == 1;
    return false;
}

}

Completion complete(Program& program, const std::string& line) {
    Completion completion{lastWordStart(line), {}};
    std::vector<Word> words;
    std::string error;
    if(!splitWords(line.substr(0, completion.start), words, error)) return completion;
    /* The word as typed so far, with any opening quote taken away */
    std::string prefix = line.substr(completion.start);
    if(!prefix.empty() && (prefix[0] == '"' || prefix[0] == '\'')) prefix.erase(0, 1);
    std::vector<std::string>& out = completion.candidates;

    const Command* const command = words.empty() ? nullptr : findCommand(words[0].text);
    const std::string name = command ? command->name : "";
    const bool select = name == "select";
    if(words.empty()) addCommands(prefix, out);
    else if(!command) {}
    else if(startsWith(prefix, "--") || (prefix == "-" && command->flags[0] && !select)) addOptions(*command, prefix, out);
    else if(words.size() == 1 && name == "help") addCommands(prefix, out);
    else if(words.size() == 1 && (name == "get" || name == "set" || name == "remove")) addPointers(program, prefix, out);
    else if(takesObject(name, words.size())) {
        std::string sign;
        if(select && (startsWith(prefix, "+") || startsWith(prefix, "-"))) {
            sign = prefix.substr(0, 1);
            prefix.erase(0, 1);
        }
        addObjects(program, prefix, out);
        if(!sign.empty()) for(std::string& candidate: out) candidate = sign + candidate;
    }
    for(std::string& candidate: out) candidate = typed(candidate);
    std::sort(out.begin(), out.end());
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return completion;
}

std::string commonStart(const std::vector<std::string>& candidates) {
    if(candidates.empty()) return {};
    std::string common = candidates[0];
    for(const std::string& candidate: candidates)
        common.resize(std::mismatch(common.begin(), common.end(), candidate.begin(), candidate.end()).first - common.begin());
    return common;
}

}
