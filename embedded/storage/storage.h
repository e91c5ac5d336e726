#ifndef VANTREL_EMBEDDED_STORAGE_STORAGE_H
#define VANTREL_EMBEDDED_STORAGE_STORAGE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "embedded/cipher/owner.h"
#include "embedded/key/specification.h"
#include "embedded/status_error.h"

// The narrow interface between the operations and whatever keeps the records: tables of records by address
// and of index entries by key and address, read in snapshots and changed in transactions.

namespace vantrel::embedded {

// A record as stored. The bytes stay valid until the next call of the storage.
struct StoredRecord {
    int64_t address = 0;
    uint64_t createTime = 0;
    uint64_t updateTime = 0;  // unique in the file, and so the version of the record
    ByteView data;            // the head; the tail of a long record is read by itself
    uint64_t length = 0;      // of head and tail
};

// As much of a record as its head holds.
inline constexpr uint64_t headSize = 65535;

// An entry of an index, with its record. The bytes stay valid until the next call of the storage.
struct StoredEntry {
    ByteView key;  // encoded
    StoredRecord record;
};

enum class Direction { forward, backward };

// Stands for the physical order where otherwise an index is named.
inline constexpr uint8_t physicalOrder = 255;

// How many entries of an index, or records in physical order, stand in front of one, and how many there are.
struct Rank {
    uint64_t inFront;
    uint64_t total;
};
// Chooses among so many entries; there is at least one.
using RankChoice = std::function<uint64_t(uint64_t total)>;

// Whether a transaction waits for another one to end.
enum class Waiting { yes, no };

// What a write transaction is part of: a change by itself, or a session's transaction, in which the file is
// the first one taken or a further one.
enum class TransactionPart { none, first, further };

// Whether a commit returns only when it survives power loss.
enum class Durability { synced, soon };

// What is kept for a file as a whole; changed inside a write transaction and committed with it.
struct FileState {
    uint64_t recordCount = 0;
    int64_t lastAddress = 0;
    uint64_t lastTime = 0;
    std::vector<uint64_t> uniqueCounts;  // of the definition's indexes, in its order

    bool operator==(const FileState &) const = default;
};

// Keeps the writers of a file apart. A write transaction begins inside `enter`, which calls `begin` until it
// returns true, and throws where another writer is in the way too long; `leave` follows its end, and
// `committed` a successful one before that.
class WriteGate {
  public:
    virtual ~WriteGate() = default;
    virtual void enter(Waiting waiting, const std::function<bool()> &begin) = 0;
    // Nothing may fail behind a commit.
    virtual void committed() noexcept = 0;
    virtual void leave() noexcept = 0;
};

struct StorageOptions {
    bool readOnly = false;
    bool accelerated = false;
    WriteGate *writeGate = nullptr;  // needed for write transactions
    ByteView ownerName = {};         // needed for encrypted files only; it is not kept
};

// Failures are thrown as StatusError.
class Storage {
  public:
    virtual ~Storage() = default;

    // The definition as of the snapshot that is being read.
    virtual std::shared_ptr<const FileDefinition> definition() = 0;

    // The first entry behind (before, when going backward) a key and address of an index. Entries of equal
    // keys stand in the order of their addresses; an empty key stands before all others.
    virtual bool findEntry(uint8_t index, Direction direction, ByteView key, int64_t address,
                           StoredEntry *found) = 0;
    virtual bool findLastEntry(uint8_t index, StoredEntry *found) = 0;
    // The lowest address under a key, 0 where there is none.
    virtual int64_t firstAddress(uint8_t index, ByteView key) = 0;

    // The record at an address, or the first one behind or before it.
    virtual bool readRecord(int64_t address, StoredRecord *found) = 0;
    virtual bool findRecord(Direction direction, int64_t address, StoredRecord *found) = 0;

    // The rank of an entry, nothing where it does not exist, and the entry at a rank, false where there are
    // none at all. The first request for an index or the physical order prepares the file to answer the
    // others at logarithmic cost, unless it cannot be written now.
    virtual std::optional<Rank> rankOf(uint8_t order, ByteView key, int64_t address) = 0;
    virtual bool findAtRank(uint8_t order, const RankChoice &choice, StoredEntry *found) = 0;

    // Copies bytes that lie behind the head of a record, from an offset behind the head.
    virtual void readTail(int64_t address, uint64_t offset, uint64_t length, char *target) = 0;

    virtual FileState readState() = 0;
    virtual uint64_t unusedBytes() = 0;

