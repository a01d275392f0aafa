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

/* Records and the cursor between done and undone ones; @p Derived applies
   a record's old or new value to its document */
template<class Derived, class Record> class History {
    public:
        void undo() {
            if(_next) static_cast<Derived&>(*this).apply(_records[--_next], true);
        }

        void redo() {
            if(_next != _records.size()) static_cast<Derived&>(*this).apply(_records[_next++], false);
        }

    protected:
        void add(Record&& record) {
            _records.erase(_records.begin() + _next, _records.end());
            _records.push_back(std::move(record));
            static_cast<Derived&>(*this).apply(_records[_next++], false);
        }

    private:
        std::vector<Record> _records;
        std::size_t _next{};
};

struct MapRecord {
    nlohmann::json::json_pointer path;
    std::optional<nlohmann::json> oldValue, newValue;
};

class MapHistory: public History<MapHistory, MapRecord> {
    public:
        explicit MapHistory(const std::string& text): document(nlohmann::json::parse(text)) {}

        /* Sets @p path to @p value, or removes it when there is none */
        void push(const std::string& path, std::optional<nlohmann::json> value) {
            MapRecord record{nlohmann::json::json_pointer{path}, {}, std::move(value)};
            if(document.contains(record.path)) record.oldValue = document.at(record.path);
            add(std::move(record));
        }

        void apply(const MapRecord& record, const bool old) {
            const std::optional<nlohmann::json>& value = old ? record.oldValue : record.newValue;
            if(value) document[record.path] = *value;
            else document[record.path.parent_pointer()].erase(record.path.back());
        }

        nlohmann::json document;
};

struct PointerRecord {
    rapidjson::Pointer path;
    rapidjson::Value oldValue, newValue;
    bool hadOld, hasNew;
};

class PointerHistory: public History<PointerHistory, PointerRecord> {
    public:
        explicit PointerHistory(const std::string& text) { document.Parse(text.data()); }

        /* Sets @p path to @p value, or removes it when it is null */
        void push(const std::string& path, const rapidjson::Value* value) {
            PointerRecord record{rapidjson::Pointer{path.data()}, {}, {}, false, value != nullptr};
            if(const rapidjson::Value* const found = record.path.Get(document)) {
                record.oldValue.CopyFrom(*found, document.GetAllocator());
                record.hadOld = true;
            }
            if(value) record.newValue.CopyFrom(*value, document.GetAllocator());
            add(std::move(record));
        }

        void apply(const PointerRecord& record, const bool old) {
            if(old ? record.hadOld : record.hasNew) record.path.Set(document, old ? record.oldValue : record.newValue);
            else record.path.Erase(document);
        }

        rapidjson::Document document;
};

}

#endif
