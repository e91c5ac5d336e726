#ifndef VANTREL_TESTS_EMBEDDED_MODEL_FILE_STATE_H
#define VANTREL_TESTS_EMBEDDED_MODEL_FILE_STATE_H

#include <optional>
#include <set>

#include "definition.h"

namespace vantrel::test {

using Address = VantrelCursorPosition;

// One change of a record, and the session that made it. No number is given twice.
struct Change {
    uint64_t number;
    uint32_t session;

    bool operator==(const Change &) const = default;
};

using History = std::vector<Change>;

// Deleted records stay, so that it is known who deleted them.
struct Record {
    Bytes bytes;
    History history;
    bool isDeleted = false;
};

// A place in an index. Without an address it lies at the key but on no record: all records of that key are
// beside it rather than before or behind.
struct IndexPlace {
    Bytes key;
    std::optional<Address> address;
};

struct IndexStatistics {
    VantrelIndex number;
    IndexDefinition definition;
    int64_t uniqueCount;
};

// The contents of a file at one moment, as plain lists that are scanned from end to end.
class FileState {
  public:
    explicit FileState(const FileDefinition &definition) : definition_(definition) {}

    const IndexDefinition *index(VantrelIndex number) const;
    const std::map<VantrelIndex, IndexDefinition> &indexes() const { return definition_.indexes; }
    const Record *record(Address address) const;
    bool exists(Address address) const;
    Address lastAddress() const { return lastAddress_; }
    std::vector<Address> addresses() const;

    void insert(Address address, const Bytes &bytes, Change change);
    void update(Address address, const Bytes &bytes, Change change);
    void remove(Address address, Change change);

    bool takesLength(size_t length) const;
    // Whether another record has one of these bytes' keys in a unique index.
    bool hasDuplicate(const Bytes &bytes, std::optional<Address> except) const;
    // Whether an index that does not allow it gets another key value, or the same value in other bytes.
    bool changesFixedKey(Address address, const Bytes &bytes) const;
    bool rewritesFixedKey(Address address, const Bytes &bytes) const;

    // Gives the status of creating the index.
    VantrelStatus createIndex(VantrelIndex number, const IndexDefinition &index);
    void dropIndex(VantrelIndex number) { definition_.indexes.erase(number); }
    std::vector<IndexStatistics> statistics() const;

    // The nearest record behind or before a place, or the outermost one without a place.
    std::optional<Address> following(VantrelIndex number, const std::optional<IndexPlace> &place) const;
    std::optional<Address> preceding(VantrelIndex number, const std::optional<IndexPlace> &place) const;
    std::optional<Address> firstEqual(VantrelIndex number, const Bytes &key) const;
    std::optional<Address> lastEqual(VantrelIndex number, const Bytes &key) const;
    std::optional<Address> following(std::optional<Address> address) const;
    std::optional<Address> preceding(std::optional<Address> address) const;

  private:
    // The records that have an entry in the index, in the order of their addresses.
    std::vector<Address> entries(const IndexDefinition &index) const;
    Bytes keyAt(const IndexDefinition &index, Address address) const;
    int compareWithPlace(const IndexDefinition &index, Address address, const IndexPlace &place) const;
    bool stands(const IndexDefinition &index, Address first, Address second) const;

    FileDefinition definition_;
    std::map<Address, Record> records_;
    Address lastAddress_ = 0;
};

}  // namespace vantrel::test

#endif
