// Debug, warning and error output with automatic spacing and line ends.
#ifndef Corrade_Utility_Debug_h
#define Corrade_Utility_Debug_h

#include <iosfwd>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/EnumSet.h"

namespace Corrade { namespace Utility {

/**
 * @brief Debug output
 *
 * Prints the values given with @cpp << @ce separated by one space and ends
 * the line on destruction if anything was printed. Writes to
 * @cpp std::cout @ce by default. While an instance constructed on a stream
 * lives, every later @ref Debug without a stream writes there too; the
 * previous default comes back when it is destroyed. A null stream discards
 * the output. @ref Warning and @ref Error have their own default output.
 */
class Debug {
    public:
        /** @brief Output flag */
        enum class Flag: unsigned char {
            NoNewlineAtTheEnd = 1 << 0, /**< No line feed at destruction */
            DisableColors = 1 << 1,     /**< Colors are never printed anyway */
            NoSpace = 1 << 2            /**< No space between values */
        };

        /** @brief Output flags */
        typedef Containers::EnumSet<Flag> Flags;

        CORRADE_ENUMSET_FRIEND_OPERATORS(Flags)

        /** @brief Current default output of @ref Debug */
        static std::ostream* output();

        /** @brief Write to the current default output */
        explicit Debug(Flags flags = {});

        /** @brief Write to @p output and make it the default while alive */
        explicit Debug(std::ostream* output, Flags flags = {});

        Debug(const Debug&) = delete;
        Debug(Debug&&) = delete;
        Debug& operator=(const Debug&) = delete;
        Debug& operator=(Debug&&) = delete;

        /** @brief End the line if anything was printed, restore the default output */
        ~Debug();

        Debug& operator<<(const char* value);
        Debug& operator<<(Containers::StringView value);
        Debug& operator<<(const Containers::String& value);

        /** @brief Prints `true` or `false` */
        Debug& operator<<(bool value);

        /** @brief Character types print as numbers */
        Debug& operator<<(char value);
        Debug& operator<<(signed char value);
        Debug& operator<<(unsigned char value);
        Debug& operator<<(short value);
        Debug& operator<<(unsigned short value);
        Debug& operator<<(int value);
        Debug& operator<<(unsigned int value);
        Debug& operator<<(long value);
        Debug& operator<<(unsigned long value);
        Debug& operator<<(long long value);
        Debug& operator<<(unsigned long long value);

        /** @brief Prints with 6 significant digits */
        Debug& operator<<(float value);

        /** @brief Prints with 15 significant digits */
        Debug& operator<<(double value);

    protected:
        /* Write to `output` and make it the value of `globalOutput` while
           alive */
        explicit Debug(std::ostream*& globalOutput, std::ostream* output, Flags flags);

    private:
        template<class T> Debug& print(const T& value);

        std::ostream* _output;
        std::ostream*& _globalOutput;
        std::ostream* _previousGlobalOutput;
        Flags _flags;
        bool _valueWritten;
};

/**
 * @brief Warning output
 *
 * Like @ref Debug, writing to @cpp std::cerr @ce by default.
 */
class Warning: public Debug {
    public:
        /** @brief Current default output of @ref Warning */
        static std::ostream* output();

        explicit Warning(Flags flags = {});
        explicit Warning(std::ostream* output, Flags flags = {});
};

/**
 * @brief Error output
 *
 * Like @ref Debug, writing to @cpp std::cerr @ce by default.
 */
class Error: public Debug {
    public:
        /** @brief Current default output of @ref Error */
        static std::ostream* output();

        explicit Error(Flags flags = {});
        explicit Error(std::ostream* output, Flags flags = {});
};

}}

#endif
