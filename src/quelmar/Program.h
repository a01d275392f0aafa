/* What one run of the program works on: the edit session, the clipboard,
   and how results reach the user. */
#ifndef quelmar_Program_h
#define quelmar_Program_h

#include <string>
#include <Corrade/Containers/StringView.h>

#include "QuelmarEngine/host/EditSession.h"

namespace quelmar {

using QuelmarEngine::EditResult;
using QuelmarEngine::EditSession;

struct Program {
    /** Prints @p message as one error line, control bytes escaped, and returns false */
    bool fail(const std::string& message) const;

    /** Prints @p message as one warning line */
    void warn(const std::string& message) const;

    /** Prints the warnings of @p result and, if it failed, why; returns whether it succeeded */
    bool report(const EditResult& result) const;

    EditSession session;
    /** The clipboard text, empty before the first copy */
    std::string clipboard;
    /** The object that the last command to add one added first, for $_; empty before */
    std::string lastAdded;
    /** Put before every error message, for example the script line */
    std::string location;
    bool quitRequested{};
    /** Whether every command is shown before its output, as in a demo */
    bool echo{};
    /** Whether standard output and standard error take colour */
    bool colourOut{}, colourErr{};
};

/** @p text as a view, for the session's arguments */
inline Corrade::Containers::StringView view(const std::string& text) {
    return {text.data(), text.size()};
}

}

#endif
