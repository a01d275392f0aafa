/* Sending the library's errors and warnings to standard error in the
   program's own "error: " and "warning: " form. */
#include "Diagnostics.h"

#include <iostream>

#include "Colour.h"

namespace quelmar {

LinePrefixBuffer::int_type LinePrefixBuffer::overflow(const int_type c) {
    if(traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    if(_atLineStart && _target->sputn(_prefix.data(), std::streamsize(_prefix.size())) != std::streamsize(_prefix.size()))
        return traits_type::eof();
    const char character = traits_type::to_char_type(c);
    _atLineStart = character == '\n';
    if(character == '\n') return _target->sputc(character);
    /* No byte of a message steers the terminal */
    const std::string text = printable({character});
    return _target->sputn(text.data(), std::streamsize(text.size())) == std::streamsize(text.size()) ? c : traits_type::eof();
}

int LinePrefixBuffer::sync() {
    return _target->pubsync();
}

/* Unbuffered, so that a message is out before a fatal error aborts */
Diagnostics::Diagnostics():
    _errorBuffer{std::cerr.rdbuf(), painted(wantsColour(2), Paint::Error, "error:") + " "},
    _warningBuffer{std::cerr.rdbuf(), painted(wantsColour(2), Paint::Warning, "warning:") + " "},
    _errorStream{&_errorBuffer},
    _warningStream{&_warningBuffer},
    _errorRedirect{&_errorStream},
    _warningRedirect{&_warningStream} {}

}
