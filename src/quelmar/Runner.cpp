/* Running command lines against the program's session, and what the end of
   input does. */
#include "Runner.h"

#include <cstring>
#include <vector>

#include "Command.h"
#include "History.h"
#include "Input.h"
#include "Program.h"

namespace quelmar {

namespace {

/* Whether @p flag of a command's table row is @p name, and whether it takes a value */
bool isFlag(const char* const flag, const std::string& name, bool& takesValue) {
    const std::size_t size = std::strlen(flag);
    takesValue = size && flag[size - 1] == '=';
    return name.size() == size - (takesValue ? 1 : 0) && name.compare(0, name.size(), flag, name.size()) == 0;
}

/* The word at @p i, a flag or an option, into @p arguments; an option's value may be the next word */
bool parseFlag(const Program& program, const Command& command, const std::vector<Word>& words, std::size_t& i, Arguments& arguments) {
    const std::string& word = words[i].text;
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    for(const char* const flag: command.flags) {
        bool takesValue;
        if(!flag || !isFlag(flag, name, takesValue)) continue;
        if(!takesValue) {
            if(equals != std::string::npos) return program.fail(name + " takes no value; usage: " + command.usage);
            arguments.flags.push_back(name);
        } else if(equals != std::string::npos) arguments.options.emplace_back(name, word.substr(equals + 1));
        else if(i + 1 == words.size()) return program.fail(name + " needs a value; usage: " + command.usage);
        else arguments.options.emplace_back(name, words[++i].text);
        return true;
    }
    return program.fail(std::string{command.name} + " has no option " + name + "; usage: " + command.usage);
}

bool parseArguments(const Program& program, const Command& command, const std::string& line, const std::vector<Word>& words, Arguments& arguments) {
    for(std::size_t i = 1; i != words.size(); ++i) {
        if(command.rawRest && arguments.positional.size() == 1) {
            arguments.raw = trimmed(line.substr(words[i - 1].end));
            arguments.positional.push_back(arguments.raw);
            break;
        }
        const Word& word = words[i];
        if(!word.quoted && word.text.size() > 2 && word.text.compare(0, 2, "--") == 0) {
            if(!parseFlag(program, command, words, i, arguments)) return false;
        } else arguments.positional.push_back(word.text);
    }
    const std::size_t count = arguments.positional.size();
    if(count < command.minArguments || count > command.maxArguments)
        return program.fail(std::string{count < command.minArguments ? "missing argument" : "too many arguments"} + "; usage: " + command.usage);
    return true;
}

}

bool runLine(Program& program, const std::string& line) {
    if(line.find('\0') != std::string::npos)
        return program.fail("the input holds a NUL byte");
    if(isBlankOrComment(line)) return true;

    std::vector<Word> words;
    std::string error;
    if(!splitWords(line, words, error)) return program.fail(error);
    const Command* const command = findCommand(words[0].text);
    if(!command) return program.fail("unknown command " + words[0].text + "; \"help\" lists the commands");
    /* $_, unquoted and on its own or after the + or - of select, stands for
       the object that the last command added */
    for(std::size_t i = 1; i != words.size(); ++i) {
        std::string& text = words[i].text;
        const std::size_t sign = text.size() == 3 && (text[0] == '+' || text[0] == '-') ? 1 : 0;
        if(words[i].quoted || text.compare(sign, std::string::npos, "$_") != 0) continue;
        if(program.lastAdded.empty()) return program.fail("$_ names no object yet: no command has added one");
        text = text.substr(0, sign) + program.lastAdded;
    }

    Arguments arguments;
    const bool succeeded = parseArguments(program, *command, line, words, arguments) && command->run(program, arguments);
    /* Between commands no step is open and nothing holds a value of the
       document: the moment to move what is live into a fresh pool, the old
       one's memory going to the commands that follow */
    program.session.compactIfWasteful();
    return succeeded;
}

std::string unsavedChangesFate(const Program& program) {
    const EditSession& session = program.session;
    if(session.journalEntryCount() && !session.isReadOnly())
        return "; the journal " + session.journalPath() + " keeps them for recover";
    return "; they are lost";
}

int finish(Program& program) {
    if(program.session.isSaved()) return 0;
    program.fail(unsavedChangesText(program) + unsavedChangesFate(program));
    return 1;
}

}
