#include "request_builder.h"

#include <gtest/gtest.h>

#include "engine/bytes.h"

using namespace vantrel;
using namespace vantrel::embedded;

Bytes fileBytes(const FileFields &fields) {
    uint8_t bytes[32];
    memset(bytes, 0xEE, sizeof bytes);
    storeU16(bytes, fields.recordLength);
    storeU16(bytes + 2, fields.pageSize);
    storeU16(bytes + 4, fields.flags);
    storeU16(bytes + 16, fields.indexCount);
    storeU16(bytes + 18, fields.versionCode);
    bytes[20] = fields.duplicatePointers;
    bytes[21] = fields.pageCompression;
    storeU16(bytes + 22, fields.pages);
    return Bytes(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

Bytes segmentBytes(const SegmentFields &fields) {
    uint8_t bytes[24];
    memset(bytes, 0xEE, sizeof bytes);
    storeU16(bytes, fields.position);
    storeU16(bytes + 2, fields.length);
    storeU16(bytes + 4, fields.flags);
    storeU16(bytes + 16, fields.type);
    bytes[18] = fields.nullValue;
    storeU16(bytes + 20, fields.index);
    bytes[22] = fields.collationNumber;
    return Bytes(reinterpret_cast<const char *>(bytes), sizeof bytes);
}

Bytes tableBlock(ByteView name, uint8_t from) {
    Bytes block = "\xAC";
    block.append(name);
    block.resize(9);
    for (unsigned byte = 0; byte < 256; ++byte)
        block.push_back(static_cast<char>(from - byte));
    return block;
}

Bytes nameBlock(ByteView name) {
    Bytes block = "\xAE";
    block.append(name);
    block.resize(265);
    return block;
}

int32_t createStatus(ByteView request) {
    return statusOf([request] { parseCreateRequest(request); });
}

int32_t indexStatus(ByteView request, const FileDefinition &file) {
    return statusOf([&] { parseIndexRequest(request, file); });
}

Bytes requestWith(const SegmentFields &segment, FileFields file) {
    file.indexCount = 1;
    return fileBytes(file) + segmentBytes(segment);
}

namespace {

void expectEqual(const KeySegment &actual, const KeySegment &expected) {
    EXPECT_EQ(actual.offset, expected.offset);
    EXPECT_EQ(actual.length, expected.length);
    EXPECT_EQ(actual.type, expected.type);
    EXPECT_EQ(actual.descending, expected.descending);
    EXPECT_EQ(actual.nullValue, expected.nullValue);
    EXPECT_EQ(actual.nullIfAll, expected.nullIfAll);
    EXPECT_EQ(actual.nullIfAny, expected.nullIfAny);
    EXPECT_EQ(actual.specification, expected.specification);
    ASSERT_EQ(actual.collation == nullptr, expected.collation == nullptr);
    if (actual.collation == nullptr)
        return;
    EXPECT_EQ(actual.collation->name, expected.collation->name);
    EXPECT_EQ(actual.collation->table, expected.collation->table);
}

void expectEqual(const IndexDefinition &actual, const IndexDefinition &expected) {
    EXPECT_EQ(actual.number, expected.number);
    EXPECT_EQ(actual.unique, expected.unique);
    EXPECT_EQ(actual.modifiable, expected.modifiable);
    EXPECT_EQ(actual.collationBlock, expected.collationBlock);
    EXPECT_EQ(actual.keyLength, expected.keyLength);
    ASSERT_EQ(actual.segments.size(), expected.segments.size());
    for (size_t at = 0; at < actual.segments.size(); ++at)
        expectEqual(actual.segments[at], expected.segments[at]);
}

}  // namespace

void expectEqual(const FileDefinition &actual, const FileDefinition &expected) {
    EXPECT_EQ(actual.recordLength, expected.recordLength);
    EXPECT_EQ(actual.pageSize, expected.pageSize);
    EXPECT_EQ(actual.fileFlags, expected.fileFlags);
    EXPECT_EQ(actual.versionCode, expected.versionCode);
    EXPECT_EQ(actual.duplicatePointers, expected.duplicatePointers);
    EXPECT_EQ(actual.pageCompression, expected.pageCompression);
    EXPECT_EQ(actual.preallocatedPages, expected.preallocatedPages);
    ASSERT_EQ(actual.indexes.size(), expected.indexes.size());
    for (size_t at = 0; at < actual.indexes.size(); ++at)
        expectEqual(actual.indexes[at], expected.indexes[at]);
    ASSERT_EQ(actual.collations.size(), expected.collations.size());
    for (size_t at = 0; at < actual.collations.size(); ++at) {
        EXPECT_EQ(actual.collations[at]->name, expected.collations[at]->name);
        EXPECT_EQ(actual.collations[at]->table, expected.collations[at]->table);
    }
}
