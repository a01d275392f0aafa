#include "QuelmarEngine/JsonReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <Corrade/Utility/Format.h>

namespace QuelmarEngine {

namespace {

/* The reader reports numbers as their text and we convert them: its own
   precise conversion reads garbage and out of bounds on long digit strings
   and large exponents, and its fast one is off by an ulp for about a quarter
   of all doubles, which would drift every number through a save and a load */
constexpr unsigned ParseFlags = rapidjson::kParseIterativeFlag|rapidjson::kParseNumbersAsStringsFlag;

/* Far beyond any exponent that matters, far below where arithmetic with it
   could overflow */
constexpr long long ExponentLimit = 1ll << 40;

/* A number's text read by the grammar the reader uses */
struct NumberText {
    /* Past the number, or where it goes wrong */
    std::size_t end;
    rapidjson::ParseErrorCode error;
    std::size_t integerDigits;
    /* The exponent part, saturated */
    long long exponent;
    /* Decimal exponent of the leading nonzero digit, counting the exponent
       part; meaningless for a zero */
    long long leadingExponent;
};

NumberText scanNumber(const char* const text, const std::size_t size, std::size_t i) {
    const auto isDigit = [&](std::size_t at) { return at < size && text[at] >= '0' && text[at] <= '9'; };
    if(i < size && text[i] == '-') ++i;
    if(!isDigit(i)) return {i, rapidjson::kParseErrorValueInvalid, 0, 0, 0};

    const std::size_t integer = i;
    if(text[i] == '0') ++i;
    else while(isDigit(i)) ++i;
    const std::size_t integerDigits = i - integer;

    std::size_t fractionZeros = 0;
    if(i < size && text[i] == '.') {
        if(!isDigit(++i)) return {i, rapidjson::kParseErrorNumberMissFraction, 0, 0, 0};
        const std::size_t fraction = i;
        while(i < size && text[i] == '0') ++i;
        fractionZeros = i - fraction;
        while(isDigit(i)) ++i;
    }

    long long exponent = 0;
    if(i < size && (text[i] == 'e' || text[i] == 'E')) {
        const bool minus = ++i < size && text[i] == '-';
        if(i < size && (text[i] == '-' || text[i] == '+')) ++i;
        if(!isDigit(i)) return {i, rapidjson::kParseErrorNumberMissExponent, 0, 0, 0};
        for(; isDigit(i); ++i) exponent = std::min(exponent*10 + (text[i] - '0'), ExponentLimit);
        if(minus) exponent = -exponent;
    }

    const long long leading = text[integer] == '0' ? -1 - (long long)fractionZeros : (long long)integerDigits - 1;
    return {i, rapidjson::kParseErrorNone, integerDigits, exponent, leading + exponent};
}

/* The double nearest to a well-formed number; false if it lies beyond the
   largest one. The conversion leaves alone what underflows, which rounds to
   a zero of its sign. */
bool toDouble(const char* const text, const std::size_t size, double& out) {
    if(std::from_chars(text, text + size, out).ec != std::errc::result_out_of_range) return true;
    if(scanNumber(text, size, 0).leadingExponent >= 0) return false;
    out = text[0] == '-' ? -0.0 : 0.0;
    return true;
}

/* Stores a well-formed number typed as the default parse types it: integers
   that fit 32 or 64 bits as such, everything else as a double. False if it
   is out of range. */
bool storeNumber(rapidjson::Document& document, const char* const text, const std::size_t size) {
    const bool minus = text[0] == '-';
    /* Most numbers in a project are short integers, worth a loop of their
       own; 19 digits always fit 64 bits */
    std::uint64_t magnitude = 0;
    std::size_t i = minus;
    for(; i != size && text[i] >= '0' && text[i] <= '9'; ++i) magnitude = magnitude*10 + unsigned(text[i] - '0');
    if(i == size && (size - minus <= 19 || std::from_chars(text + minus, text + size, magnitude).ec == std::errc{})) {
        if(!minus) return magnitude <= 0xffffffffu ? document.Uint(unsigned(magnitude)) : document.Uint64(magnitude);
        if(magnitude <= 0x80000000u) return document.Int(int(-std::int64_t(magnitude)));
        /* One less negated, so that the most negative value doesn't overflow
           on the way */
        if(magnitude <= 0x8000000000000000u) return document.Int64(-std::int64_t(magnitude - 1) - 1);
    }
    double value;
    return toDouble(text, size, value) && document.Double(value);
}

/* A number at the given offset that the reader is shown as a zero padded
   with spaces, to be read from the original text instead */
struct Substitute {
    std::size_t offset, size;
};

/* The reader's scan refuses some numbers that are in range: a zero with an
   exponent above 308, an integer part above 1.8e308 whatever the exponent
   after it. This finds every well-formed number outside strings with an
   exponent or integer part near that, a few more than those. Before the
   first error in the text the strings, and so the numbers, are the ones the
   reader sees; after it nothing matters. */
std::vector<Substitute> numbersToSubstitute(const char* const text, const std::size_t size) {
    constexpr long long Near = 300;
    std::vector<Substitute> out;
    for(std::size_t i = 0; i < size; ) {
        const char c = text[i];
        if(c == '"') {
            for(++i; i < size && text[i] != '"'; ++i)
                if(text[i] == '\\') ++i;
            ++i;
        } else if(c == '-' || (c >= '0' && c <= '9')) {
            const NumberText number = scanNumber(text, size, i);
            if(number.error == rapidjson::kParseErrorNone && (number.integerDigits >= Near || number.exponent >= Near))
                out.push_back({i, number.end - i});
            i = std::max(number.end, i + 1);
        } else ++i;
    }
    return out;
}

/* Builds the document from the reader's events, bounding the nesting and
   converting the numbers */
struct Builder {
    enum class Stop { None, TooDeep, OutOfRange };

