/* Where the commands typed or piped in come from, one line at a time, in a
   way that a signal can interrupt while the program waits for them. */
#ifndef quelmar_Lines_h
#define quelmar_Lines_h

#include <string>

namespace quelmar {

enum class ReadStatus {
    Line,
    /** The end of the input, or Control-D at a terminal */
    End,
    /** A signal came while waiting; takeSignal() says which */
    Signal,
    /** The person cancelled the line being typed */
    Cancelled
};

class LineSource {
    public:
        virtual ~LineSource() = default;

        /** The next line, without its line feed, into @p line */
        virtual ReadStatus read(std::string& line) = 0;
};

/** Lines of a file descriptor, as they come; @p prompt printed before each when not null */
class PlainLines: public LineSource {
    public:
        explicit PlainLines(int fd, const char* prompt = nullptr): _fd{fd}, _prompt{prompt} {}

        ReadStatus read(std::string& line) override;

    private:
        int _fd;
        const char* _prompt;
        std::string _buffer;
        bool _prompted{}, _ended{};
};

}

#endif
