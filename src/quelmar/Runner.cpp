/* Running command lines against the program's session, and what the end of
   input does. */
#include "Runner.h"

#include <vector>

#include "Command.h"
#include "History.h"
#include "Input.h"
#include "Program.h"

namespace quelmar {

namespace {

bool parseArguments(const Program& program, const Command& command, const std::string& line, const std::vector<Word>& words, Arguments& arguments) {
    for(std::size_t i = 1; i != words.size(); ++i) {
        if(command.rawRest && arguments.positional.size() == 1) {
            arguments.raw = trimmed(line.substr(words[i - 1].end));
            arguments.positional.push_back(arguments.raw);
            break;
        }
        const Word& word = words[i];
        if(!word.quoted && word.text.size() > 2 && word.text.compare(0, 2, "--") == 0) {
            bool known = false;
            for(const char* flag: command.flags) known = known || (flag && word.text == flag);
            if(!known) return program.fail(std::string{command.name} + " has no option " + word.text + "; usage: " + command.usage);
            arguments.flags.push_back(word.text);
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

    Arguments arguments;
    return parseArguments(program, *command, line, words, arguments) && command->run(program, arguments);
}

int finish(Program& program) {
    if(program.session.isSaved()) return 0;
    program.fail(unsavedChangesText(program) + "; they are lost");
    return 1;
}

}