    rapidjson::Document& document;
    const rapidjson::MemoryStream& stream;
    /* Where substituted numbers are read from */
    const char* original;
    const std::vector<Substitute>& substitutes;
    unsigned maxDepth;
    unsigned depth{};
    std::size_t nextSubstitute{};
    Stop stop{};
    std::size_t stopOffset{};

    bool Null() { return document.Null(); }
    bool Bool(bool b) { return document.Bool(b); }
    /* Never called with numbers as strings, but compiled */
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }
    bool RawNumber(const char* str, rapidjson::SizeType length, bool) {
        /* The reader has just taken the number from the stream */
        const std::size_t offset = stream.Tell() - length;
        std::size_t size = length;
        if(nextSubstitute != substitutes.size() && substitutes[nextSubstitute].offset == offset) {
            str = original + offset;
            size = substitutes[nextSubstitute++].size;
        }
        if(storeNumber(document, str, size)) return true;
        stop = Stop::OutOfRange;
        stopOffset = offset;
        return false;
    }
    bool String(const char* str, rapidjson::SizeType length, bool copy) { return document.String(str, length, copy); }
    bool Key(const char* str, rapidjson::SizeType length, bool copy) { return document.Key(str, length, copy); }
    bool StartObject() { return enter() && document.StartObject(); }
    bool EndObject(rapidjson::SizeType count) { --depth; return document.EndObject(count); }
    bool StartArray() { return enter() && document.StartArray(); }
    bool EndArray(rapidjson::SizeType count) { --depth; return document.EndArray(count); }

