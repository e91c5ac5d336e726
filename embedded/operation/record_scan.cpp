#include "embedded/operation/record_scan.h"

#include <algorithm>

#include "embedded/key/encoding.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/read.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

int32_t foundOrEnd(bool isFound) {
    return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
}

// The single read that finds the same record.
uint16_t searchOf(Start start) {
    switch (start) {
        case Start::equal:
            return codeGetEqual;
        case Start::greater:
            return codeGetGreater;
        case Start::less:
            return codeGetLess;
        case Start::greaterOrEqual:
            return codeGetGreaterOrEqual;
        default:
            return codeGetLessOrEqual;
    }
}

bool startsAtPosition(Start start) {
    return start == Start::current || start == Start::behindCurrent;
}

}  // namespace

RecordScan::RecordScan(Position &position, const Request &request, ExtendedRequest &extended, ScanWay way)
    : position_(position),
      storage_(position.file->storage()),
      extended_(extended),
      way_(way),
      reach_(std::max(extended.filter.reach(), extended.extractor.reach())) {
    if (!way.isPhysical) {
        require(request.keyNumber != VANTREL_INDEX_NONE, VANTREL_STATUS_POSITION_NOT_SET);
        index_ = position.file->index(request.keyNumber);
        range_ = keyRangeOf(extended.filter, *index_);
    }
    checkStart();
    if (startsAtKey(extended.start))
        appendEncodedKey(*index_, keyBytes(request, index_->keyLength), startKey_);
}

void RecordScan::checkStart() {
    if (!startsAtPosition(extended_.start))
        return;
    if (index_ == nullptr) {
        require(position_.physical.has_value(), VANTREL_STATUS_POSITION_NOT_SET);
        return;
    }
    require(position_.logical.has_value(), VANTREL_STATUS_POSITION_NOT_SET);
    require(position_.logical->index == index_->number, VANTREL_STATUS_DIFFERENT_INDEX_NUMBER);
}

// The place in front of the current record where the scan begins with it, else its own.
int64_t RecordScan::startAddress(int64_t current) const {
    if (extended_.start == Start::behindCurrent)
        return current;
    if (isForward())
        return current - 1;
    return current == behindAllAddresses ? current : current + 1;
}

int32_t RecordScan::findFirst(StoredEntry *found) {
    if (index_ == nullptr)
        return findFirstRecord(found);
    int32_t status = findFirstEntry(found);
    bool isInFront = status == VANTREL_STATUS_NO_ERROR && isInFrontOfRange(found->key);
    return isInFront ? enterRange(found) : status;
}

int32_t RecordScan::findFirstRecord(StoredEntry *found) {
    switch (extended_.start) {
        case Start::first:
            return foundOrEnd(storage_.findRecord(Direction::forward, 0, &found->record));
        case Start::last:
            return foundOrEnd(storage_.findRecord(Direction::backward, behindAllAddresses, &found->record));
        default:
            return foundOrEnd(findBeside({}, startAddress(*position_.physical), found));
    }
}

int32_t RecordScan::findFirstEntry(StoredEntry *found) {
    switch (extended_.start) {
        case Start::first:
            return foundOrEnd(storage_.findEntry(index_->number, Direction::forward, {}, 0, found));
        case Start::last:
            return foundOrEnd(storage_.findLastEntry(index_->number, found));
        case Start::current:
        case Start::behindCurrent: {
            const LogicalPlace &place = *position_.logical;
            return foundOrEnd(findBeside(place.key, startAddress(place.address), found));
        }
        default:
            return searchKey(storage_, searchOf(extended_.start), index_->number, startKey_, found);
    }
}

// The next record in the scan's direction.
bool RecordScan::findBeside(ByteView key, int64_t address, StoredEntry *found) {
    if (index_ == nullptr)
        return storage_.findRecord(way_.direction, address, &found->record);
    return storage_.findEntry(index_->number, way_.direction, key, address, found);
}

int32_t RecordScan::enterRange(StoredEntry *found) {
    return foundOrEnd(findBeside(isForward() ? range_.from : *range_.to, 0, found));
}

bool RecordScan::isInFrontOfRange(ByteView key) const {
    return !range_.isEmpty && (isForward() ? range_.isBelow(key) : range_.isAbove(key));
}

bool RecordScan::isBehindRange(ByteView key) const {
    return range_.isEmpty || (isForward() ? range_.isAbove(key) : range_.isBelow(key));
}

int32_t RecordScan::findNext(StoredEntry *found) {
    for (;;) {
        int32_t status = hasExamined_ ? foundOrEnd(findBeside(key_, address_, found)) : findFirst(found);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        if (index_ != nullptr && isBehindRange(found->key))
            return VANTREL_STATUS_OPTIMIZE_LIMIT_REACHED;
        look(found);
        if (extended_.filter.passes(view_))
            return VANTREL_STATUS_NO_ERROR;
        examine(*found);
        if (++rejected_ == extended_.rejectLimit)
            return VANTREL_STATUS_REJECT_COUNT_REACHED;
    }
}

// Where the request looks behind the head of a long record, head and tail are put together. Reading the tail
// ends the validity of what was found, which is kept here instead.
void RecordScan::look(StoredEntry *found) {
    StoredRecord &record = found->record;
    view_ = {record.data, record.createTime, record.updateTime};
    auto length = static_cast<size_t>(std::min<uint64_t>(reach_, record.length));
    if (length <= record.data.size())
        return;
    joinedKey_.assign(found->key);
    joinedBytes_.assign(record.data);
    joinedBytes_.resize(length);
    storage_.readTail(record.address, 0, length - headSize, joinedBytes_.data() + headSize);
    found->key = joinedKey_;
    record.data = ByteView(joinedBytes_).substr(0, headSize);
    view_.data = joinedBytes_;
}

void RecordScan::examine(const StoredEntry &entry) {
    key_.assign(entry.key);
    hasExamined_ = true;
    wasDeleted_ = false;
    address_ = entry.record.address;
    version_ = entry.record.updateTime;
}

void RecordScan::examineDeleted(const StoredEntry &entry) {
    examine(entry);
    wasDeleted_ = true;
}

void RecordScan::movePosition() noexcept {
    if (!hasExamined_)
        return;
    if (index_ != nullptr)
        position_.logical = LogicalPlace{index_->number, std::move(key_), address_};
    position_.setCurrent(address_, version_);
    if (wasDeleted_)
        position_.clearCurrent();
}

}  // namespace vantrel::embedded
