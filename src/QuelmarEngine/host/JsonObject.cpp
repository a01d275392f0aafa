#include "QuelmarEngine/host/JsonObject.h"

#include <cstring>
#include <string>
#include <utility>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/host/ProjectFile.h"

namespace QuelmarEngine {

namespace {

Containers::Array<char> copyPath(const Containers::StringView path) {
    Containers::Array<char> out{ValueInit, path.size() + 1};
    if(path.size()) std::memcpy(out.data(), path.data(), path.size());
    return out;
}

}

JsonObject::JsonObject(ProjectFile& project): JsonObject{project, ""} {}

JsonObject::JsonObject(ProjectFile& project, const Containers::StringView path): _project{&project}, _path{copyPath(path)}, _pathLength{path.size()} {}

JsonObject::JsonObject(const JsonObject& other): _project{other._project}, _path{copyPath({other._path.data(), other._pathLength})}, _pathLength{other._pathLength} {}

JsonObject::~JsonObject() = default;

rapidjson::Value* JsonObject::value() const {
    const JsonPointer pointer{{_path.data(), _pathLength}};
    return pointer.isValid() ? pointer.get(*_project->document, &_project->memberIndex()) : nullptr;
}

void JsonObject::setValue(rapidjson::Value&& value) {
    const JsonPointer pointer{{_path.data(), _pathLength}};
    CORRADE_INTERNAL_ASSERT(pointer.isValid());
    pointer.create(*_project->document, _project->allocator(), nullptr, &_project->memberIndex()) = std::move(value);
    _project->valueChanged(pointer);
}

bool JsonObject::exists() const {
    return value();
}

bool JsonObject::asBool() const {
    const rapidjson::Value* const v = value();
    return v && v->IsBool() && v->GetBool();
}

const char* JsonObject::asString() const {
    const rapidjson::Value* const v = value();
    return v && v->IsString() ? v->GetString() : nullptr;
}

std::size_t JsonObject::size() const {
    const rapidjson::Value* const v = value();
    return v && v->IsArray() ? v->Size() : 0;
}

const rapidjson::Value& JsonObject::readValue() const {
    static const rapidjson::Value null;
    const rapidjson::Value* const v = value();
    return v ? *v : null;
}

void JsonObject::setString(const char* const value, bool) {
    setValue(rapidjson::Value{value, rapidjson::SizeType(std::strlen(value)), _project->allocator()});
}

void JsonObject::setString(const Containers::String& value, bool) {
    setValue(rapidjson::Value{value.data(), rapidjson::SizeType(value.size()), _project->allocator()});
}

void JsonObject::setNull(bool) {
    setValue(rapidjson::Value{});
}

ValueAccess::ValueAccess(const SubValueAccess& other): JsonObject{other} {}

ValueAccess::ValueAccess(const ValueAccess& other): JsonObject{other} {}

ValueAccess::~ValueAccess() = default;

SubValueAccess ValueAccess::operator[](const char* const key) const {
    return subValue(key);
}

SubValueAccess ValueAccess::operator[](const int index) const {
    std::string path{_path.data(), _pathLength};
    path += '/';
    path += std::to_string(index);
    return SubValueAccess{*_project, {path.data(), path.size()}};
}

SubValueAccess ValueAccess::subValue(const char* const key) const {
    std::string path{_path.data(), _pathLength};
    appendPointerToken(path, key);
    return SubValueAccess{*_project, {path.data(), path.size()}};
}

Containers::StringView ValueAccess::path() const {
    return {_path.data(), _pathLength, Containers::StringViewFlag::NullTerminated};
}

}
