/* What --json prints: one JSON document per command, on one line of the
   standard output. */
#include "JsonOutput.h"

#include <iostream>

#include "QuelmarEngine/JsonWriter.h"

namespace quelmar {

JsonOutput::JsonOutput() {
    _document.SetObject();
}

JsonOutput& JsonOutput::add(rapidjson::Value& object, const char* const name, rapidjson::Value&& value) {
    object.AddMember(rapidjson::StringRef(name), value, allocator());
    return *this;
}

JsonOutput& JsonOutput::set(const char* const name, rapidjson::Value&& value) {
    return add(_document, name, std::move(value));
}

rapidjson::Value JsonOutput::string(const std::string& text) {
    return rapidjson::Value{text.data(), rapidjson::SizeType(text.size()), allocator()};
}

rapidjson::Value JsonOutput::stringOrNull(const std::string* const text) {
    return text ? string(*text) : rapidjson::Value{};
}

rapidjson::Value JsonOutput::strings(const std::vector<std::string>& texts) {
    rapidjson::Value array{rapidjson::kArrayType};
    array.Reserve(rapidjson::SizeType(texts.size()), allocator());
    for(const std::string& text: texts) array.PushBack(string(text), allocator());
    return array;
}

void JsonOutput::print() const {
    std::cout << QuelmarEngine::writeJson(_document) << std::endl;
}

}
