#include "embedded/expression/extractor.h"

#include <algorithm>
#include <cstring>

#include "embedded/key/encoding.h"

namespace vantrel::embedded {

namespace {

constexpr uint16_t groupMark = 0xFF00;
constexpr uint16_t aggregateMark = 0xFFF9;
constexpr uint16_t functionMark = 0xFFFA;
constexpr size_t longestReplyRecord = 65535;
constexpr uint16_t largestTypeCode = 255;

// Entries of a group: the mark, the operation and the field; rounding to places has one more.
constexpr size_t groupSize = 3;

// Two letters, as the number that they are in a request.
constexpr uint16_t code(char first, char second) {
    return static_cast<uint16_t>(static_cast<uint8_t>(first) | static_cast<uint8_t>(second) << 8);
}

struct Entry {
    uint16_t length;
    uint16_t offset;
};

Entry readEntry(RequestReader &reader) {
    uint16_t length = reader.u16();
    return {length, reader.u16()};
}

Field readField(RequestReader &reader, const Entry &entry) {
    std::optional<Field> field = fieldFrom(entry.length, entry.offset);
    reader.refuseUnless(field.has_value());
    return *field;
}

struct Operation {
    KeyType type;
    uint16_t code;
};

Operation readOperation(RequestReader &reader) {
    Entry entry = readEntry(reader);
    reader.refuseUnless(entry.length <= largestTypeCode && typeIsKnown(KeyType{entry.length}));
    return {KeyType{entry.length}, entry.offset};
}

Field readOperand(RequestReader &reader) {
    Field field = readField(reader, readEntry(reader));
    reader.refuseUnless(field.source == Field::Source::bytes);
    return field;
}

Rounding roundingOf(RequestReader &reader, uint16_t functionCode) {
    switch (functionCode) {
        case code('A', 'V'):
            return Rounding::none;
        case code('C', 'E'):
            return Rounding::ceiling;
        case code('F', 'L'):
            return Rounding::floor;
        case code('R', 'O'):
            return Rounding::halfAwayFromZero;
        default:
            reader.refuseUnless(functionCode == code('T', 'R'));
            return Rounding::truncate;
    }
}

bool takesPlaces(Rounding rounding) {
    return rounding == Rounding::halfAwayFromZero || rounding == Rounding::truncate;
}

int16_t readPlaces(RequestReader &reader) {
    Entry entry = readEntry(reader);
    reader.refuseUnless(entry.length == 0);
    return static_cast<int16_t>(entry.offset);
}

}  // namespace

Extractor::Extractor(RequestReader &reader, size_t entryCount) {
    while (entryCount > 0)
        entryCount -= readItem(reader, entryCount);
}

// Returns the number of entries that the item took.
size_t Extractor::readItem(RequestReader &reader, size_t entriesLeft) {
    Entry entry = readEntry(reader);
    bool isAggregate = entry.length == groupMark && entry.offset == aggregateMark;
    bool isFunction = entry.length == groupMark && entry.offset == functionMark;
    if (!isAggregate && !isFunction) {
        addItem(reader, {readField(reader, entry), {}, {}, {}});
        return 1;
    }
    reader.refuseUnless(entriesLeft >= groupSize);
    Operation operation = readOperation(reader);
    Field field = readOperand(reader);
    if (isAggregate) {
        bool isMaximum = operation.code == code('M', 'A');
        reader.refuseUnless(isMaximum || operation.code == code('M', 'I'));
        aggregates_ = true;
        ValueOrder order(operation.type, nullptr, field.length);
        addItem(reader, {field, {}, Aggregate{isMaximum, order, {}}, {}});
        return groupSize;
    }
    FieldFunction function{operation.type, roundingOf(reader, operation.code)};
    reader.refuseUnless(functionsTake(function.type, field.length));
    size_t entries = groupSize + (takesPlaces(function.rounding) ? 1 : 0);
    reader.refuseUnless(entriesLeft >= entries);
    if (takesPlaces(function.rounding))
        function.places = readPlaces(reader);
    addItem(reader, {field, function, {}, {}});
    return entries;
}

void Extractor::addItem(RequestReader &reader, Item item) {
    longest_ += item.field.length;
    reader.refuseUnless(longest_ <= longestReplyRecord);
    reach_ = std::max(reach_, endOf(item.field));
    items_.push_back(std::move(item));
}

size_t Extractor::write(const Item &item, const RecordView &record, uint8_t *reply) {
    FieldScratch scratch;
    ByteView value = valueOf(item.field, record, scratch);
    if (value.empty())
        return 0;
    memcpy(reply, value.data(), value.size());
    if (item.function && value.size() == item.field.length)
        item.function->apply(reinterpret_cast<char *>(reply), value.size());
    return value.size();
}

size_t Extractor::extract(const RecordView &record, uint8_t *reply) {
    size_t length = 0;
    for (const Item &item : items_)
        length += write(item, record, reply + length);
    return length;
}

// A record that does not hold the field in whole has no part in its aggregate.
void Extractor::keepBest(Item &item, const RecordView &record) {
    FieldScratch scratch;
    ByteView value = valueOf(item.field, record, scratch);
    if (value.size() != item.field.length)
        return;
    Aggregate &aggregate = *item.aggregate;
    if (!item.kept.empty()) {
        int order = aggregate.order.compare(value, aggregate.best);
        if (aggregate.isMaximum ? order <= 0 : order >= 0)
            return;
    }
    aggregate.order.prepare(value, &aggregate.best);
    item.kept.assign(value);
}

void Extractor::accumulate(const RecordView &record) {
    for (Item &item : items_) {
        if (item.aggregate) {
            keepBest(item, record);
            continue;
        }
        item.kept.resize(item.field.length);
        item.kept.resize(write(item, record, reinterpret_cast<uint8_t *>(item.kept.data())));
    }
}

size_t Extractor::extractAggregates(uint8_t *reply) const {
    size_t length = 0;
    for (const Item &item : items_) {
        if (!item.kept.empty())
            memcpy(reply + length, item.kept.data(), item.kept.size());
        length += item.kept.size();
    }
    return length;
}

}  // namespace vantrel::embedded
