#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_BUCKETS_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_BUCKETS_H

#include <compare>
#include <map>
#include <optional>
#include <vector>

#include "embedded/storage/sqlite_database.h"

namespace vantrel::embedded {

// Where an entry stands in an order of the file: an index, or the physical order, whose keys are empty.
struct OrderPlace {
    Bytes key;
    int64_t address = 0;

    auto operator<=>(const OrderPlace &) const = default;
};

// A run of entries from a place to where the next bucket of its level begins.
struct Bucket {
    OrderPlace start;
    uint64_t count = 0;
};

[[noreturn]] void throwBucketDamage();

// The rows of an order's levels: buckets from level 1 on, and the entries themselves at level 0.
class SqliteBuckets {
  public:
    explicit SqliteBuckets(Database &database) : database_(database) {}

    void createTable();
    // Indexes may have gone or come.
    void forgetOrders() { entries_.clear(); }

    // The row that follows the first one at or behind a place after so many others.
    std::optional<OrderPlace> nth(uint8_t order, int level, const OrderPlace &from, uint64_t number);
    uint64_t countBetween(uint8_t order, const OrderPlace &from, const OrderPlace &to);
    uint64_t countEntries(uint8_t order);
    // The entries that so many rows of a level cover.
    uint64_t countUnder(uint8_t order, int level, const OrderPlace &from, uint64_t rows);
    uint64_t sum(uint8_t order, int level);

    // The bucket that a place lies in.
    Bucket bucketAt(uint8_t order, int level, const OrderPlace &place);
    std::vector<Bucket> bucketsOf(uint8_t order, int level);
    void insert(uint8_t order, int level, const Bucket &bucket);
    void setCount(uint8_t order, int level, const Bucket &bucket);
    void erase(uint8_t order, int level, const Bucket &bucket);
    void eraseAll(uint8_t order);

    // Moves the start of a bucket on to the one of the same level that has the place, or the entry that
    // stands so far behind. Returns the count of those between.
    uint64_t enter(uint8_t order, int level, const OrderPlace &place, OrderPlace *start);
    uint64_t enter(uint8_t order, int level, uint64_t rank, OrderPlace *start);

  private:
    struct EntryStatements {
        Statement nth, between, total;
    };

    EntryStatements &entriesOf(uint8_t order);
    Statement &prepared(Statement &statement, const char *sql);
    Statement &bucketsFrom(uint8_t order, int level, const OrderPlace &from);

    Database &database_;
    std::map<uint8_t, EntryStatements> entries_;
    Statement nth_, bucketAt_, bucketsFrom_, sum_, insert_, setCount_, erase_;
};

}  // namespace vantrel::embedded

#endif
