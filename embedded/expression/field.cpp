#include "embedded/expression/field.h"

#include <algorithm>

#include "engine/bytes.h"

namespace vantrel::embedded {

namespace {

constexpr uint16_t lastPlainOffset = 0xFFFA;
constexpr uint16_t systemLengthMark = 0xFF;

}  // namespace

Field::Source systemSourceOf(uint16_t offset) {
    if (offset == createTimeOffset)
        return Field::Source::createTime;
    return offset == updateTimeOffset ? Field::Source::updateTime : Field::Source::bytes;
}

std::optional<Field> fieldFrom(uint16_t length, uint16_t offset) {
    if (length >> 8 != systemLengthMark || offset <= lastPlainOffset)
        return Field{Field::Source::bytes, offset, length};
    Field::Source source = systemSourceOf(offset);
    if (source == Field::Source::bytes || (length & 0xFF) != systemFieldSize)
        return std::nullopt;
    return Field{source, 0, systemFieldSize};
}

size_t endOf(const Field &field) {
    return field.source == Field::Source::bytes ? size_t{field.offset} + field.length : 0;
}

ByteView valueOf(const Field &field, const RecordView &record, FieldScratch &scratch) {
    if (field.source == Field::Source::bytes)
        return record.data.substr(std::min<size_t>(field.offset, record.data.size()), field.length);
    bool isCreation = field.source == Field::Source::createTime;
    storeU64(reinterpret_cast<uint8_t *>(scratch.data()), isCreation ? record.createTime : record.updateTime);
    return ByteView(scratch.data(), scratch.size());
}

}  // namespace vantrel::embedded
