#include "embedded/storage/sqlite_counts.h"

#include <algorithm>

#include "embedded/storage/storage.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t mostChanges = 10000;
constexpr int greatestHeight = 12;

// In front of every entry; the first bucket of each level begins there.
const OrderPlace orderStart;

// Whether every parent begins with one of the children and counts what those up to the next parent do.
bool coverExactly(const std::vector<Bucket> &parents, const std::vector<Bucket> &children) {
    auto child = children.begin();
    for (size_t parent = 0; parent < parents.size(); ++parent) {
        if (child == children.end() || child->start != parents[parent].start)
            return false;
        bool isLast = parent + 1 == parents.size();
        uint64_t count = 0;
        for (; child != children.end() && (isLast || child->start < parents[parent + 1].start); ++child)
            count += child->count;
        if (count != parents[parent].count)
            return false;
    }
    return child == children.end();
}

}  // namespace

void SqliteCounts::load() {
    heights_ = {};
    isReshaped_ = false;
    buckets_.forgetOrders();
    if (database_.integer("SELECT 1 FROM sqlite_master WHERE name = 'counted_order'") == 0)
        return;
    Statement trees = database_.prepare("SELECT number, height FROM counted_order");
    while (trees.step()) {
        int64_t order = trees.integer(0);
        int64_t height = trees.integer(1);
        if (order < 0 || order > UINT8_MAX || height < 1 || height > greatestHeight)
            throwBucketDamage();
        heights_[static_cast<size_t>(order)] = static_cast<uint8_t>(height);
    }
}

void SqliteCounts::setHeight(uint8_t order, int height) {
    Statement set = database_.prepare(height == 0 ? "DELETE FROM counted_order WHERE number = ?1"
                                                  : "REPLACE INTO counted_order VALUES(?1, ?2)");
    set.bind(1, int64_t{order});
    if (height != 0)
        set.bind(2, int64_t{height});
    set.run();
    heights_[order] = static_cast<uint8_t>(height);
    isReshaped_ = true;
}

// Counting

uint64_t SqliteCounts::total(uint8_t order) {
    flush();
    return countAll(order);
}

uint64_t SqliteCounts::countAll(uint8_t order) {
    if (!isBuilt(order))
        return buckets_.countEntries(order);
    return buckets_.sum(order, heights_[order]);
}

uint64_t SqliteCounts::countInFront(uint8_t order, const OrderPlace &place) {
    flush();
    OrderPlace start = orderStart;
    uint64_t count = 0;
    for (int level = heights_[order]; level > 0; --level)
        count += buckets_.enter(order, level, place, &start);
    return count + buckets_.countBetween(order, start, place);
}

std::optional<OrderPlace> SqliteCounts::find(uint8_t order, uint64_t rank) {
    flush();
    OrderPlace start = orderStart;
    for (int level = heights_[order]; level > 0; --level)
        rank -= buckets_.enter(order, level, rank, &start);
    return buckets_.nth(order, 0, start, rank);
}

bool SqliteCounts::hasEntry(uint8_t order, const OrderPlace &place) {
    return buckets_.nth(order, 0, place, 0) == place;
}

// Upkeep

void SqliteCounts::build(uint8_t order) {
    database_.execute(
        "CREATE TABLE IF NOT EXISTS counted_order(number INTEGER PRIMARY KEY, height INTEGER NOT NULL)");
    buckets_.createTable();
    do
        addLevel(order);
    while (isTooWide(order));
}

// Whether the uppermost level has too many buckets.
bool SqliteCounts::isTooWide(uint8_t order) {
    return buckets_.nth(order, heights_[order], orderStart, limitsOfBuckets_.largest).has_value();
}

void SqliteCounts::addLevel(uint8_t order) {
    int height = heights_[order] + 1;
    buildLevel(order, height);
    setHeight(order, height);
}

void SqliteCounts::buildLevel(uint8_t order, int level) {
    uint64_t rows = limitsAt(level).built;
    uint64_t left = countAll(order);
    OrderPlace start = orderStart;
    for (;;) {
        std::optional<OrderPlace> next = buckets_.nth(order, level - 1, start, rows);
        uint64_t count = next ? buckets_.countUnder(order, level - 1, start, rows) : left;
        buckets_.insert(order, level, {start, count});
        if (!next)
            return;
        left -= count;
        start = std::move(*next);
    }
}

void SqliteCounts::drop(uint8_t order) {
    if (!isBuilt(order))
        return;
    changes_.erase(order);
    buckets_.eraseAll(order);
    setHeight(order, 0);
}

void SqliteCounts::change(uint8_t order, ByteView key, int64_t address, int64_t difference) {
    if (!isBuilt(order))
        return;
    changes_[order].push_back({{Bytes(key), address}, difference});
    if (++changeCount_ >= mostChanges)
        flush();
}

void SqliteCounts::rolledBack() {
    changes_.clear();
    changeCount_ = 0;
    isHalfCounted_ = false;
}

void SqliteCounts::flush() {
    if (isHalfCounted_)
        throwBucketDamage();
    if (changeCount_ == 0)
        return;
    isHalfCounted_ = true;
    for (auto &[order, changes] : changes_) {
        std::sort(changes.begin(), changes.end(),
                  [](const Change &one, const Change &other) { return one.place < other.place; });
        count(order, changes);
    }
    rolledBack();
}

// The tree takes its new shape when the counts of all levels are right.
void SqliteCounts::count(uint8_t order, const Changes &changes) {
    for (int level = heights_[order]; level > 1; --level)
        count(order, level, changes);
    for (const Bucket &bucket : count(order, 1, changes)) {
        if (bucket.count > limitsOfEntries_.largest || bucket.count <= limitsOfEntries_.smallest)
            reshape(order, bucket.start);
    }
}

