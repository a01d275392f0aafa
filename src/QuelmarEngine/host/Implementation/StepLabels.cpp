#include "QuelmarEngine/host/Implementation/StepLabels.h"

#include "QuelmarEngine/JsonWriter.h"

namespace QuelmarEngine { namespace Implementation {

namespace {

constexpr std::size_t LongestValue = 40;

}

std::string labelWord(const Containers::StringView text) {
    bool plain = !text.isEmpty();
    for(std::size_t i = 0; plain && i != text.size(); ++i) {
        const unsigned char c = text.data()[i];
        plain = c > ' ' && c != '"' && c != '\'' && c != '\\' && c != ';' && c != 0x7f;
    }
    if(plain) return {text.data(), text.size()};
    return writeJson(rapidjson::Value{rapidjson::StringRef(text.data(), text.size())});
}

std::string labelValue(const rapidjson::Value& value) {
    std::string json = writeJson(value);
    if(json.size() <= LongestValue) return json;
    /* Cut at the start of a UTF-8 sequence, never inside one */
    std::size_t end = LongestValue;
    while(end && (static_cast<unsigned char>(json[end]) & 0xc0) == 0x80) --end;
    json.resize(end);
    return json + "...";
}

}}
