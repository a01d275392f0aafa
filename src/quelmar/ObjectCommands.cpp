/* add, rename, select, selection, find, delete and reparent: editing objects
   by key or name and through the selection. */
#include <iostream>
#include <unordered_set>

#include "Command.h"
#include "JsonOutput.h"
#include "Objects.h"
#include "Program.h"

namespace quelmar {

bool runAdd(Program& program, const Arguments& arguments) {
    const std::string parent = arguments.positional.size() == 2 ? arguments.positional[1] : std::string{};
    const EditResult result = program.session.addObject(view(arguments.positional[0]), view(parent));
    if(!program.report(result)) return false;
    program.lastAdded = result.keys()[0];
    if(arguments.has("--json")) JsonOutput{}.set("key", result.keys()[0]).set("name", result.text()).print();
    else std::cout << result.keys()[0] << std::endl;
    return true;
}

bool runRename(Program& program, const Arguments& arguments) {
    const EditResult result = program.session.renameObject(view(arguments.positional[0]), view(arguments.positional[1]));
    if(!program.report(result)) return false;
    std::cout << "renamed " << result.keys()[0] << " to " << displayName(program, result.keys()[0].data()) << std::endl;
    return true;
}

/* Words marked + or - add objects to the selection or take them from it;
   any unmarked word starts from an empty selection instead of the current
   one. Everything is resolved before anything changes. */
bool runSelect(Program& program, const Arguments& arguments) {
    const auto signOf = [](const std::string& word) { return !word.empty() && (word[0] == '+' || word[0] == '-') ? word[0] : '\0'; };
    bool replace = arguments.positional.empty();
    for(const std::string& word: arguments.positional) replace = replace || !signOf(word);

    std::unordered_set<std::string> selected;
    if(!replace) {
        const QuelmarEngine::StringArray current = program.session.selection();
        for(std::size_t i = 0; i != current.size(); ++i) selected.insert(current.get(i));
    }
    for(const std::string& word: arguments.positional) {
        const char sign = signOf(word);
        const EditResult found = program.session.findObjects(view(sign ? word.substr(1) : word));
        if(!program.report(found)) return false;
        for(const std::string& key: found.keys()) {
            if(sign == '-') selected.erase(key);
            else selected.insert(key);
        }
    }
    std::vector<Corrade::Containers::StringView> keys;
    for(const std::string& key: selected) keys.push_back(view(key));
    return program.report(program.session.select({keys.data(), keys.size()}));
}

bool runSelection(Program& program, const Arguments& arguments) {
    const QuelmarEngine::StringArray keys = program.session.selection();
    if(arguments.has("--json")) {
        JsonOutput output;
        rapidjson::Value selected{rapidjson::kArrayType};
        for(std::size_t i = 0; i != keys.size(); ++i) {
            rapidjson::Value object = JsonOutput::object();
            output.add(object, "key", output.string(keys.get(i)))
                  .add(object, "name", output.stringOrNull(program.session.objectName(keys.get(i))));
            selected.PushBack(object, output.allocator());
        }
        output.set("selected", std::move(selected)).print();
        return true;
    }
    if(keys.isEmpty()) {
        std::cout << "nothing is selected" << std::endl;
        return true;
    }
    for(std::size_t i = 0; i != keys.size(); ++i)
        std::cout << keys.get(i) << ' ' << displayName(program, keys.get(i)) << '\n';
    std::cout.flush();
    return true;
}

bool runFind(Program& program, const Arguments& arguments) {
    const EditResult found = program.session.findByName(view(arguments.positional[0]));
    if(!program.report(found)) return false;
    if(arguments.has("--json")) {
        JsonOutput output;
        rapidjson::Value objects{rapidjson::kArrayType};
        for(const std::string& key: found.keys()) {
            rapidjson::Value object = JsonOutput::object();
            output.add(object, "key", output.string(key))
                  .add(object, "name", output.stringOrNull(program.session.objectName(view(key))))
                  .add(object, "path", output.strings(program.session.treePath(view(key))));
            objects.PushBack(object, output.allocator());
        }
        output.set("objects", std::move(objects)).print();
        return true;
    }
    for(const std::string& key: found.keys())
        std::cout << key << ' ' << displayName(program, key.data()) << ' ' << displayPath(program.session.treePath(view(key))) << '\n';
    std::cout.flush();
    return true;
}

bool runDelete(Program& program, const Arguments& arguments) {
    const EditResult result = arguments.positional.empty() ? program.session.deleteSelection() : program.session.deleteObject(view(arguments.positional[0]));
    if(!program.report(result)) return false;
    const std::size_t count = result.keys().size();
    std::cout << "deleted " << count << (count == 1 ? " object" : " objects") << std::endl;
    return true;
}

bool runReparent(Program& program, const Arguments& arguments) {
    const std::string& parent = arguments.positional[0];
    /* The library prints a line for every object it moves */
    return program.report(program.session.reparentSelection(parent == "root" ? Corrade::Containers::StringView{""} : view(parent),
        arguments.has("--keep-transform") ? QuelmarEngine::ReparentMode::KeepWorld : QuelmarEngine::ReparentMode::KeepLocal));
}

}
