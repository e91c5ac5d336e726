#ifndef VANTREL_EMBEDDED_OPERATION_RECORD_CHANGE_H
#define VANTREL_EMBEDDED_OPERATION_RECORD_CHANGE_H

#include <optional>
#include <vector>

#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// A record that already has the key, and the index that allows no duplicates of it.
struct DuplicateKey {
    int64_t address;
    uint8_t index;
};

// Bytes put in the place of others in the tail of a long record.
struct TailEdit {
    uint64_t offset = 0;
    uint64_t removed = 0;
    ByteView inserted;
};

// Inserts, updates and deletes records together with their index entries, inside a write transaction. Each
// change is checked in whole before its first write: `prepare...` returns or throws what forbids it, and
// `apply` then writes.
class RecordChange {
  public:
    explicit RecordChange(Storage &storage);

    // Autoincrement fields of zero and empty automatic timestamps are filled in the record.
    std::optional<DuplicateKey> prepareInsert(Bytes &record);
    // A changed key that is not modifiable is thrown as status 10.
    std::optional<DuplicateKey> prepareUpdate(const StoredRecord &old, ByteView record);
    // Only part of the record changes: its new head and length, and what happens to its tail.
    std::optional<DuplicateKey> prepareEdit(const StoredRecord &old, ByteView head, uint64_t length,
                                            const TailEdit &tail);
    void prepareDelete(const StoredRecord &old);

    // Returns the record's address and version afterwards.
    struct Applied {
        int64_t address;
        uint64_t version;
    };
    Applied apply();

    const StoredRecord &record() const { return record_; }
    // The new record's entry in an index; null where it has none.
    const Bytes *newKey(uint8_t index) const;

  private:
    // What happens to one index.
    struct EntryChange {
        const IndexDefinition *index;
        std::optional<size_t> countSlot;  // none for system indexes, whose keys are unique by nature
        bool erases = false, inserts = false;
        bool keyExisted = false;
        Bytes oldKey, newKey;
    };
    enum class Kind { insert, update, erase };

    void prepareEntries(const StoredRecord *old, const StoredRecord *record);
    void prepareEntry(const IndexDefinition &index, std::optional<size_t> countSlot, const StoredRecord *old,
                      const StoredRecord *record);
    bool keysDiffer(const IndexDefinition &index, const StoredRecord *old, const StoredRecord *record);
    std::optional<DuplicateKey> findDuplicate(int64_t ownAddress);
    void applyEntries();
    void eraseEntry(const EntryChange &entry);
    void insertEntry(const EntryChange &entry);
    void fillAutomaticFields(Bytes &record);

    Storage &storage_;
    std::shared_ptr<const FileDefinition> definition_;
    Kind kind_ = Kind::insert;
    int64_t address_ = 0;
    uint64_t time_ = 0;
    StoredRecord record_;
    TailEdit tail_;
    std::vector<EntryChange> entries_;
};

}  // namespace vantrel::embedded

#endif
