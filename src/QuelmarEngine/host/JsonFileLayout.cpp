#include "QuelmarEngine/host/JsonFileLayout.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "QuelmarEngine/JsonPointer.h"
#include "QuelmarEngine/JsonReader.h"

namespace QuelmarEngine {

namespace {

bool isWhitespace(const char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/* An object or array that the scan is inside of */
struct Frame {
    /* Length of the path of the container around it */
    std::size_t parentPathSize;
    /* Exceptions found inside it start here */
    std::size_t firstException;
    std::size_t line;
    std::uint32_t elementCount;
    bool isObject;
    bool holdsContainer;
};

/* Scans valid JSON text once, keeping the path of the container it is in */
class LayoutScanner {
    public:
        explicit LayoutScanner(const Containers::StringView text): _p{text.data()}, _end{text.data() + text.size()} {}

        JsonFileLayout scan() {
            static const char ByteOrderMark[]{'\xef', '\xbb', '\xbf'};
            if(_end - _p >= 3 && std::memcmp(_p, ByteOrderMark, 3) == 0) {
                _layout.byteOrderMark = true;
                _p += 3;
            }
            if(const char* const lineFeed = static_cast<const char*>(std::memchr(_p, '\n', _end - _p)))
                if(lineFeed != _p && lineFeed[-1] == '\r') _layout.lineEnd = "\r\n";
            const char* last = _end;
            while(last != _p && isWhitespace(last[-1])) --last;
            _layout.finalLineEnd = std::memchr(last, '\n', _end - last) != nullptr;

            while(_p != _end) step();
            for(auto& exception: _exceptions) _layout.exceptions.insert(std::move(exception));
            return std::move(_layout);
        }

    private:
        void step() {
            const char c = *_p;
            if(c == '\n') {
                ++_line;
                ++_p;
                lineStart();
            } else if(isWhitespace(c)) ++_p;
            else if(c == '{' || c == '[') open(c == '{');
            else if(c == '}' || c == ']') close();
            else if(c == '"') string();
            else if(c == ':' || c == ',') separator(c);
            /* A number, true, false or null */
            else {
                valueStarts();
                while(_p != _end && !isWhitespace(*_p) && *_p != ',' && *_p != ']' && *_p != '}') ++_p;
            }
        }

        /* The first line that holds a member of the root tells the step */
        void lineStart() {
            if(_indentFound || _stack.size() != 1) return;
            const char* p = _p;
            while(p != _end && (*p == ' ' || *p == '\t')) ++p;
            if(p == _end || isWhitespace(*p) || *p == '}' || *p == ']') return;
            _layout.indent.assign(_p, p);
            _indentFound = true;
        }

        void separator(const char c) {
            ++_p;
            if(c == ':') _expectKey = false;
            else if(!_stack.empty() && _stack.back().isObject) _expectKey = true;

            const char next = _p == _end ? '\n' : *_p;
            if(c == ':' && !_colonFound) {
                _layout.spaceAfterColon = next == ' ';
                _colonFound = true;
            } else if(c == ',' && !_commaFound && next != '\n' && next != '\r') {
                /* Trailing spaces before a line end say nothing */
                const char* p = _p;
                while(p != _end && (*p == ' ' || *p == '\t')) ++p;
                if(p != _end && *p != '\n' && *p != '\r') {
                    _layout.spaceAfterComma = next == ' ';
                    _commaFound = true;
                }
            }
        }

        void valueStarts() {
            if(!_stack.empty()) ++_stack.back().elementCount;
        }

        void string() {
            const char* const start = _p++;
            bool escaped = false;
            while(*_p != '"') {
                if(*_p == '\\') {
                    escaped = true;
                    ++_p;
                }
                ++_p;
            }
            ++_p;
            if(_stack.empty() || !_stack.back().isObject || !_expectKey) {
                valueStarts();
                return;
            }
            /* Escapes in a member name are rare; the reader decodes them */
            if(!escaped) _key.assign(start + 1, _p - 1);
            else {
                rapidjson::Document name;
                JsonParseError error;
                parseJson(name, {start, std::size_t(_p - start)}, error);
                _key.assign(name.GetString(), name.GetStringLength());
            }
        }

        void open(const bool isObject) {
            const std::size_t parentPathSize = _path.size();
            if(!_stack.empty()) {
                Frame& parent = _stack.back();
                parent.holdsContainer = true;
                if(parent.isObject) appendPointerToken(_path, {_key.data(), _key.size()});
                else {
                    char digits[16];
                    const auto result = std::to_chars(digits, digits + sizeof(digits), parent.elementCount);
                    _path += '/';
                    _path.append(digits, result.ptr);
                }
                valueStarts();
            }
            _stack.push_back({parentPathSize, _exceptions.size(), _line, 0, isObject, false});
            _expectKey = isObject;
            ++_p;
        }

        void close() {
            ++_p;
            const Frame frame = _stack.back();
            _stack.pop_back();
            const bool isEmpty = !frame.elementCount;
            const bool oneLine = frame.line == _line;
            /* Everything inside a container on one line is on that line */
            if(oneLine) _exceptions.resize(frame.firstException);
            const bool byDefault = !frame.isObject && !frame.holdsContainer;
            if(!isEmpty && oneLine != byDefault) _exceptions.emplace_back(_path, oneLine);
            _path.resize(frame.parentPathSize);
            _expectKey = false;
        }

        const char* _p;
        const char* const _end;
        JsonFileLayout _layout;
        std::vector<Frame> _stack;
        std::vector<std::pair<std::string, bool>> _exceptions;
        std::string _path, _key;
        std::size_t _line{};
        bool _expectKey{}, _indentFound{}, _colonFound{}, _commaFound{};
};

bool isContainer(const rapidjson::Value& value) {
    return value.IsObject() || value.IsArray();
}

void appendNumber(std::string& out, const rapidjson::Value& value) {
    char buffer[40];
    char* end;
    if(value.IsInt64()) end = std::to_chars(buffer, buffer + sizeof(buffer), value.GetInt64()).ptr;
    else if(value.IsUint64()) end = std::to_chars(buffer, buffer + sizeof(buffer), value.GetUint64()).ptr;
    else {
        const double d = value.GetDouble();
        if(!std::isfinite(d)) {
            out += "null";
            return;
        }
        end = std::to_chars(buffer, buffer + sizeof(buffer) - 2, d).ptr;
        /* A double stays one when read back: 4.0, as a file may have it,
           doesn't turn into 4 */
        if(!std::memchr(buffer, '.', end - buffer) && !std::memchr(buffer, 'e', end - buffer)) {
            *end++ = '.';
            *end++ = '0';
        }
    }
    out.append(buffer, end);
}

/* Escapes as the compact writer does: quotes, backslashes and control
   characters, nothing else */
void appendString(std::string& out, const char* const data, const std::size_t size) {
    static const char Hex[] = "0123456789ABCDEF";
    out += '"';
    for(std::size_t i = 0; i != size; ++i) {
        const unsigned char c = data[i];
        if(c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if(c >= 0x20) out += char(c);
        else if(c == '\b') out += "\\b";
        else if(c == '\f') out += "\\f";
        else if(c == '\n') out += "\\n";
        else if(c == '\r') out += "\\r";
        else if(c == '\t') out += "\\t";
        else {
            out += "\\u00";
            out += Hex[c >> 4];
            out += Hex[c & 0xf];
        }
    }
    out += '"';
}

class LayoutWriter {
    public:
        explicit LayoutWriter(const JsonFileLayout& layout, std::string& out): _layout{layout}, _out{out} {}

        void value(const rapidjson::Value& value, const std::size_t depth, const bool inLine) {
            if(value.IsObject()) object(value, depth, inLine);
            else if(value.IsArray()) array(value, depth, inLine);
            else if(value.IsString()) appendString(_out, value.GetString(), value.GetStringLength());
            else if(value.IsNumber()) appendNumber(_out, value);
            else if(value.IsBool()) _out += value.GetBool() ? "true" : "false";
            else _out += "null";
        }

    private:
        bool isOneLine(const rapidjson::Value& value, const bool inLine) const {
            if(inLine) return true;
            bool byDefault = value.IsArray();
            if(byDefault) for(const rapidjson::Value& element: value.GetArray())
                if(isContainer(element)) {
                    byDefault = false;
                    break;
                }
            if(_layout.exceptions.empty()) return byDefault;
            const auto found = _layout.exceptions.find(_path);
            return found == _layout.exceptions.end() ? byDefault : found->second;
        }

        /* Before member or element @p i of a container */
        void separate(const std::size_t i, const std::size_t depth, const bool oneLine) {
            if(i) _out += ',';
            if(oneLine) {
                if(i && _layout.spaceAfterComma) _out += ' ';
                return;
            }
            _out += _layout.lineEnd;
            for(std::size_t d = 0; d != depth; ++d) _out += _layout.indent;
        }

        void end(const std::size_t depth, const bool oneLine, const char bracket) {
            if(!oneLine) {
                _out += _layout.lineEnd;
                for(std::size_t d = 0; d != depth; ++d) _out += _layout.indent;
            }
            _out += bracket;
        }

        /* Writes @p child, a member or an element, with its path kept */
        template<class Token> void child(const rapidjson::Value& child, const Token& token, const std::size_t depth, const bool oneLine) {
            if(!isContainer(child) || oneLine) {
                value(child, depth, oneLine);
                return;
            }
            const std::size_t size = _path.size();
            token(_path);
            value(child, depth, false);
            _path.resize(size);
        }

        void object(const rapidjson::Value& object, const std::size_t depth, const bool inLine) {
            if(!object.MemberCount()) {
                _out += "{}";
                return;
            }
            const bool oneLine = isOneLine(object, inLine);
            _out += '{';
            std::size_t i = 0;
            for(auto member = object.MemberBegin(); member != object.MemberEnd(); ++member, ++i) {
                separate(i, depth + 1, oneLine);
                appendString(_out, member->name.GetString(), member->name.GetStringLength());
                _out += _layout.spaceAfterColon ? ": " : ":";
                child(member->value, [&](std::string& path) {
                    appendPointerToken(path, {member->name.GetString(), member->name.GetStringLength()});
                }, depth + 1, oneLine);
            }
            end(depth, oneLine, '}');
        }

        void array(const rapidjson::Value& array, const std::size_t depth, const bool inLine) {
            if(array.Empty()) {
                _out += "[]";
                return;
            }
            const bool oneLine = isOneLine(array, inLine);
            _out += '[';
            for(rapidjson::SizeType i = 0; i != array.Size(); ++i) {
                separate(i, depth + 1, oneLine);
                child(array[i], [&](std::string& path) {
                    char digits[16];
                    const auto result = std::to_chars(digits, digits + sizeof(digits), i);
                    path += '/';
                    path.append(digits, result.ptr);
                }, depth + 1, oneLine);
            }
            end(depth, oneLine, ']');
        }

        const JsonFileLayout& _layout;
        std::string& _out;
        std::string _path;
};

}

JsonFileLayout detectJsonFileLayout(const Containers::StringView text) {
    return LayoutScanner{text}.scan();
}

std::string writeJsonFile(const rapidjson::Value& value, const JsonFileLayout& layout) {
    std::string out;
    if(layout.byteOrderMark) out += "\xef\xbb\xbf";
    LayoutWriter{layout, out}.value(value, 0, false);
    if(layout.finalLineEnd) out += layout.lineEnd;
    return out;
}

}
