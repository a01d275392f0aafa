/* check: every inconsistency of the project. */
#include <iostream>

#include "Command.h"
#include "Program.h"

namespace quelmar {

bool runCheck(Program& program, const Arguments&) {
    const std::vector<std::string> lines = program.session.inconsistencies();
    if(lines.empty()) {
        std::cout << "no inconsistencies" << std::endl;
        return true;
    }
    for(const std::string& line: lines) std::cout << line << '\n';
    std::cout.flush();
    return program.fail(lines.size() == 1 ? std::string{"the project has 1 inconsistency"} : "the project has " + std::to_string(lines.size()) + " inconsistencies");
}

}
