// Forward declarations for the Corrade::Containers namespace.
#ifndef Corrade_Containers_Containers_h
#define Corrade_Containers_Containers_h

#include <cstddef>

namespace Corrade { namespace Containers {

template<class T, class D = void(*)(T*, std::size_t)> class Array;
template<class> class ArrayView;
template<class> class EnumSet;
template<class> class Pointer;

template<class> class BasicStringView;
typedef BasicStringView<const char> StringView;
typedef BasicStringView<char> MutableStringView;
enum class StringViewFlag: std::size_t;
typedef EnumSet<StringViewFlag> StringViewFlags;
class String;

}}

#endif
