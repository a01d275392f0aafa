/* What Tab offers for the word being typed: command names, options, object
   keys and names, and the JSON Pointer paths of the open document. */
#ifndef quelmar_Completion_h
#define quelmar_Completion_h

#include <cstddef>
#include <string>
#include <vector>

namespace quelmar {

struct Program;

struct Completion {
    /** Where the word being completed starts */
    std::size_t start;
    /** The words that could stand in its place, written as they are typed */
    std::vector<std::string> candidates;
};

/**
@brief The ways to complete the last word of @p line, the text before the cursor

A JSON Pointer completes one level at a time: a candidate that names an
object or an array ends with "/", so that the next Tab goes one level down.
*/
Completion complete(Program& program, const std::string& line);

/** The longest start that all of @p candidates share */
std::string commonStart(const std::vector<std::string>& candidates);

}

#endif
