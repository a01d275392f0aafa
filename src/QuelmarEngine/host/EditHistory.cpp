#include "QuelmarEngine/host/EditHistory.h"

#include <algorithm>
#include <Corrade/Utility/Assert.h>

namespace QuelmarEngine {

void EditHistory::clear() {
    _steps.clear();
    _position = 0;
    _savedSerial = 0;
    _savedLineage = 0;
    _baseSerial = 0;
    _byteCount = 0;
}

void EditHistory::add(std::string label, const std::size_t firstRecord, const std::size_t recordCount, const std::size_t byteCount) {
    dropUndone();
    _steps.push_back({std::move(label), ++_lastSerial, firstRecord, recordCount, byteCount});
    _byteCount += byteCount;
    ++_position;
}

std::size_t EditHistory::dropOldest(const std::size_t count) {
    CORRADE_ASSERT(count <= _position, "EditHistory::dropOldest(): only" << _position << "applied steps to drop", {});
    if(!count) return 0;
    const std::size_t records = _steps[count - 1].firstRecord + _steps[count - 1].recordCount - _steps[0].firstRecord;
    for(std::size_t i = 0; i != count; ++i) _byteCount -= _steps[i].byteCount;
    _baseSerial = _steps[count - 1].serial;
    _steps.erase(_steps.begin(), _steps.begin() + count);
    for(EditStep& step: _steps) step.firstRecord -= records;
    _position -= count;
    /* A saved state among the dropped steps is out of reach, unless it is
       the newest of them, the new oldest state */
    _savedLineage = _savedLineage >= count ? _savedLineage - count : 0;
    return records;
}

void EditHistory::dropUndone() {
    for(std::size_t i = _position; i < _steps.size(); ++i) _byteCount -= _steps[i].byteCount;
    _steps.resize(_position);
    _savedLineage = std::min(_savedLineage, _position);
}

void EditHistory::moveBack(const std::size_t count) {
    CORRADE_ASSERT(count <= _position, "EditHistory::moveBack(): only" << _position << "steps to undo", );
    _position -= count;
}

void EditHistory::moveForward(const std::size_t count) {
    CORRADE_ASSERT(count <= _steps.size() - _position, "EditHistory::moveForward(): only" << _steps.size() - _position << "steps to redo", );
    _position += count;
}

std::size_t EditHistory::appliedRecordCount() const {
    if(!_position) return 0;
    const EditStep& last = _steps[_position - 1];
    return last.firstRecord + last.recordCount;
}

std::size_t EditHistory::currentSerial() const {
    return _position ? _steps[_position - 1].serial : _baseSerial;
}

void EditHistory::markSaved() {
    _savedSerial = currentSerial();
    _savedLineage = _position;
}

bool EditHistory::isSaved() const {
    return currentSerial() == _savedSerial;
}

std::size_t EditHistory::savedPosition() const {
    /* Serials grow along the steps, so the saved step, if still there, ends
       the lineage */
    if(_savedSerial == _baseSerial) return 0;
    if(_savedLineage && _steps[_savedLineage - 1].serial == _savedSerial) return _savedLineage;
    return NotInHistory;
}

std::pair<std::size_t, std::size_t> EditHistory::unsavedSteps() const {
    const std::size_t saved = savedPosition();
    const std::size_t end = saved == NotInHistory ? _savedLineage : saved;
    return {std::min(_position, end), std::max(_position, end)};
}

}