    bool enter() {
        if(++depth <= maxDepth) return true;
        stop = Stop::TooDeep;
        return false;
    }
};

/* The builder asks the stream where a number started while the reader is
   inside it, which needs the reader to work on the stream itself, not on a
   copy */
static_assert(!rapidjson::StreamTraits<rapidjson::MemoryStream>::copyOptimization, "the reader would read a copy of the stream");

struct Failure {
    std::size_t offset;
    Containers::String reason;
};

enum class Outcome { Parsed, Refused, InRangeNumberRefused };

/* One parse of @p text, which may have numbers substituted from
   @p original. Fills @p failure unless it parsed. */
Outcome parseOnce(rapidjson::Document& document, const char* const text, const std::size_t size, const char* const original, const std::vector<Substitute>& substitutes, const unsigned maxDepth, Failure& failure) {
    rapidjson::MemoryStream stream{text, size};
    Builder builder{document, stream, original, substitutes, maxDepth};
    rapidjson::ParseResult result;
    const auto generator = [&](rapidjson::Document&) {
        rapidjson::Reader reader;
        result = reader.Parse<ParseFlags>(stream, builder);
        return !result.IsError();
    };
    document.Populate(generator);
    if(!result.IsError()) return Outcome::Parsed;

    failure.offset = result.Offset();
    failure.reason = rapidjson::GetParseError_En(result.Code());
    if(builder.stop == Builder::Stop::TooDeep)
        failure.reason = Utility::format("nested deeper than {} levels", maxDepth);
    else if(builder.stop == Builder::Stop::OutOfRange) {
        failure.offset = builder.stopOffset;
        failure.reason = "number out of range";
    } else if(result.Code() == rapidjson::kParseErrorNumberTooBig) {
        /* The scan stopped inside a number it thought too big: it may be
           malformed after all, really out of range, or in range */
        const NumberText number = scanNumber(original, size, failure.offset);
        double value;
        if(number.error != rapidjson::kParseErrorNone) {
            failure.offset = number.end;
            failure.reason = rapidjson::GetParseError_En(number.error);
        } else if(!toDouble(original + failure.offset, number.end - failure.offset, value))
            failure.reason = "number out of range";
        else return Outcome::InRangeNumberRefused;
    }
    return Outcome::Refused;
}

bool parseBody(rapidjson::Document& document, const char* const text, const std::size_t size, const unsigned maxDepth, Failure& failure) {
    /* The stream reads a NUL byte as the end of the text, which would let
       anything after it through unread */
    if(const void* nul = std::memchr(text, 0, size)) {
        failure = {std::size_t(static_cast<const char*>(nul) - text), "unexpected NUL byte"};
        return false;
    }

    const Outcome outcome = parseOnce(document, text, size, text, {}, maxDepth, failure);
    if(outcome != Outcome::InRangeNumberRefused) return outcome == Outcome::Parsed;

    /* Such numbers are rare, so only then is the text parsed again, with
       them shown to the scan as zeros */
    const std::vector<Substitute> substitutes = numbersToSubstitute(text, size);
    std::string substituted{text, size};
    for(const Substitute& number: substitutes) {
        substituted[number.offset] = '0';
        std::fill_n(&substituted[number.offset + 1], number.size - 1, ' ');
    }
    return parseOnce(document, substituted.data(), size, text, substitutes, maxDepth, failure) == Outcome::Parsed;
}

}

bool parseJson(rapidjson::Document& document, const Containers::StringView text, JsonParseError& error, const unsigned maxDepth) {
    constexpr char ByteOrderMark[]{"\xef\xbb\xbf"};
    const std::size_t start = text.size() >= 3 && std::memcmp(text.data(), ByteOrderMark, 3) == 0 ? 3 : 0;

    Failure failure;
    if(parseBody(document, text.data() + start, text.size() - start, maxDepth, failure)) return true;

    document.SetNull();
    error.offset = start + failure.offset;
    error.reason = std::move(failure.reason);
    const char* const end = text.data() + error.offset;
    const char* lineStart = text.data() + start;
    error.line = 1;
    for(const char* p = lineStart; (p = static_cast<const char*>(std::memchr(p, '\n', end - p))); lineStart = ++p)
        ++error.line;
    error.column = std::size_t(end - lineStart) + 1;
    return false;
}

}