    // A write transaction keeps all other writers out; reads see its changes until it ends.
    virtual void begin(Waiting waiting, TransactionPart part = TransactionPart::none) = 0;
    virtual void commit(Durability durability) = 0;
    virtual void rollback() = 0;
    virtual bool isWriting() const = 0;
    // A failure inside a write transaction, of a read too, can have taken it back already. All that is left
    // to do then is to end it; changes and the commit are refused as input/output errors.
    virtual bool hasLostChanges() const = 0;

    // Inside a write transaction.
    virtual FileState &state() = 0;
    virtual void insertRecord(const StoredRecord &record) = 0;
    // Writes time, head and length; a tail changes by itself.
    virtual void updateRecord(const StoredRecord &record) = 0;
    virtual void replaceInTail(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted) = 0;
    virtual void deleteRecord(int64_t address) = 0;
    virtual void insertEntry(uint8_t index, ByteView key, int64_t address) = 0;
    virtual void deleteEntry(uint8_t index, ByteView key, int64_t address) = 0;
    virtual void createIndexTable(uint8_t index) = 0;
    virtual void dropIndexTable(uint8_t index) = 0;
    // Other sessions see a new definition when their next read begins.
    virtual void writeDefinition(const FileDefinition &definition) = 0;

    // True where nobody has committed since the snapshot that is being read began.
    virtual bool snapshotIsCurrent() = 0;
    // Lets the snapshot go, so that old versions can be dropped; the next read takes a new one.
    virtual void releaseSnapshot() = 0;
    // Makes all that is committed survive power loss.
    virtual void sync() = 0;
    virtual bool hasUnsyncedCommits() const = 0;
    // Brings a long log into the file where nobody has committed since this was called last.
    virtual void checkpointIfIdle() = 0;
    // Goes on with what commits over several files have left to do, as far as that is possible without
    // waiting; not inside a write transaction.
    virtual void settle() = 0;
    // Whether a commit over several files has left the file's part of it to do.
    virtual bool isPending() const = 0;
    // Without effect inside a write transaction.
    virtual void setAccelerated(bool accelerated) = 0;
    // Damage is thrown as an input/output error.
    virtual void verify() = 0;

    // None where the file has no owner.
    virtual std::optional<OwnerMode> owner() = 0;
    // What giving this name, or none, allows; where that is nothing, status 51 is thrown.
    virtual Access authenticate(ByteView name) = 0;
    // Inside a write transaction, of a file that is not encrypted and stays so.
    virtual void setOwner(const NewOwner &owner) = 0;
    virtual void clearOwner() = 0;
    // Copies the whole file while nobody changes it: encrypted for the owner, or plain without one.
    virtual void writeCopy(const std::string &path, const NewOwner *owner) = 0;

    // Gives up everything in a forked child without touching what the parent still uses.
    virtual void abandon() = 0;
};

std::unique_ptr<Storage> openStorage(const std::string &path, const StorageOptions &options);

// Keeps the bytes of a file on disk as they are, while work on it goes on in its log.
class Freeze {
  public:
    virtual ~Freeze() = default;
    // Lets the changes made meanwhile into the file.
    virtual void end() = 0;
    // As for a storage.
    virtual void abandon() = 0;
};

// All that was committed is in it. Status 85 is thrown where a transaction holds the file.
std::unique_ptr<Freeze> freezeStorage(const std::string &path);

// Commits the write transactions of several files durably, begun in this order as first and further ones: all
// of them or, where a failure is thrown, none. What could not be brought into a file any more is there when
// the file is read or written next, whoever does so. Transactions without a change stay open.
void commitTogether(const std::vector<Storage *> &storages);

// Commits the write transaction of one file. One that fails does not come back after a crash where the disk
// still takes a small commit in its place.
void commitAlone(Storage &storage, Durability durability);

// Nobody has the files open that these make, replace, remove or rename.
void createStorage(const std::string &path, const FileDefinition &definition);
// Whatever is no file of this format is thrown as status 30. Owners' names are not asked for.
void requireStorage(const std::string &path);
void removeStorage(const std::string &path);
void moveStorage(const std::string &from, const std::string &to);

// Where a copy stands that is to replace its file. Left-over ones are removed whenever the file is opened.
std::string copyPath(const std::string &path);
void removeLeftCopy(const std::string &path);
// In one step; the storages that have the file open go on with the old content.
void replaceByCopy(const std::string &path);
// Makes the last replacement of a file in its directory survive power loss.
void syncDirectoryOf(const std::string &path);

}  // namespace vantrel::embedded

#endif
