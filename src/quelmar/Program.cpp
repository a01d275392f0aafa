/* What one run of the program works on: the edit session, the clipboard,
   and how results reach the user. */
#include "Program.h"

#include <iostream>

namespace quelmar {

bool Program::fail(const std::string& message) const {
    std::cerr << "error: " << location << message << std::endl;
    return false;
}

bool Program::report(const EditResult& result) const {
    for(const std::string& warning: result.warnings()) std::cerr << "warning: " << warning << std::endl;
    return result ? true : fail(result.message());
}

}
