#include "embedded/storage/sqlite_storage.h"
#include "vantrel.h"

// The part of the storage that tells ranks.

namespace vantrel::embedded {

// What is counted from here on is as of one snapshot. Counts of what a transaction changed are written first.
void SqliteStorage::beginCounting(uint8_t order) {
    beginReading();
    requireTransaction();
    if (!counts_.isBuilt(order) && !writing_ && sqlite3_db_readonly(database_.get(), "main") == 0) {
        buildCounts(order);
        beginReading();
    }
    if (order != physicalOrder && !hasIndex(order))
        throw StatusError{VANTREL_STATUS_INVALID_INDEX_NUMBER};
}

// Where it fails, entries are counted one by one.
void SqliteStorage::buildCounts(uint8_t order) {
    try {
        begin(Waiting::no, TransactionPart::none);
        if (!counts_.isBuilt(order) && (order == physicalOrder || hasIndex(order)))
            counts_.build(order);
        // The record locks of a transaction, which knows nothing of this one, stay.
        commitChanges();
        endCommit(Durability::soon);
    } catch (...) {
        if (writing_)
            rollback();
    }
}

// Before the commit. Other connections learn with the definition which orders are counted.
void SqliteStorage::finishCounts() {
    counts_.flush();
    if (!counts_.isReshaped())
        return;
    database_.execute("UPDATE definition SET generation = generation + 1 WHERE id = 1");
    generation_ = database_.integer("SELECT generation FROM definition WHERE id = 1");
}

std::optional<Rank> SqliteStorage::rankOf(uint8_t order, ByteView key, int64_t address) {
    beginCounting(order);
    OrderPlace place{Bytes(key), address};
    if (!counts_.hasEntry(order, place))
        return std::nullopt;
    return Rank{counts_.countInFront(order, place), counts_.total(order)};
}

bool SqliteStorage::findAtRank(uint8_t order, const RankChoice &choice, StoredEntry *found) {
    beginCounting(order);
    uint64_t total = counts_.total(order);
    if (total == 0)
        return false;
    std::optional<OrderPlace> place = counts_.find(order, choice(total));
    if (!place || !takeRecordAt(place->address, &found->record))
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    placeAtRank_ = std::move(*place);
    found->key = placeAtRank_.key;
    return true;
}

}  // namespace vantrel::embedded
