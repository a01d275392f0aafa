#ifndef QuelmarBenchmark_MapHistory_h
#define QuelmarBenchmark_MapHistory_h
/* The references the project is measured against: an edit history of
   path/old/new records built the same way on a map-based JSON document
   (nlohmann-json), and one on raw RapidJSON pointer operations. */

#include <cstddef>
#include <optional>
#include <string>
#include <vector>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

namespace QuelmarBenchmark {

class MapHistory {
    public:
        explicit MapHistory(const std::string& text): document(nlohmann::json::parse(text)) {}

        /* Sets @p path to @p value, or removes it when there is none */
        void push(const std::string& path, std::optional<nlohmann::json> value) {
            Record record{nlohmann::json::json_pointer{path}, {}, std::move(value)};
            if(document.contains(record.path)) record.oldValue = document.at(record.path);
            _records.erase(_records.begin() + _next, _records.end());
            _records.push_back(std::move(record));
            ++_next;
            apply(_records.back().path, _records.back().newValue);
        }

        void undo() {
            if(!_next) return;
            const Record& record = _records[--_next];
            apply(record.path, record.oldValue);
        }

        void redo() {
            if(_next == _records.size()) return;
            const Record& record = _records[_next++];
            apply(record.path, record.newValue);
        }

        nlohmann::json document;

    private:
        struct Record {
            nlohmann::json::json_pointer path;
            std::optional<nlohmann::json> oldValue, newValue;
        };

        void apply(const nlohmann::json::json_pointer& path, const std::optional<nlohmann::json>& value) {
            if(value) document[path] = *value;
            else document[path.parent_pointer()].erase(path.back());
        }

        std::vector<Record> _records;
        std::size_t _next{};
};

class PointerHistory {
    public:
        explicit PointerHistory(const std::string& text) { document.Parse(text.data()); }

        /* Sets @p path to @p value, or removes it when it is null */
        void push(const std::string& path, const rapidjson::Value* value) {
            Record record{rapidjson::Pointer{path.data()}, {}, {}, false, value != nullptr};
            if(const rapidjson::Value* const found = record.path.Get(document)) {
                record.oldValue.CopyFrom(*found, document.GetAllocator());
                record.hadOld = true;
            }
            if(value) record.newValue.CopyFrom(*value, document.GetAllocator());
            _records.erase(_records.begin() + _next, _records.end());
            _records.push_back(std::move(record));
            ++_next;
            const Record& pushed = _records.back();
            apply(pushed.path, pushed.hasNew ? &pushed.newValue : nullptr);
        }

        void undo() {
            if(!_next) return;
            const Record& record = _records[--_next];
            apply(record.path, record.hadOld ? &record.oldValue : nullptr);
        }

        void redo() {
            if(_next == _records.size()) return;
            const Record& record = _records[_next++];
            apply(record.path, record.hasNew ? &record.newValue : nullptr);
        }

        rapidjson::Document document;

    private:
        struct Record {
            rapidjson::Pointer path;
            rapidjson::Value oldValue, newValue;
            bool hadOld, hasNew;
        };

        void apply(const rapidjson::Pointer& path, const rapidjson::Value* value) {
            if(value) path.Set(document, *value);
            else path.Erase(document);
        }

        std::vector<Record> _records;
        std::size_t _next{};
};

}

#endif
