/* Sending the library's errors and warnings to standard error in the
   program's own "error: " and "warning: " form. */
#ifndef quelmar_Diagnostics_h
#define quelmar_Diagnostics_h

#include <ostream>
#include <streambuf>
#include <string>
#include <Corrade/Utility/Debug.h>

namespace quelmar {

/** Writes through to another buffer, putting a prefix before every line */
class LinePrefixBuffer: public std::streambuf {
    public:
        explicit LinePrefixBuffer(std::streambuf* target, std::string prefix): _target{target}, _prefix{std::move(prefix)} {}

    protected:
        int_type overflow(int_type c) override;
        int sync() override;

    private:
        std::streambuf* _target;
        std::string _prefix;
        bool _atLineStart{true};
};

/** For as long as it lives, library errors and warnings carry the prefixes */
class Diagnostics {
    public:
        Diagnostics();

        Diagnostics(const Diagnostics&) = delete;
        Diagnostics& operator=(const Diagnostics&) = delete;

    private:
        LinePrefixBuffer _errorBuffer, _warningBuffer;
        std::ostream _errorStream, _warningStream;
        /* Declared after the streams they write to, so destroyed before */
        Corrade::Utility::Error _errorRedirect;
        Corrade::Utility::Warning _warningRedirect;
};

}

#endif
