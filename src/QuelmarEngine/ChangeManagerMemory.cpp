/* What the change history costs in memory: forgetting its oldest records, and
   moving the document with the values the history keeps into a fresh pool. */
#include "QuelmarEngine/ChangeManager.h"

#include <utility>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Utility/Assert.h>

#include "QuelmarEngine/Implementation/ChangeApplication.h"
#include "QuelmarEngine/host/ProjectFile.h"

namespace QuelmarEngine {

namespace {

/* The pool never frees, so overwriting the value leaves the old pool's copy
   untouched until that pool goes as a whole */
void rehome(rapidjson::Value& value, JsonAllocator& allocator) {
    if(!value.IsArray() && !value.IsObject() && !value.IsString()) return;
    rapidjson::Value copy{value, allocator};
    value = std::move(copy);
}

void rehome(Containers::Pointer<rapidjson::Value>& value, JsonAllocator& allocator) {
    if(value) rehome(*value, allocator);
}

}

void ChangeManager::dropOldest(const std::size_t count) {
    CORRADE_ASSERT(_group == -1, "ChangeManager::dropOldest(): a group is open", );
    CORRADE_ASSERT(std::int64_t(count) <= std::int64_t(_lastChange) + 1,
        "ChangeManager::dropOldest(): can't drop" << count << "records with only" << _lastChange + 1 << "applied", );
    if(!count) return;

    /* Moving assignments exchange, so the dropped records end up at the end
       and go with the resize */
    using std::swap;
    for(std::size_t i = count; i != _changes.size(); ++i) {
        _changes[i - count] = std::move(_changes[i]);
        swap(_applied[i - count], _applied[i]);
    }
    arrayResize(_changes, _changes.size() - count);
    arrayResize(_applied, _applied.size() - count);
    _lastChange -= std::int32_t(count);
    /* The state after the last dropped record is now the one before all */
    if(_savedChange >= std::int32_t(count) - 1) _savedChange -= std::int32_t(count);
    else _savedChange = SavedStateDropped;
}

void ChangeManager::compactPool() {
    CORRADE_ASSERT(_project, "ChangeManager::compactPool(): no project file", );
    CORRADE_ASSERT(_group == -1, "ChangeManager::compactPool(): a group is open", );

    rapidjson::Document& document = *_project->document;
    rapidjson::Document fresh;
    JsonAllocator& allocator = fresh.GetAllocator();
    fresh.CopyFrom(document, allocator);
    for(Change& change: _changes) {
        rehome(change.oldValue, allocator);
        rehome(change.newValue, allocator);
    }
    for(Implementation::AppliedChange& applied: _applied) {
        rehome(applied.name, allocator);
        rehome(applied.spare, allocator);
        rehome(applied.old, allocator);
    }
    /* The document object stays, holding the fresh pool; the old pool goes
       with the temporary */
    document.Swap(fresh);
    _project->documentChanged();
}

}
