#include "QuelmarEngine/JsonReader.h"

#include <cstring>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <Corrade/Utility/Format.h>

namespace QuelmarEngine {

namespace {

/* Forwards to the document's own handler and stops the parse when the
   nesting gets too deep */
struct DepthLimiter {
    rapidjson::Document& document;
    unsigned maxDepth;
    unsigned depth{};
    bool tooDeep{};

    bool Null() { return document.Null(); }
    bool Bool(bool b) { return document.Bool(b); }
    bool Int(int i) { return document.Int(i); }
    bool Uint(unsigned i) { return document.Uint(i); }
    bool Int64(std::int64_t i) { return document.Int64(i); }
    bool Uint64(std::uint64_t i) { return document.Uint64(i); }
    bool Double(double d) { return document.Double(d); }
    bool RawNumber(const char* str, rapidjson::SizeType length, bool copy) { return document.RawNumber(str, length, copy); }
    bool String(const char* str, rapidjson::SizeType length, bool copy) { return document.String(str, length, copy); }
    bool Key(const char* str, rapidjson::SizeType length, bool copy) { return document.Key(str, length, copy); }
    bool StartObject() { return enter() && document.StartObject(); }
    bool EndObject(rapidjson::SizeType count) { --depth; return document.EndObject(count); }
    bool StartArray() { return enter() && document.StartArray(); }
    bool EndArray(rapidjson::SizeType count) { --depth; return document.EndArray(count); }

    bool enter() {
        if(++depth <= maxDepth) return true;
        tooDeep = true;
        return false;
    }
};

struct Generator {
    Containers::StringView text;
    unsigned maxDepth;
    rapidjson::ParseResult result;
    bool tooDeep{};

    bool operator()(rapidjson::Document& document) {
        DepthLimiter limiter{document, maxDepth};
        rapidjson::MemoryStream stream{text.data(), text.size()};
        rapidjson::Reader reader;
        /* Full precision: the default conversion is off by an ulp for about a
           quarter of all doubles, which would drift every number that goes
           through a save and a load, or a copy and a paste */
        result = reader.Parse<rapidjson::kParseIterativeFlag|rapidjson::kParseFullPrecisionFlag>(stream, limiter);
        tooDeep = limiter.tooDeep;
        return !result.IsError();
    }
};

}

bool parseJson(rapidjson::Document& document, const Containers::StringView text, JsonParseError& error, const unsigned maxDepth) {
    /* The stream reads a NUL byte as the end of the text, which would let
       anything after it through unread */
    if(const void* nul = std::memchr(text.data(), 0, text.size())) {
        document.SetNull();
        error = {std::size_t(static_cast<const char*>(nul) - text.data()), "unexpected NUL byte"};
        return false;
    }

    Generator generator{text, maxDepth, {}};
    document.Populate(generator);
    if(!generator.result.IsError()) return true;

    document.SetNull();
    error.offset = generator.result.Offset();
    if(generator.tooDeep)
        error.reason = Utility::format("nested deeper than {} levels", maxDepth);
    else
        error.reason = rapidjson::GetParseError_En(generator.result.Code());
    return false;
}

}
