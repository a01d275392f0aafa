#include "QuelmarEngine/JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <Corrade/Utility/DebugStl.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace QuelmarEngine {

namespace {

/* RapidJSON's own double formatting is round-trip safe but not always the
   shortest; std::to_chars is both */
template<class Base> struct ShortestNumbers: Base {
    using Base::Base;

    bool Double(const double d) {
        if(!std::isfinite(d)) return Base::Null();
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof(buffer) - 2, d);
        char* end = result.ptr;
        /* Keep it a double when read back: 1.0 must not turn into 1 */
        if(!std::memchr(buffer, '.', end - buffer) && !std::memchr(buffer, 'e', end - buffer)) {
            *end++ = '.';
            *end++ = '0';
        }
        return Base::RawValue(buffer, rapidjson::SizeType(end - buffer), rapidjson::kNumberType);
    }
};

}

std::string writeJson(const rapidjson::Value& value, const JsonLayout layout) {
    rapidjson::StringBuffer buffer;
    if(layout == JsonLayout::Compact) {
        ShortestNumbers<rapidjson::Writer<rapidjson::StringBuffer>> writer{buffer};
        value.Accept(writer);
    } else {
        ShortestNumbers<rapidjson::PrettyWriter<rapidjson::StringBuffer>> writer{buffer};
        writer.SetIndent(' ', 2);
        writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
        value.Accept(writer);
    }
    return std::string{buffer.GetString(), buffer.GetSize()};
}

}

namespace rapidjson {

Corrade::Utility::Debug& operator<<(Corrade::Utility::Debug& debug, const Value& value) {
    return debug << QuelmarEngine::writeJson(value);
}

}
