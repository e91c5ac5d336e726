#include "embedded/operation/record_change.h"

#include <algorithm>
#include <ctime>

#include "embedded/key/little_endian.h"
#include "embedded/operation/record_key.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint64_t ticksPerSecond = 10'000'000;
constexpr uint64_t unixEpochTicks = 621'355'968'000'000'000;

// Times are versions too, so that no two changes of a file may have the same.
uint64_t nextTime(uint64_t lastTime) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    uint64_t ticks = unixEpochTicks + static_cast<uint64_t>(now.tv_sec) * ticksPerSecond +
                     static_cast<uint64_t>(now.tv_nsec) / 100;
    return std::max(ticks, lastTime + 1);
}

bool isZero(ByteView bytes) {
    return bytes.find_first_not_of('\0') == ByteView::npos;
}

// The highest value of an index whose first segment is the field, plus one.
uint64_t nextAutoincrement(Storage &storage, const IndexDefinition &index) {
    const KeySegment &field = index.segments.front();
    StoredEntry entry;
    bool isFound = field.descending ? storage.findEntry(index.number, Direction::forward, {}, 0, &entry)
                                    : storage.findLastEntry(index.number, &entry);
    int64_t highest = isFound ? loadSigned(entry.record.data.substr(field.offset, field.length)) : 0;
    uint64_t next = highest < 0 ? 1 : static_cast<uint64_t>(highest) + 1;
    if (next >> (8 * field.length - 1) != 0)
        throw StatusError{VANTREL_STATUS_AUTOINCREMENT_ERROR};
    return next;
}

TailEdit wholeTailOf(const StoredRecord &record) {
    return {0, record.length - record.data.size(), {}};
}

}  // namespace

RecordChange::RecordChange(Storage &storage)
    : storage_(storage), definition_(storage.definition()), time_(nextTime(storage.state().lastTime)) {}

std::optional<DuplicateKey> RecordChange::prepareInsert(Bytes &record) {
    kind_ = Kind::insert;
    address_ = storage_.state().lastAddress + 1;
    fillAutomaticFields(record);
    record_ = {address_, time_, time_, record, record.size()};
    prepareEntries(nullptr, &record_);
    return findDuplicate(0);
}

std::optional<DuplicateKey> RecordChange::prepareUpdate(const StoredRecord &old, ByteView record) {
    return prepareEdit(old, record, record.size(), wholeTailOf(old));
}

std::optional<DuplicateKey> RecordChange::prepareEdit(const StoredRecord &old, ByteView head, uint64_t length,
                                                      const TailEdit &tail) {
    kind_ = Kind::update;
    address_ = old.address;
    tail_ = tail;
    record_ = {address_, old.createTime, time_, head, length};
    prepareEntries(&old, &record_);
    for (const EntryChange &entry : entries_) {
        if (!entry.index->modifiable)
            throw StatusError{VANTREL_STATUS_MODIFIABLE_KEY_VALUE_ERROR};
    }
    return findDuplicate(old.address);
}

void RecordChange::prepareDelete(const StoredRecord &old) {
    kind_ = Kind::erase;
    address_ = old.address;
    tail_ = wholeTailOf(old);
    prepareEntries(&old, nullptr);
}

void RecordChange::fillAutomaticFields(Bytes &record) {
    for (const IndexDefinition &index : definition_->indexes) {
        for (const KeySegment &segment : index.segments) {
            bool isAutoincrement =
                segment.type == KeyType::autoincrement && &segment == &index.segments.front();
            bool isAutoTimestamp = segment.type == KeyType::autoTimestamp;
            if (!(isAutoincrement || isAutoTimestamp) ||
                !isZero(ByteView(record).substr(segment.offset, segment.length)))
                continue;
            storeNumber(isAutoincrement ? nextAutoincrement(storage_, index) : time_,
                        record.data() + segment.offset, segment.length);
        }
    }
}

bool RecordChange::keysDiffer(const IndexDefinition &index, const StoredRecord *old,
                              const StoredRecord *record) {
    if (old == nullptr || record == nullptr || index.source == KeySource::updateTime)
        return true;
    if (index.source == KeySource::createTime)
        return false;
    return std::any_of(index.segments.begin(), index.segments.end(), [&](const KeySegment &segment) {
        return old->data.substr(segment.offset, segment.length) !=
               record->data.substr(segment.offset, segment.length);
    });
}

void RecordChange::prepareEntry(const IndexDefinition &index, std::optional<size_t> countSlot,
                                const StoredRecord *old, const StoredRecord *record) {
    if (!keysDiffer(index, old, record))
        return;
    EntryChange &entry = entries_.emplace_back();
    entry.index = &index;
    entry.countSlot = countSlot;
    entry.erases = old != nullptr && encodedKeyOf(index, *old, entry.oldKey);
    entry.inserts = record != nullptr && encodedKeyOf(index, *record, entry.newKey);
}

// The old record's bytes are used here only, before the storage is asked for anything else.
void RecordChange::prepareEntries(const StoredRecord *old, const StoredRecord *record) {
    entries_.clear();
    size_t slot = 0;
    for (const IndexDefinition &index : definition_->indexes)
        prepareEntry(index, slot++, old, record);
    for (const IndexDefinition &index : definition_->systemIndexes)
        prepareEntry(index, std::nullopt, old, record);
}

std::optional<DuplicateKey> RecordChange::findDuplicate(int64_t ownAddress) {
    for (EntryChange &entry : entries_) {
        if (!entry.inserts || !entry.countSlot)
            continue;
        int64_t existing = storage_.firstAddress(entry.index->number, entry.newKey);
        entry.keyExisted = existing != 0;
        if (entry.index->unique && existing != 0 && existing != ownAddress)
            return DuplicateKey{existing, entry.index->number};
    }
    return std::nullopt;
}

void RecordChange::applyEntries() {
    for (EntryChange &entry : entries_) {
        bool keyStays = entry.erases && entry.inserts && entry.oldKey == entry.newKey;
        if (keyStays)
            continue;
        if (entry.erases)
            eraseEntry(entry);
        if (entry.inserts)
            insertEntry(entry);
    }
}

void RecordChange::eraseEntry(const EntryChange &entry) {
    storage_.deleteEntry(entry.index->number, entry.oldKey, address_);
    if (entry.countSlot && storage_.firstAddress(entry.index->number, entry.oldKey) == 0)
        --storage_.state().uniqueCounts[*entry.countSlot];
}

void RecordChange::insertEntry(const EntryChange &entry) {
    storage_.insertEntry(entry.index->number, entry.newKey, address_);
    if (entry.countSlot && !entry.keyExisted)
        ++storage_.state().uniqueCounts[*entry.countSlot];
}

RecordChange::Applied RecordChange::apply() {
    FileState &state = storage_.state();
    state.lastTime = time_;
    switch (kind_) {
        case Kind::insert:
            storage_.insertRecord(record_);
            state.lastAddress = address_;
            ++state.recordCount;
            break;
        case Kind::update:
            storage_.updateRecord(record_);
            break;
        case Kind::erase:
            storage_.deleteRecord(address_);
            --state.recordCount;
            break;
    }
    if (tail_.removed != 0 || !tail_.inserted.empty())
        storage_.replaceInTail(address_, tail_.offset, tail_.removed, tail_.inserted);
    applyEntries();
    return {address_, time_};
}

const Bytes *RecordChange::newKey(uint8_t index) const {
    for (const EntryChange &entry : entries_) {
        if (entry.index->number == index && entry.inserts)
            return &entry.newKey;
    }
    return nullptr;
}

}  // namespace vantrel::embedded
