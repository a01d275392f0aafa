#include "Corrade/Utility/Debug.h"

#include <iomanip>
#include <iostream>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"

namespace Corrade { namespace Utility {

namespace {
    std::ostream*& debugGlobalOutput() {
        static std::ostream* output = &std::cout;
        return output;
    }
    std::ostream*& warningGlobalOutput() {
        static std::ostream* output = &std::cerr;
        return output;
    }
    std::ostream*& errorGlobalOutput() {
        static std::ostream* output = &std::cerr;
        return output;
    }
}

std::ostream* Debug::output() { return debugGlobalOutput(); }

Debug::Debug(std::ostream*& globalOutput, std::ostream* const output, const Flags flags): _output{output}, _globalOutput{globalOutput}, _previousGlobalOutput{globalOutput}, _flags{flags}, _valueWritten{} {
    globalOutput = output;
}

Debug::Debug(const Flags flags): Debug{debugGlobalOutput(), debugGlobalOutput(), flags} {}

Debug::Debug(std::ostream* const output, const Flags flags): Debug{debugGlobalOutput(), output, flags} {}

Debug::~Debug() {
    if(_output && _valueWritten && !(_flags & Flag::NoNewlineAtTheEnd))
        *_output << std::endl;
    _globalOutput = _previousGlobalOutput;
}

template<class T> Debug& Debug::print(const T& value) {
    if(!_output) return *this;
    if(_valueWritten && !(_flags & Flag::NoSpace)) *_output << ' ';
    *_output << value;
    _valueWritten = true;
    return *this;
}

Debug& Debug::operator<<(const char* const value) { return print(value); }

Debug& Debug::operator<<(const Containers::StringView value) {
    if(!_output) return *this;
    if(_valueWritten && !(_flags & Flag::NoSpace)) *_output << ' ';
    _output->write(value.data(), value.size());
    _valueWritten = true;
    return *this;
}

Debug& Debug::operator<<(const Containers::String& value) {
    return *this << Containers::StringView{value};
}

Debug& Debug::operator<<(const bool value) { return print(value ? "true" : "false"); }
Debug& Debug::operator<<(const char value) { return print(int(value)); }
Debug& Debug::operator<<(const signed char value) { return print(int(value)); }
Debug& Debug::operator<<(const unsigned char value) { return print(unsigned(value)); }
Debug& Debug::operator<<(const short value) { return print(value); }
Debug& Debug::operator<<(const unsigned short value) { return print(value); }
Debug& Debug::operator<<(const int value) { return print(value); }
Debug& Debug::operator<<(const unsigned int value) { return print(value); }
Debug& Debug::operator<<(const long value) { return print(value); }
Debug& Debug::operator<<(const unsigned long value) { return print(value); }
Debug& Debug::operator<<(const long long value) { return print(value); }
Debug& Debug::operator<<(const unsigned long long value) { return print(value); }

Debug& Debug::operator<<(const float value) {
    if(!_output) return *this;
    const std::streamsize precision = _output->precision(6);
    print(value);
    _output->precision(precision);
    return *this;
}

Debug& Debug::operator<<(const double value) {
    if(!_output) return *this;
    const std::streamsize precision = _output->precision(15);
    print(value);
    _output->precision(precision);
    return *this;
}

std::ostream* Warning::output() { return warningGlobalOutput(); }

Warning::Warning(const Flags flags): Debug{warningGlobalOutput(), warningGlobalOutput(), flags} {}

Warning::Warning(std::ostream* const output, const Flags flags): Debug{warningGlobalOutput(), output, flags} {}

std::ostream* Error::output() { return errorGlobalOutput(); }

Error::Error(const Flags flags): Debug{errorGlobalOutput(), errorGlobalOutput(), flags} {}

Error::Error(std::ostream* const output, const Flags flags): Debug{errorGlobalOutput(), output, flags} {}

}}
