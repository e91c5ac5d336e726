#ifndef VANTREL_EMBEDDED_OPERATION_RECORD_SCAN_H
#define VANTREL_EMBEDDED_OPERATION_RECORD_SCAN_H

#include "embedded/expression/key_range.h"
#include "embedded/expression/request.h"
#include "embedded/operation/session.h"

namespace vantrel::embedded {

// Which way a scan goes: along an index, or in physical order.
struct ScanWay {
    bool isPhysical;
    Direction direction;
};

// Examines records one after another, from where a request begins, and finds those that pass its filter.
class RecordScan {
  public:
    // Throws 8, 6 or 7 where the position does not stand on the index, and 21 for a short key. The request
    // outlives the scan.
    RecordScan(Position &position, const Request &request, ExtendedRequest &extended, ScanWay way);

    // The next record that passes. The scan stays in front of it until it is examined, so that it may be
    // asked for again. Otherwise returns why there is none: 4, 9, 60 or 64.
    int32_t findNext(StoredEntry *found);
    // The record found last, as far as the request looks into it.
    const RecordView &view() const { return view_; }
    void examine(const StoredEntry &entry);
    void examineDeleted(const StoredEntry &entry);

    // Makes the last record examined the position's place, and its current record unless it was deleted. The
    // scan has ended then.
    void movePosition() noexcept;

  private:
    void checkStart();
    int32_t findFirst(StoredEntry *found);
    int32_t findFirstRecord(StoredEntry *found);
    int32_t findFirstEntry(StoredEntry *found);
    void look(StoredEntry *found);
    bool findBeside(ByteView key, int64_t address, StoredEntry *found);
    int32_t enterRange(StoredEntry *found);
    bool isInFrontOfRange(ByteView key) const;
    bool isBehindRange(ByteView key) const;
    int64_t startAddress(int64_t current) const;
    bool isForward() const { return way_.direction == Direction::forward; }

    Position &position_;
    Storage &storage_;
    ExtendedRequest &extended_;
    ScanWay way_;
    std::shared_ptr<const IndexDefinition> index_;  // null in physical order
    Bytes startKey_;
    KeyRange range_;
    size_t reach_;
    RecordView view_;
    Bytes joinedBytes_;
    Bytes joinedKey_;

    // The last record examined.
    bool hasExamined_ = false;
    bool wasDeleted_ = false;
    Bytes key_;
    int64_t address_ = 0;
    uint64_t version_ = 0;
    uint32_t rejected_ = 0;
};

}  // namespace vantrel::embedded

#endif
