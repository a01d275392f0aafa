/* Colour for people at a terminal: never in a pipe or a file, and never
   when NO_COLOR asks for none. */
#ifndef quelmar_Colour_h
#define quelmar_Colour_h

#include <string>

namespace quelmar {

/** Whether what goes to @p fd gets colour: a terminal, with NO_COLOR unset or empty */
bool wantsColour(int fd);

enum class Paint {
    Error,
    Warning,
    /** The mark of a selected object */
    Selected,
    /** The lines that draw a tree */
    Guide
};

/** @p text in the colour of @p paint when @p colour, otherwise as it is */
std::string painted(bool colour, Paint paint, const std::string& text);

/** @p text with every control byte but none written as \xHH, so that nothing echoed back can steer a terminal */
std::string printable(const std::string& text);

}

#endif
