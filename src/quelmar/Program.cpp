/* What one run of the program works on: the edit session, the clipboard,
   and how results reach the user. */
#include "Program.h"

#include <iostream>

#include "Colour.h"

namespace quelmar {

bool Program::fail(const std::string& message) const {
    std::cerr << painted(colourErr, Paint::Error, "error:") << ' ' << printable(location + message) << std::endl;
    return false;
}

void Program::warn(const std::string& message) const {
    std::cerr << painted(colourErr, Paint::Warning, "warning:") << ' ' << printable(message) << std::endl;
}

bool Program::report(const EditResult& result) const {
    for(const std::string& warning: result.warnings()) warn(warning);
    return result ? true : fail(result.message());
}

}
