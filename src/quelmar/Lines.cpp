/* Where the commands typed or piped in come from, one line at a time, in a
   way that a signal can interrupt while the program waits for them. */
#include "Lines.h"

#include <cerrno>
#include <iostream>
#include <unistd.h>

#include "Signals.h"

namespace quelmar {

ReadStatus PlainLines::read(std::string& line) {
    for(;;) {
        const std::size_t end = _buffer.find('\n');
        if(end != std::string::npos || (_ended && !_buffer.empty())) {
            line.assign(_buffer, 0, end);
            _buffer.erase(0, end == std::string::npos ? end : end + 1);
            _prompted = false;
            return ReadStatus::Line;
        }
        if(_ended) return ReadStatus::End;
        if(_prompt && !_prompted) {
            std::cout << _prompt << std::flush;
            _prompted = true;
        }
        if(!waitForInput(_fd)) {
            /* A terminal drops the line being typed on an interrupt itself */
            _prompted = false;
            return ReadStatus::Signal;
        }
        char chunk[65536];
        const ssize_t size = ::read(_fd, chunk, sizeof(chunk));
        if(size < 0 && errno == EINTR) continue;
        if(size > 0) _buffer.append(chunk, std::size_t(size));
        /* Control-D at a terminal ends its input for this one read only */
        else if(_buffer.empty() && _prompt && ::isatty(_fd)) {
            _prompted = false;
            return ReadStatus::End;
        } else _ended = true;
    }
}

}
