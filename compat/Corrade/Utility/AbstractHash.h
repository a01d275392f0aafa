// Hash digest type shared by the hash functions.
#ifndef Corrade_Utility_AbstractHash_h
#define Corrade_Utility_AbstractHash_h

#include <cstddef>
#include <cstring>

namespace Corrade { namespace Utility {

/** @brief Hash digest of @p size bytes */
template<std::size_t size> class HashDigest {
    public:
        /** @brief Zero-filled digest */
        constexpr HashDigest() noexcept: _data{} {}

        /** @brief Digest from @p size bytes at @p data */
        static HashDigest<size> fromByteArray(const char* data) {
            HashDigest<size> out;
            std::memcpy(out._data, data, size);
            return out;
        }

        bool operator==(const HashDigest<size>& other) const { return std::memcmp(_data, other._data, size) == 0; }
        bool operator!=(const HashDigest<size>& other) const { return !operator==(other); }

        /** @brief The @p size digest bytes */
        char* byteArray() { return _data; }
        const char* byteArray() const { return _data; }

    private:
        char _data[size];
};

/** @brief Base of hash functions with a @p digestSize byte digest */
template<std::size_t digestSize> class AbstractHash {
    public:
        typedef HashDigest<digestSize> Digest;
};

}}

#endif
