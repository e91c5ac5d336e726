#include <gtest/gtest.h>

#include "request_builder.h"

namespace {

using namespace vantrel::embedded;

FileDefinition fileOf(const Bytes &request) {
    return parseCreateRequest(request);
}

const Bytes plainFile = fileBytes({});

TEST(IndexRequest, TellsTheIndex) {
    const Bytes request = segmentBytes({.position = 3, .length = 2, .flags = 0x0111}) +
                          segmentBytes({.position = 5, .flags = 0x0101, .type = 1}) + Bytes(48, '\0');
    const IndexRequest result = parseIndexRequest(request, fileOf(plainFile));
    EXPECT_EQ(result.index.number, 0);
    EXPECT_FALSE(result.index.unique);
    EXPECT_FALSE(result.index.modifiable);
    EXPECT_EQ(result.index.keyLength, 6u);
    ASSERT_EQ(result.index.segments.size(), 2u);
    EXPECT_EQ(result.index.segments[0].offset, 2);
    EXPECT_EQ(result.index.segments[1].type, KeyType::integer);
    EXPECT_EQ(result.registered, nullptr);
}

TEST(IndexRequest, RegistersItsCollation) {
    const Bytes request = segmentBytes({.flags = 0x0D20}) + tableBlock("MINE") + Bytes(24, '\0');
    const IndexRequest result = parseIndexRequest(request, fileOf(plainFile));
    ASSERT_NE(result.registered, nullptr);
    EXPECT_EQ(result.registered->name, "MINE");
    EXPECT_EQ(result.index.segments[0].collation, result.registered);
    EXPECT_EQ(result.index.collationBlock, tableBlock("MINE"));
}

TEST(IndexRequest, FindsTheCollationsOfTheFile) {
    const FileDefinition file = fileOf(requestWith({.flags = 0x0D20}) + tableBlock("MINE"));
    for (const Bytes &request : {segmentBytes({.flags = 0x0D20}) + nameBlock("MINE"),
                                 segmentBytes({.flags = 0x0D20}) + tableBlock("MINE"),
                                 segmentBytes({.flags = 0x0520, .collationNumber = 1})}) {
        const IndexRequest result = parseIndexRequest(request, file);
        EXPECT_EQ(result.index.segments[0].collation, file.collations[0]);
        EXPECT_EQ(result.registered, nullptr);
    }
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0D20}) + tableBlock("MINE", 1), file), 48);
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0520, .collationNumber = 2}), file), 136);
}

TEST(IndexRequest, ChecksAsACreateRequestDoes) {
    const FileDefinition file = fileOf(plainFile);
    EXPECT_EQ(indexStatus("", file), 22);
    EXPECT_EQ(indexStatus(segmentBytes({}).substr(0, 23), file), 22);
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0110}), file), 29);
    EXPECT_EQ(indexStatus(segmentBytes({.position = 98}), file), 27);
    EXPECT_EQ(indexStatus(segmentBytes({.length = 0}), file), 29);
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0180}), file), 45);
    EXPECT_EQ(indexStatus(segmentBytes({.type = 12}), file), 49);
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0D20}), file), 48);
    EXPECT_EQ(indexStatus(segmentBytes({.flags = 0x0D20}) + nameBlock("NOWHERE"), file), 136);
}

TEST(IndexRequest, AddsUpToTheLimitOfIndexes) {
    Bytes request = fileBytes({.indexCount = 118});
    for (int index = 0; index < 118; ++index)
        request += segmentBytes({});
    FileDefinition file = fileOf(request);
    const IndexRequest last = parseIndexRequest(segmentBytes({}), file);
    file.indexes.push_back(last.index);
    EXPECT_EQ(indexStatus(segmentBytes({}), file), 26);
    EXPECT_EQ(indexStatus("", file), 26) << "before the length";
}

TEST(IndexRequest, AddsUpToTheLimitOfSegments) {
    Bytes request = fileBytes({.indexCount = 1});
    for (int segment = 0; segment < 417; ++segment)
        request += segmentBytes({.length = 1, .flags = 0x0110});
    const FileDefinition file = fileOf(request + segmentBytes({.length = 1}));
    const Bytes continued = segmentBytes({.length = 1, .flags = 0x0110});
    EXPECT_EQ(indexStatus(continued + segmentBytes({.length = 1}), file), 0);
    EXPECT_EQ(indexStatus(continued + continued + segmentBytes({.length = 1}), file), 26);
}

// The name of the collation made at the step.
Bytes nameAt(size_t step) {
    return "C" + std::to_string(step);
}

TEST(IndexRequest, RegistersNoMoreCollationsThanAReplyHolds) {
    FileDefinition file = fileOf(plainFile);
    size_t steps = 0;
    int32_t status = 0;
    while (status == 0 && steps < 300) {
        const Bytes request = segmentBytes({.flags = 0x0D20}) + tableBlock(nameAt(steps));
        status = statusOf([&] { file.collations.push_back(parseIndexRequest(request, file).registered); });
        ++steps;
    }
    EXPECT_EQ(status, 26);
    EXPECT_EQ(file.collations.size(), 247u);
    expectEqual(parseCreateRequest(statisticsReply(file, 0, 0, {})), file);
}

}  // namespace