// Returns the buckets that changed. The last change is looked up first: what follows the start of its bucket
// lies in it.
std::vector<Bucket> SqliteCounts::count(uint8_t order, int level, const Changes &changes) {
    std::vector<Bucket> changed;
    for (size_t left = changes.size(); left > 0;) {
        Bucket bucket = buckets_.bucketAt(order, level, changes[left - 1].place);
        do
            bucket.count += static_cast<uint64_t>(changes[--left].difference);
        while (left > 0 && changes[left - 1].place >= bucket.start);
        buckets_.setCount(order, level, bucket);
        changed.push_back(std::move(bucket));
    }
    return changed;
}

// Merges the bucket that a place now lies in if it is small, or splits it until none is too large.
void SqliteCounts::reshape(uint8_t order, const OrderPlace &start) {
    mergeSmall(order, 1, start);
    Bucket bucket = buckets_.bucketAt(order, 1, start);
    while (bucket.count > limitsOfEntries_.largest) {
        split(order, 1, bucket);
        std::optional<OrderPlace> rest = buckets_.nth(order, 1, bucket.start, 1);
        if (!rest)
            throwBucketDamage();
        bucket = buckets_.bucketAt(order, 1, *rest);
    }
}

void SqliteCounts::split(uint8_t order, int level, const Bucket &bucket) {
    uint64_t rows = limitsAt(level).split;
    std::optional<OrderPlace> middle = buckets_.nth(order, level - 1, bucket.start, rows);
    if (!middle)
        throwBucketDamage();
    uint64_t count = buckets_.countUnder(order, level - 1, bucket.start, rows);
    buckets_.setCount(order, level, {bucket.start, count});
    buckets_.insert(order, level, {*middle, bucket.count - count});
    if (level == heights_[order]) {
        if (isTooWide(order))
            addLevel(order);
        return;
    }
    Bucket parent = buckets_.bucketAt(order, level + 1, bucket.start);
    if (holdMore(order, level + 1, parent, parent, limitsOfBuckets_.largest))
        split(order, level + 1, parent);
}

// Merges the bucket that a place lies in with its neighbours for as long as it is small.
void SqliteCounts::mergeSmall(uint8_t order, int level, const OrderPlace &place) {
    bool goesOn = true;
    while (goesOn) {
        Bucket bucket = buckets_.bucketAt(order, level, place);
        bool isSmall = !holdMore(order, level, bucket, bucket, limitsAt(level).smallest);
        goesOn = isSmall && mergeWithNeighbour(order, level, bucket);
    }
}

// Only children of one parent are merged, so that every bucket begins where one of its children does.
bool SqliteCounts::mergeWithNeighbour(uint8_t order, int level, const Bucket &bucket) {
    std::optional<OrderPlace> next = buckets_.nth(order, level, bucket.start, 1);
    if (next && !isFirstChild(order, level, *next) &&
        merge(order, level, bucket, buckets_.bucketAt(order, level, *next)))
        return true;
    if (isFirstChild(order, level, bucket.start))
        return false;
    OrderPlace before = bucket.start;
    if (before.address <= 0)
        throwBucketDamage();
    --before.address;
    return merge(order, level, buckets_.bucketAt(order, level, before), bucket);
}

// Children that now meet, and the parent that lost one, may be merged in turn.
bool SqliteCounts::merge(uint8_t order, int level, const Bucket &left, const Bucket &right) {
    if (holdMore(order, level, left, right, limitsAt(level).merged))
        return false;
    buckets_.erase(order, level, right);
    buckets_.setCount(order, level, {left.start, left.count + right.count});
    if (level > 1)
        mergeSmall(order, level - 1, right.start);
    if (level < heights_[order])
        mergeSmall(order, level + 1, left.start);
    return true;
}

bool SqliteCounts::isFirstChild(uint8_t order, int level, const OrderPlace &start) {
    if (level == heights_[order])
        return start == orderStart;
    return buckets_.bucketAt(order, level + 1, start).start == start;
}

// Whether one bucket or two neighbours hold more than so many entries or buckets.
bool SqliteCounts::holdMore(uint8_t order, int level, const Bucket &first, const Bucket &last,
                            uint64_t rows) {
    if (level == 1)
        return first.count + (first.start == last.start ? 0 : last.count) > rows;
    std::optional<OrderPlace> child = buckets_.nth(order, level - 1, first.start, rows);
    return child && buckets_.bucketAt(order, level, *child).start <= last.start;
}

// Verification

bool SqliteCounts::areTrue() {
    flush();
    for (size_t order = 0; order < heights_.size(); ++order) {
        if (heights_[order] != 0 && !isTrue(static_cast<uint8_t>(order)))
            return false;
    }
    return true;
}

bool SqliteCounts::entriesAreCovered(uint8_t order, const std::vector<Bucket> &buckets) {
    uint64_t left = buckets_.countEntries(order);
    for (size_t bucket = 0; bucket + 1 < buckets.size(); ++bucket) {
        uint64_t count = buckets_.countBetween(order, buckets[bucket].start, buckets[bucket + 1].start);
        if (buckets[bucket].count != count)
            return false;
        left -= count;
    }
    return !buckets.empty() && buckets.front().start == orderStart && buckets.back().count == left;
}

bool SqliteCounts::isTrue(uint8_t order) {
    std::vector<Bucket> children = buckets_.bucketsOf(order, 1);
    if (!entriesAreCovered(order, children))
        return false;
    for (int level = 2; level <= heights_[order]; ++level) {
        std::vector<Bucket> parents = buckets_.bucketsOf(order, level);
        if (!coverExactly(parents, children))
            return false;
        children = std::move(parents);
    }
    return true;
}

}  // namespace vantrel::embedded
