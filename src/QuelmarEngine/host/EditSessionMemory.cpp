/* The edit session's memory: the history's byte budget and moving the
   document with its history into a fresh pool. */
#include "QuelmarEngine/host/EditSession.h"

#include <algorithm>

#include "QuelmarEngine/ChangeManager.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace QuelmarEngine {

void EditSession::setHistoryBudget(const std::size_t bytes) {
    expectHistoryInStep("EditSession::setHistoryBudget():");
    _historyBudget = bytes;
    keepWithinBudget();
}

void EditSession::keepWithinBudget() {
    if(_history.byteCount() <= _historyBudget) return;
    /* Down to seven eighths, so that a history at its budget doesn't shift
       every record at every step */
    const std::size_t target = _historyBudget - _historyBudget/8;
    const auto steps = _history.steps();
    std::size_t count = 0;
    for(std::size_t bytes = _history.byteCount(); count + 1 < _history.position() && bytes > target; ++count)
        bytes -= steps[count].byteCount;
    _editor.changeManager->dropOldest(_history.dropOldest(count));
    /* The journal's replay keeps the steps; the history just no longer leads to them */
    if(_mirrorStart >= count) _mirrorStart -= count;
    else {
        _mirrorCount -= std::min(_mirrorCount, count - _mirrorStart);
        _mirrorStart = 0;
    }
}

std::size_t EditSession::poolSize() const {
    /* Reading the size changes nothing; RapidJSON has no const accessor */
    return const_cast<rapidjson::Document&>(*_editor.data.project.document).GetAllocator().Size();
}

std::size_t EditSession::poolWaste() const {
    const std::size_t live = _poolBaseline + _history.byteCount();
    const std::size_t size = poolSize();
    return size > live ? size - live : 0;
}

void EditSession::compact(const FreedMemory freed) {
    expectHistoryInStep("EditSession::compact():");
    _editor.changeManager->compactPool();
#ifdef __GLIBC__
    /* The old pool's chunks are too small for the C library to give back to
       the system on its own */
    if(freed == FreedMemory::Release) malloc_trim(0);
#else
    static_cast<void>(freed);
#endif
    const std::size_t size = poolSize();
    _poolBaseline = size > _history.byteCount() ? size - _history.byteCount() : 0;
}

bool EditSession::compactIfWasteful(const FreedMemory freed) {
    const std::size_t waste = poolWaste();
    if(waste <= (poolSize() - waste)/2) return false;
    compact(freed);
    return true;
}

}
