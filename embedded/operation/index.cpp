#include <algorithm>

#include "embedded/operation/key_only.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/record_key.h"
#include "embedded/operation/reply.h"
#include "embedded/operation/structure.h"

namespace vantrel::embedded {

namespace {

constexpr int32_t namesIndexNumber = 0x80;
constexpr size_t batchBytes = size_t{16} << 20;

struct Entry {
    Bytes key;
    int64_t address;

    bool operator<(const Entry &other) const {
        int order = key.compare(other.key);
        return order != 0 ? order < 0 : address < other.address;
    }
};

uint8_t lowestFreeNumber(const FileDefinition &definition) {
    uint8_t number = 0;
    for (const IndexDefinition &index : definition.indexes) {
        if (index.number != number)
            break;
        ++number;
    }
    return number;
}

// The definition with the index in its place, which is returned too.
size_t addIndex(FileDefinition &definition, IndexDefinition index) {
    auto place =
        std::lower_bound(definition.indexes.begin(), definition.indexes.end(), index.number,
                         [](const IndexDefinition &other, uint8_t number) { return other.number < number; });
    if (place != definition.indexes.end() && place->number == index.number)
        throw StatusError{VANTREL_STATUS_INVALID_INDEX_NUMBER};
    place = definition.indexes.insert(place, std::move(index));
    return static_cast<size_t>(place - definition.indexes.begin());
}

// Builds the entries of a new index from the existing records, sorted in batches so that neighbours are
// written together.
class IndexBuilder {
  public:
    IndexBuilder(Position &position, const IndexDefinition &index)
        : position_(position), storage_(position.file->storage()), index_(index) {}

    // Returns the number of unique values; a duplicate where none is allowed is thrown as status 5.
    uint64_t build() {
        StoredRecord record;
        int64_t address = 0;
        while (storage_.findRecord(Direction::forward, address, &record)) {
            address = record.address;
            collect(record);
            if (collected_ >= batchBytes)
                flush();
        }
        flush();
        return uniqueCount_;
    }

  private:
    void collect(const StoredRecord &record) {
        Entry entry{{}, record.address};
        if (!encodedKeyOf(index_, record, entry.key))
            return;
        collected_ += entry.key.size() + sizeof(Entry);
        batch_.push_back(std::move(entry));
    }

    void flush() {
        std::sort(batch_.begin(), batch_.end());
        for (const Entry &entry : batch_)
            write(entry);
        batch_.clear();
        collected_ = 0;
    }

    void write(const Entry &entry) {
        int64_t existing = storage_.firstAddress(index_.number, entry.key);
        if (existing == 0) {
            ++uniqueCount_;
        } else if (index_.unique) {
            position_.conflictAddress = existing;
            position_.conflictIndex = index_.number;
            throw StatusError{VANTREL_STATUS_DUPLICATE_KEY_VALUE};
        }
        storage_.insertEntry(index_.number, entry.key, entry.address);
    }

    Position &position_;
    Storage &storage_;
    const IndexDefinition &index_;
    std::vector<Entry> batch_;
    size_t collected_ = 0;
    uint64_t uniqueCount_ = 0;
};

}  // namespace

int32_t createIndex(Session &session, Request &request) {
    Position &position = positionForStructure(session, request);
    Storage &storage = position.file->storage();
    StructuralChange change(storage);
    FileDefinition definition = *storage.definition();
    IndexRequest requested = parseIndexRequest(dataBytes(request, request.offered), definition);
    requested.index.number = (request.keyNumber & namesIndexNumber) != 0 ? namedIndexNumber(request.keyNumber)
                                                                         : lowestFreeNumber(definition);
    if (requested.registered != nullptr)
        definition.collations.push_back(requested.registered);
    uint8_t number = requested.index.number;
    size_t slot = addIndex(definition, std::move(requested.index));

    FileState state = storage.state();
    storage.createIndexTable(number);
    storage.writeDefinition(definition);
    uint64_t uniqueCount = IndexBuilder(position, definition.indexes[slot]).build();
    state.uniqueCounts.insert(state.uniqueCounts.begin() + static_cast<ptrdiff_t>(slot), uniqueCount);
    storage.state() = state;
    change.commit();
    return VANTREL_STATUS_NO_ERROR;
}

int32_t dropIndex(Session &session, Request &request) {
    Position &position = positionForStructure(session, request);
    Storage &storage = position.file->storage();
    StructuralChange change(storage);
    FileDefinition definition = *storage.definition();
    auto dropped =
        std::find_if(definition.indexes.begin(), definition.indexes.end(),
                     [&](const IndexDefinition &index) { return index.number == request.keyNumber; });
    if (dropped == definition.indexes.end())
        return VANTREL_STATUS_INVALID_INDEX_NUMBER;
    checkDropFromKeyOnly(definition, *dropped);
    auto slot = dropped - definition.indexes.begin();
    storage.dropIndexTable(dropped->number);
    definition.indexes.erase(dropped);
    storage.writeDefinition(definition);
    storage.state().uniqueCounts.erase(storage.state().uniqueCounts.begin() + slot);
    change.commit();
    for (Position *other : position.file->positions()) {
        if (other->logical && other->logical->index == request.keyNumber)
            other->logical.reset();
    }
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
