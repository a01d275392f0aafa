// Splitting and joining std::string on a delimiter character.
#ifndef Corrade_Utility_String_h
#define Corrade_Utility_String_h

#include <string>
#include <vector>

namespace Corrade { namespace Utility { namespace String {

/**
 * @brief Split @p string on @p delimiter
 *
 * Keeps empty pieces: @cpp "/a//b" @ce gives `""`, `"a"`, `""`, `"b"` and
 * @cpp "a/" @ce gives `"a"`, `""`. An empty string gives no pieces at all.
 */
std::vector<std::string> split(const std::string& string, char delimiter);

/** @brief Join @p strings with @p delimiter between them */
std::string join(const std::vector<std::string>& strings, char delimiter);

}}}

#endif
