#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_COUNTS_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_COUNTS_H

#include <array>
#include <map>
#include <optional>
#include <vector>

#include "embedded/storage/sqlite_buckets.h"

namespace vantrel::embedded {

// How many rows of the level below a bucket covers.
struct BucketLimits {
    uint64_t largest;
    uint64_t built;
    uint64_t split;  // the left one of the two that a split makes
    uint64_t merged;
    uint64_t smallest;
};

// How many entries of an order stand in front of a place, and what stands at a rank. An order is counted by
// a tree of buckets once it is built: those of level 1 hold runs of entries, those above runs of the buckets
// below, each with the place where it begins and the number of entries it covers. An order without a tree is
// counted entry by entry.
class SqliteCounts {
  public:
    explicit SqliteCounts(Database &database, const BucketLimits &entries = {256, 192, 128, 128, 64},
                          const BucketLimits &buckets = {128, 96, 64, 64, 32})
        : database_(database), limitsOfEntries_(entries), limitsOfBuckets_(buckets) {}

    // Learns which orders have trees, as of the snapshot or write transaction that has begun.
    void load();
    bool isBuilt(uint8_t order) const { return heights_[order] != 0; }
    // Whether the write transaction changed what other connections have loaded.
    bool isReshaped() const { return isReshaped_; }

    uint64_t total(uint8_t order);
    uint64_t countInFront(uint8_t order, const OrderPlace &place);
    // Nothing where the order has fewer entries.
    std::optional<OrderPlace> find(uint8_t order, uint64_t rank);
    bool hasEntry(uint8_t order, const OrderPlace &place);

    // Inside a write transaction.
    void build(uint8_t order);
    void drop(uint8_t order);
    // An entry was inserted or deleted. What orders with a tree are told is collected and counted later.
    void inserted(uint8_t order, ByteView key, int64_t address) { change(order, key, address, 1); }
    void deleted(uint8_t order, ByteView key, int64_t address) { change(order, key, address, -1); }
    // Counts what was collected, at the latest before the commit.
    void flush();
    void committed() { isReshaped_ = false; }
    void rolledBack();

    // Whether every tree is true to the entries.
    bool areTrue();

  private:
    struct Change {
        OrderPlace place;
        int64_t difference;
    };
    using Changes = std::vector<Change>;

    const BucketLimits &limitsAt(int level) const { return level == 1 ? limitsOfEntries_ : limitsOfBuckets_; }
    void setHeight(uint8_t order, int height);
    uint64_t countAll(uint8_t order);
    void change(uint8_t order, ByteView key, int64_t address, int64_t difference);
    void count(uint8_t order, const Changes &changes);
    std::vector<Bucket> count(uint8_t order, int level, const Changes &changes);
    void reshape(uint8_t order, const OrderPlace &start);
    void buildLevel(uint8_t order, int level);
    bool isTooWide(uint8_t order);
    void addLevel(uint8_t order);
    void split(uint8_t order, int level, const Bucket &bucket);
    void mergeSmall(uint8_t order, int level, const OrderPlace &place);
    bool mergeWithNeighbour(uint8_t order, int level, const Bucket &bucket);
    bool merge(uint8_t order, int level, const Bucket &left, const Bucket &right);
    bool isFirstChild(uint8_t order, int level, const OrderPlace &start);
    bool holdMore(uint8_t order, int level, const Bucket &first, const Bucket &last, uint64_t rows);
    bool isTrue(uint8_t order);
    bool entriesAreCovered(uint8_t order, const std::vector<Bucket> &buckets);

    Database &database_;
    SqliteBuckets buckets_{database_};
    BucketLimits limitsOfEntries_, limitsOfBuckets_;
    std::array<uint8_t, 256> heights_{};  // by order, 0 without a tree
    bool isReshaped_ = false;
    std::map<uint8_t, Changes> changes_;  // of the write transaction, not counted yet
    size_t changeCount_ = 0;
    bool isHalfCounted_ = false;  // after a failure
};

}  // namespace vantrel::embedded

#endif
