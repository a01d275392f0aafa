/* Line editing at a terminal: the arrow keys, the command history of this
   and earlier sessions, and Tab completion. */
#ifndef quelmar_LineEditor_h
#define quelmar_LineEditor_h

#include <string>
#include <Corrade/Containers/Pointer.h>

#include "Lines.h"

namespace quelmar {

struct Program;

/**
@brief Where the history of earlier sessions is kept

$XDG_STATE_HOME/quelmar/history, or ~/.local/state/quelmar/history when
that variable is unset or not an absolute path; empty when neither is known.
*/
std::string historyFilePath();

class LineEditor: public LineSource {
    public:
        /** Takes over the terminal on standard input and output; null when it can't */
        static Corrade::Containers::Pointer<LineEditor> create(Program& program);

        ~LineEditor();

        ReadStatus read(std::string& line) override;

    private:
        struct State;

        explicit LineEditor(State* state);

        Corrade::Containers::Pointer<State> _state;
};

}

#endif
