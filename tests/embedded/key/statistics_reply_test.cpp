#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "request_builder.h"

namespace {

using namespace vantrel::embedded;
using namespace std::string_literals;

// Three indexes, two of them collated, numbered 0 to 2.
FileDefinition richFile() {
    const Bytes request = fileBytes({.recordLength = 300,
                                     .flags = 0x0105,
                                     .indexCount = 3,
                                     .versionCode = 0xD3,
                                     .duplicatePointers = 5,
                                     .pageCompression = 1,
                                     .pages = 17}) +
                          segmentBytes({.length = 3, .flags = 0x0D33, .type = 11}) +
                          segmentBytes({.position = 7, .flags = 0x0D63, .type = 1, .nullValue = 8}) +
                          segmentBytes({.position = 9, .flags = 0x0308 - 0x0008}) +
                          segmentBytes({.position = 20, .length = 9, .flags = 0x0C20}) + tableBlock("MINE") +
                          nameBlock("CP850");
    return parseCreateRequest(request);
}

// Another index under the number given.
void addIndex(FileDefinition &file, const Bytes &request, uint8_t number) {
    IndexRequest added = parseIndexRequest(request, file);
    added.index.number = number;
    if (added.registered != nullptr)
        file.collations.push_back(added.registered);
    const auto behind = std::find_if(file.indexes.begin(), file.indexes.end(),
                                     [number](const auto &index) { return index.number > number; });
    file.indexes.insert(behind, added.index);
}

void dropIndex(FileDefinition &file, uint8_t number) {
    std::erase_if(file.indexes, [number](const auto &index) { return index.number == number; });
}

void expectReplyMakesEqualFile(const FileDefinition &file) {
    expectEqual(parseCreateRequest(statisticsReply(file, 0, 0, {})), file);
    const uint64_t counts[] = {1, 2, 3};
    expectEqual(parseCreateRequest(statisticsReply(file, 1234567890123, 4321, counts)), file);
}

TEST(StatisticsReply, WritesTheFileSpecification) {
    const Bytes reply = statisticsReply(richFile(), 0x0102030405060708, 0x1234, {});
    EXPECT_EQ(reply.substr(0, 32),
              "\x2C\x01\x00\x10\x05\x01\x11\x00\x08\x07\x06\x05\x04\x03\x02\x01"
              "\x03\x00\xD3\x00\x05\x01\x34\x12VNTDEF\x01\x00"s);
}

TEST(StatisticsReply, WritesSegmentsWithCountsAndNumbers) {
    FileDefinition file = richFile();
    dropIndex(file, 1);
    const uint64_t counts[] = {0x0807060504030201, 9};
    const Bytes reply = statisticsReply(file, 0, 0, counts);
    ASSERT_EQ(reply.size(), 32u + 3 * 24 + 2 * 265);
    EXPECT_EQ(reply.substr(32, 24),
              "\x01\0\x03\0\x33\x0D\xEE\xEE\1\2\3\4\5\6\7\x08\x0B\0\0\xEE\0\0\x01\xEE"s);
    EXPECT_EQ(reply.substr(56, 24),
              "\x07\0\x04\0\x63\x0D\xEE\xEE\1\2\3\4\5\6\7\x08\x01\0\x08\xEE\0\0\x01\xEE"s);
    EXPECT_EQ(reply.substr(80, 24), "\x14\0\x09\0\x20\x0C\xEE\xEE\x09\0\0\0\0\0\0\0\0\0\0\xEE\x02\0\0\xEE"s);
    EXPECT_EQ(reply.substr(104, 265), tableBlock("MINE"));
    EXPECT_EQ(reply.substr(369, 265), nameBlock("CP850"));
}

TEST(StatisticsReply, WritesZeroForCountsThatAreMissing) {
    const uint64_t counts[] = {7};
    const Bytes reply = statisticsReply(richFile(), 0, 0, counts);
    EXPECT_EQ(reply.substr(32 + 8, 8), "\7\0\0\0\0\0\0\0"s);
    EXPECT_EQ(reply.substr(80 + 8, 8), "\0\0\0\0\0\0\0\0"s);
}

TEST(StatisticsReply, MakesAnEqualFile) {
    expectReplyMakesEqualFile(richFile());
    expectReplyMakesEqualFile(parseCreateRequest(fileBytes({.recordLength = 0, .flags = 0x0001})));
}

TEST(StatisticsReply, KeepsIndexNumbersWithGaps) {
    FileDefinition file = richFile();
    addIndex(file, segmentBytes({.position = 50}), 118);
    dropIndex(file, 1);
    expectReplyMakesEqualFile(file);
    EXPECT_EQ(parseCreateRequest(statisticsReply(file, 0, 0, {})).indexes.back().number, 118);
}

TEST(StatisticsReply, KeepsCollationsWhoseIndexIsGone) {
    FileDefinition file = richFile();
    addIndex(file, segmentBytes({.flags = 0x0D20}) + tableBlock("OTHER", 3), 5);
    addIndex(file, segmentBytes({.flags = 0x0520, .collationNumber = 1}), 6);
    addIndex(file, segmentBytes({.flags = 0x0D20}) + nameBlock("MINE"), 7);
    dropIndex(file, 0);
    expectReplyMakesEqualFile(file);
    const FileDefinition copy = parseCreateRequest(statisticsReply(file, 0, 0, {}));
    EXPECT_EQ(copy.collations.at(0)->name, "MINE");
    EXPECT_EQ(copy.collations.at(1)->name, "OTHER");
    EXPECT_EQ(copy.indexes.back().segments[0].collation, copy.collations[0]);
}

TEST(StatisticsReply, KeepsTheOrderOfRegistrationWhenLowerNumbersCameLater) {
    FileDefinition file = parseCreateRequest(fileBytes({}));
    addIndex(file, segmentBytes({.flags = 0x0D20}) + tableBlock("FIRST"), 9);
    addIndex(file, segmentBytes({.flags = 0x0D20}) + tableBlock("SECOND", 1), 4);
    addIndex(file, segmentBytes({.flags = 0x0D20}) + nameBlock("FIRST"), 1);
    expectReplyMakesEqualFile(file);
    EXPECT_EQ(parseCreateRequest(statisticsReply(file, 0, 0, {})).collations.at(0)->name, "FIRST");
}

TEST(StatisticsReply, TellsABuiltInCollationFromOneOfItsNameInTheFile) {
    FileDefinition file = parseCreateRequest(fileBytes({}));
    addIndex(file, segmentBytes({.flags = 0x0D20}) + nameBlock("UPPER"), 0);
    addIndex(file, segmentBytes({.flags = 0x0D20}) + tableBlock("UPPER"), 1);
    addIndex(file, segmentBytes({.flags = 0x0D20}) + nameBlock("UPPER"), 2);
    EXPECT_NE(file.indexes[0].segments[0].collation, file.indexes[2].segments[0].collation);
    expectReplyMakesEqualFile(file);
}

TEST(StatisticsReply, FitsItsLimitWithAllSegmentsAndBlocks) {
    Bytes request = fileBytes({.indexCount = 119});
    Bytes blocks;
    for (int index = 0; index < 119; ++index) {
        for (int segment = 1; segment < (index < 63 ? 4 : 3); ++segment)
            request += segmentBytes({.length = 1, .flags = 0x0D30});
        request += segmentBytes({.length = 1, .flags = 0x0D20});
        blocks += tableBlock("C" + std::to_string(index), static_cast<uint8_t>(index));
    }
    const FileDefinition file = parseCreateRequest(request + blocks);
    EXPECT_EQ(segmentCountOf(file), 420u);
    EXPECT_EQ(replyLength(file), 41647u);
    EXPECT_EQ(statisticsReply(file, 0, 0, {}).size(), 41647u);
    expectReplyMakesEqualFile(file);
}

// The reply with two bytes of it replaced.
Bytes changed(Bytes reply, size_t at, ByteView bytes) {
    return reply.replace(at, bytes.size(), bytes);
}

TEST(StatisticsReply, MustNumberItsIndexesUpwards) {
    const Bytes reply = statisticsReply(richFile(), 0, 0, {});
    EXPECT_EQ(createStatus(reply), 0);
    EXPECT_EQ(createStatus(changed(reply, 80 + 20, "\0\0"s)), 6) << "twice 0";
    EXPECT_EQ(createStatus(changed(reply, 80 + 20, "\3\0"s)), 6) << "3 before 2";
    EXPECT_EQ(createStatus(changed(reply, 104 + 20, "\x76\0"s)), 0);
    EXPECT_EQ(createStatus(changed(reply, 104 + 20, "\x77\0"s)), 6) << "119";
    EXPECT_EQ(createStatus(changed(changed(reply, 80 + 20, "\0\0"s), 80, "\0\0"s)), 6)
        << "before the segment";
}

TEST(StatisticsReply, NumbersItsIndexesOnlyWithTheMark) {
    FileDefinition file = richFile();
    dropIndex(file, 1);
    const Bytes reply = statisticsReply(file, 0, 0, {});
    for (size_t at = 24; at < 30; ++at) {
        const FileDefinition parsed = parseCreateRequest(changed(reply, at, "?"));
        EXPECT_EQ(parsed.indexes[1].number, 1) << at;
        EXPECT_EQ(parsed.preallocatedPages, 0) << at;
    }
    EXPECT_EQ(parseCreateRequest(reply).indexes[1].number, 2);
}

TEST(StatisticsReply, MustNumberItsCollationsRight) {
    const Bytes reply = statisticsReply(richFile(), 0, 0, {});
    EXPECT_EQ(createStatus(changed(reply, 30, "\0\0"s)), 48) << "a number above the count";
    EXPECT_EQ(createStatus(changed(reply, 30, "\2\0"s)), 48) << "a collation that is not there";
    EXPECT_EQ(createStatus(changed(reply, 30, "\2\0"s) + nameBlock("UPPER")), 48) << "a name without a table";
    EXPECT_EQ(createStatus(changed(reply, 30, "\2\0"s) + tableBlock("MORE")), 0);
    EXPECT_EQ(createStatus(changed(reply, 32 + 22, "\0")), 0) << "no byte changed";
    EXPECT_EQ(createStatus(changed(reply, 32 + 22, "\0"s)), 48) << "a table without a number";
    EXPECT_EQ(createStatus(changed(reply, 104 + 22, "\2")), 136) << "a number without a collation";
    EXPECT_EQ(createStatus(changed(reply, reply.size() - 264, "X")), 136) << "no built-in name";
}

}  // namespace
