// Assertion macros printing through Utility::Error and aborting.
#ifndef Corrade_Utility_Assert_h
#define Corrade_Utility_Assert_h

#include <cstdlib>

#include "Corrade/Utility/Debug.h"

#define CORRADE_IMPLEMENTATION_STRINGIFY(line) #line
#define CORRADE_IMPLEMENTATION_LINE_STRING(line) CORRADE_IMPLEMENTATION_STRINGIFY(line)

/**
 * @brief Assertion on API use
 *
 * If @p condition is false, prints @p message (which may chain values with
 * @cpp << @ce) through @ref Corrade::Utility::Error and aborts.
 * @p returnValue is never used, as the program never goes on.
 */
#define CORRADE_ASSERT(condition, message, returnValue)                     \
    do {                                                                    \
        if(!(condition)) {                                                  \
            Corrade::Utility::Error{} << message;                           \
            std::abort();                                                   \
        }                                                                   \
    } while(false)

/**
 * @brief Internal assertion
 *
 * If @p condition is false, prints "Assertion <condition> failed at
 * <file>:<line>" and aborts.
 */
#define CORRADE_INTERNAL_ASSERT(condition)                                  \
    do {                                                                    \
        if(!(condition)) {                                                  \
            Corrade::Utility::Error{} << "Assertion " #condition " failed at " __FILE__ ":" CORRADE_IMPLEMENTATION_LINE_STRING(__LINE__); \
            std::abort();                                                   \
        }                                                                   \
    } while(false)

/**
 * @brief Code that must never be reached
 *
 * Prints "Reached unreachable code at <file>:<line>" and aborts.
 */
#define CORRADE_INTERNAL_ASSERT_UNREACHABLE()                               \
    do {                                                                    \
        Corrade::Utility::Error{} << "Reached unreachable code at " __FILE__ ":" CORRADE_IMPLEMENTATION_LINE_STRING(__LINE__); \
        std::abort();                                                       \
    } while(false)

#endif
