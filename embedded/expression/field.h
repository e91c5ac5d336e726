#ifndef VANTREL_EMBEDDED_EXPRESSION_FIELD_H
#define VANTREL_EMBEDDED_EXPRESSION_FIELD_H

#include <array>
#include <cstdint>
#include <optional>

#include "embedded/key/definition.h"

namespace vantrel::embedded {

constexpr uint16_t systemFieldSize = 8;
constexpr uint16_t createTimeOffset = 0xFFFE;
constexpr uint16_t updateTimeOffset = 0xFFFB;

// A record as expressions see it.
struct RecordView {
    ByteView data;
    uint64_t createTime = 0;
    uint64_t updateTime = 0;
};

// Where a value lies: in the record's bytes, or in one of its times.
struct Field {
    enum class Source : uint8_t { bytes, createTime, updateTime };

    Source source = Source::bytes;
    uint16_t offset = 0;
    uint16_t length = 0;
};

// Room for a value that is no part of the record's bytes.
using FieldScratch = std::array<char, systemFieldSize>;

// The source that the offset of a system field stands for; the record's bytes for any other offset.
Field::Source systemSourceOf(uint16_t offset);

// The field that a length and offset name. A high length byte of 0xFF with an offset above 0xFFFA is a
// system field; nothing for one that does not exist.
std::optional<Field> fieldFrom(uint16_t length, uint16_t offset);

// Where the field ends in the record's bytes; 0 for one of its times.
size_t endOf(const Field &field);

// The field's bytes, fewer where the record ends before. They are valid as long as the record and scratch.
ByteView valueOf(const Field &field, const RecordView &record, FieldScratch &scratch);

}  // namespace vantrel::embedded

#endif
