/* Splitting what the user types into commands and words. */
#ifndef quelmar_Input_h
#define quelmar_Input_h

#include <cstddef>
#include <string>
#include <vector>

namespace quelmar {

/** One word of a command line */
struct Word {
    /** The text with quotes and escapes resolved */
    std::string text;
    /** Offset just past the word in the line */
    std::size_t end;
    /** Whether any part of it was quoted, so that it can't be a flag */
    bool quoted;
};

/**
@brief Splits @p line into words

Words are separated by spaces and tabs. Double quotes group a word and take
\" and \\ escapes, single quotes group a word verbatim. Returns false and
sets @p error for an unterminated quote.
*/
bool splitWords(const std::string& line, std::vector<Word>& words, std::string& error);

/** Splits @p text at the semicolons that stand outside quotes */
std::vector<std::string> splitCommands(const std::string& text);

/** Whether @p line holds nothing but blanks or a # comment */
bool isBlankOrComment(const std::string& line);

/** @p text without leading and trailing blanks */
std::string trimmed(const std::string& text);

}

#endif
