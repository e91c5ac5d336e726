#include <gtest/gtest.h>

#include <initializer_list>

#include "embedded/key/encoding.h"
#include "request_builder.h"

namespace {

using namespace vantrel::embedded;

using Values = std::initializer_list<uint16_t>;

// Status against the field's value, for a request with one index.
int32_t segmentStatus(const SegmentFields &segment) {
    return createStatus(requestWith(segment));
}

TEST(CreateRequest, TellsTheFileSpecification) {
    const FileDefinition file = parseCreateRequest(fileBytes({.recordLength = 300,
                                                              .pageSize = 512,
                                                              .flags = 0x0104,
                                                              .versionCode = 0x95,
                                                              .duplicatePointers = 7,
                                                              .pageCompression = 1,
                                                              .pages = 999}));
    EXPECT_EQ(file.recordLength, 300);
    EXPECT_EQ(file.pageSize, 512);
    EXPECT_EQ(file.fileFlags, 0x0104);
    EXPECT_EQ(file.versionCode, 0x95);
    EXPECT_EQ(file.duplicatePointers, 7);
    EXPECT_EQ(file.pageCompression, 1);
    EXPECT_EQ(file.preallocatedPages, 999);
    EXPECT_TRUE(file.indexes.empty());
    EXPECT_TRUE(file.collations.empty());
}

TEST(CreateRequest, DropsCountsWithoutTheirFlags) {
    const FileDefinition file = parseCreateRequest(fileBytes({.duplicatePointers = 7, .pages = 999}));
    EXPECT_EQ(file.duplicatePointers, 0);
    EXPECT_EQ(file.preallocatedPages, 0);
}

TEST(CreateRequest, TellsSegments) {
    const Bytes request =
        fileBytes({.indexCount = 2}) +
        segmentBytes({.position = 1, .length = 10, .flags = 0x0113, .type = 11}) +
        segmentBytes({.position = 11, .length = 4, .flags = 0x034B - 0x0008, .type = 1, .nullValue = 9}) +
        segmentBytes({.position = 97, .length = 4, .flags = 0x000C, .type = 77});
    const FileDefinition file = parseCreateRequest(request);
    ASSERT_EQ(file.indexes.size(), 2u);
    const IndexDefinition &first = file.indexes[0];
    EXPECT_EQ(first.number, 0);
    EXPECT_FALSE(first.unique);
    EXPECT_TRUE(first.modifiable);
    EXPECT_EQ(first.keyLength, 14u);
    EXPECT_EQ(first.collationBlock, "");
    ASSERT_EQ(first.segments.size(), 2u);
    EXPECT_EQ(first.segments[0].offset, 0);
    EXPECT_EQ(first.segments[0].length, 10);
    EXPECT_EQ(first.segments[0].type, KeyType::zeroTerminatedString);
    EXPECT_FALSE(first.segments[0].descending);
    EXPECT_FALSE(first.segments[0].nullIfAny);
    EXPECT_EQ(first.segments[1].offset, 10);
    EXPECT_EQ(first.segments[1].type, KeyType::integer);
    EXPECT_TRUE(first.segments[1].descending);
    EXPECT_TRUE(first.segments[1].nullIfAny);
    EXPECT_FALSE(first.segments[1].nullIfAll);
    EXPECT_EQ(first.segments[1].nullValue, 9);
    const IndexDefinition &second = file.indexes[1];
    EXPECT_EQ(second.number, 1);
    EXPECT_TRUE(second.unique);
    EXPECT_FALSE(second.modifiable);
    ASSERT_EQ(second.segments.size(), 1u);
    EXPECT_EQ(second.segments[0].offset, 96);
    EXPECT_EQ(second.segments[0].type, KeyType::legacyBinary);
    EXPECT_TRUE(second.segments[0].nullIfAll);
    EXPECT_FALSE(second.segments[0].nullIfAny);
}

TEST(CreateRequest, KeepsSpecificationsWithoutCountsAndIndexNumber) {
    const SegmentFields fields = {.flags = 0x0100, .nullValue = 3, .index = 5};
    const FileDefinition file = parseCreateRequest(requestWith(fields));
    Bytes expected = segmentBytes(fields);
    expected.replace(8, 8, 8, '\0').replace(20, 2, 2, '\0');
    const auto &kept = file.indexes[0].segments[0].specification;
    EXPECT_EQ(Bytes(kept.begin(), kept.end()), expected);
    EXPECT_EQ(file.indexes[0].number, 0) << "a left-over number";
}

TEST(CreateRequest, IgnoresWhatFollows) {
    const FileDefinition file = parseCreateRequest(requestWith({}) + Bytes(48, '\xAC'));
    EXPECT_EQ(file.indexes.size(), 1u);
    EXPECT_EQ(parseCreateRequest(fileBytes({}) + segmentBytes({.length = 0})).indexes.size(), 0u);
}

TEST(CreateRequest, RefusesAShortFileSpecification) {
    EXPECT_EQ(createStatus(""), 22);
    EXPECT_EQ(createStatus(fileBytes({.pageSize = 1}).substr(0, 31)), 22);
    EXPECT_EQ(createStatus(fileBytes({})), 0);
}

TEST(CreateRequest, TakesThePageSizesThereAre) {
    for (const uint16_t size : Values{512, 1024, 1536, 2048, 3072, 3584, 4096, 8192, 16384})
        EXPECT_EQ(createStatus(fileBytes({.pageSize = size})), 0) << size;
    for (const uint16_t size : Values{0, 1, 511, 513, 2560, 4097, 16383, 32768})
        EXPECT_EQ(createStatus(fileBytes({.pageSize = size})), 24) << size;
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 0, .pageSize = 1})), 24) << "before the record length";
}

TEST(CreateRequest, TakesNoRecordLengthForVariableFilesOnly) {
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 0})), 28);
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 0, .flags = 0x0001})), 0);
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 1})), 0);
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 65535})), 0);
    EXPECT_EQ(createStatus(fileBytes({.recordLength = 0, .indexCount = 120})), 28)
        << "before the index count";
}

Bytes requestOfIndexes(uint16_t count) {
    Bytes request = fileBytes({.indexCount = count});
    for (uint16_t index = 0; index < count; ++index)
        request += segmentBytes({});
    return request;
}

TEST(CreateRequest, TakesUpTo119Indexes) {
    EXPECT_EQ(parseCreateRequest(requestOfIndexes(119)).indexes.back().number, 118);
    EXPECT_EQ(createStatus(requestOfIndexes(120)), 26);
    EXPECT_EQ(createStatus(fileBytes({.indexCount = 0xFFFF})), 26) << "before the length";
}

// Indexes of four segments of one byte each, and one of the segments that are left.
Bytes requestOfSegments(uint16_t indexes, uint16_t left) {
    Bytes request = fileBytes({.indexCount = static_cast<uint16_t>(indexes + 1)});
    for (uint16_t at = 0; at < 4 * indexes; ++at)
        request += segmentBytes({.length = 1, .flags = static_cast<uint16_t>(at % 4 == 3 ? 0x0100 : 0x0110)});
    for (uint16_t at = 1; at < left; ++at)
        request += segmentBytes({.length = 1, .flags = 0x0110});
    return request + segmentBytes({.length = 1});
}

TEST(CreateRequest, TakesUpTo420Segments) {
    EXPECT_EQ(segmentCountOf(parseCreateRequest(requestOfSegments(104, 4))), 420u);
    EXPECT_EQ(createStatus(requestOfSegments(104, 5)), 26);
    EXPECT_EQ(createStatus(requestOfSegments(0, 420)), 0);
    EXPECT_EQ(createStatus(requestOfSegments(0, 421)), 26);
}

TEST(CreateRequest, RefusesIndexesThatAreNotThere) {
    EXPECT_EQ(createStatus(fileBytes({.indexCount = 1})), 22);
    EXPECT_EQ(createStatus(requestWith({}).substr(0, 55)), 22);
    EXPECT_EQ(createStatus(fileBytes({.indexCount = 2}) + segmentBytes({.length = 0})), 22)
        << "before any segment";
}

TEST(CreateRequest, RefusesAChainThatRunsPastTheRequest) {
    const Bytes chain = requestWith({.flags = 0x0110});
    EXPECT_EQ(createStatus(chain), 29);
    EXPECT_EQ(createStatus(chain + segmentBytes({}).substr(0, 23)), 29);
    EXPECT_EQ(createStatus(chain + segmentBytes({})), 0);
    EXPECT_EQ(createStatus(requestWith({.position = 0, .flags = 0x0110})), 29) << "before any segment";
}

TEST(CreateRequest, RefusesSegmentsOutsideTheFixedPart) {
    EXPECT_EQ(segmentStatus({.position = 0}), 27);
    EXPECT_EQ(segmentStatus({.position = 97}), 0);
    EXPECT_EQ(segmentStatus({.position = 98}), 27);
    EXPECT_EQ(segmentStatus({.position = 65535}), 27);
    EXPECT_EQ(createStatus(requestWith({.position = 0}, {.recordLength = 65535})), 27);
    EXPECT_EQ(createStatus(requestWith({.position = 65532}, {.recordLength = 65535})), 0);
    EXPECT_EQ(createStatus(requestWith({.length = 1}, {.recordLength = 0, .flags = 0x0001})), 27);
    EXPECT_EQ(segmentStatus({.position = 102, .length = 0}), 27) << "before the length";
}

TEST(CreateRequest, RefusesKeyLengthsOutOfRange) {
    const FileFields file = {.recordLength = 2000};
    EXPECT_EQ(segmentStatus({.length = 0}), 29);
    EXPECT_EQ(createStatus(requestWith({.length = 1024}, file)), 0);
    EXPECT_EQ(createStatus(requestWith({.length = 1025}, file)), 29);
    const Bytes first = requestWith({.length = 1000, .flags = 0x0110}, file);
    EXPECT_EQ(createStatus(first + segmentBytes({.length = 24})), 0);
    EXPECT_EQ(createStatus(first + segmentBytes({.length = 25})), 29);
    EXPECT_EQ(segmentStatus({.length = 0, .flags = 0x0180}), 29) << "before the flags";
}

TEST(CreateRequest, RefusesContradictingFlags) {
    EXPECT_EQ(segmentStatus({.flags = 0x0180}), 45) << "repeating duplicates without duplicates";
    EXPECT_EQ(segmentStatus({.flags = 0x0181}), 0);
    EXPECT_EQ(segmentStatus({.flags = 0x0308}), 45) << "both null modes";
    EXPECT_EQ(segmentStatus({.flags = 0x0300}), 0);
    EXPECT_EQ(segmentStatus({.flags = 0x0108}), 0);
    for (const uint16_t pattern : Values{0x0800, 0x0820, 0x0C00}) {
        EXPECT_EQ(segmentStatus({.flags = static_cast<uint16_t>(0x0100 | pattern)}), 45) << pattern;
        EXPECT_EQ(segmentStatus({.flags = static_cast<uint16_t>(0x0100 | pattern), .type = 1}), 45)
            << pattern;
    }
    EXPECT_EQ(segmentStatus({.flags = 0x0180, .type = 12}), 45) << "before the type";
}

TEST(CreateRequest, RefusesSegmentsThatDisagreeAboutTheirIndex) {
    const auto pair = [](uint16_t first, uint16_t second) {
        return createStatus(requestWith({.flags = first}) + segmentBytes({.flags = second}));
    };
    EXPECT_EQ(pair(0x0111, 0x0100), 45);
    EXPECT_EQ(pair(0x0110, 0x0101), 45);
    EXPECT_EQ(pair(0x0112, 0x0100), 45);
    EXPECT_EQ(pair(0x0191, 0x0101), 45);
    EXPECT_EQ(pair(0x0193, 0x0183), 0);
    EXPECT_EQ(pair(0x0118, 0x0340), 0) << "null mode and direction are each segment's own";
}

TEST(CreateRequest, RefusesUnknownTypes) {
    for (const uint16_t type : Values{12, 13, 22, 23, 24, 30, 33, 35, 254, 0x100, 0x101, 0x102, 0xFFFF})
        EXPECT_EQ(segmentStatus({.type = type}), 49) << type;
    EXPECT_EQ(segmentStatus({.flags = 0, .type = 12}), 0) << "a legacy string";
    EXPECT_EQ(segmentStatus({.flags = 4, .type = 12}), 0) << "a legacy binary";
    EXPECT_EQ(parseCreateRequest(requestWith({.flags = 0})).indexes[0].segments[0].type,
              KeyType::legacyString);
    EXPECT_EQ(segmentStatus({.flags = 0x0104, .type = 1}), 0) << "the binary flag is for legacy types only";
}

TEST(CreateRequest, RefusesLengthsThatTheTypeDoesNotTake) {
    EXPECT_EQ(segmentStatus({.length = 9, .type = 1}), 29);
    EXPECT_EQ(segmentStatus({.length = 8, .type = 1}), 0);
    EXPECT_EQ(segmentStatus({.length = 5, .type = 2}), 29);
    EXPECT_EQ(segmentStatus({.length = 3, .type = 25}), 29);
    EXPECT_EQ(segmentStatus({.length = 1, .type = 17}), 29);
}

TEST(CreateRequest, ChecksSegmentsInOrder) {
    const Bytes first = requestWith({.flags = 0x0110, .type = 12});
    EXPECT_EQ(createStatus(first + segmentBytes({.position = 0})), 49);
    const Bytes indexes =
        fileBytes({.indexCount = 2}) + segmentBytes({.flags = 0x0180}) + segmentBytes({.position = 0});
    EXPECT_EQ(createStatus(indexes), 45);
}

const Collation *collationOf(const Bytes &request) {
    return parseCreateRequest(request).indexes.at(0).segments.at(0).collation.get();
}

TEST(CreateRequest, KnowsTheModesThatNeedNoBlock) {
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0100})), nullptr);
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0120})), nullptr);
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0500})), caseInsensitiveCollation().get());
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0400})), caseInsensitiveCollation().get())
        << "a legacy string";
}

TEST(CreateRequest, CollatesNothingButText) {
    for (const uint16_t type : Values{1, 14, 25, 26})
        for (const uint16_t mode : Values{0x0120, 0x0500, 0x0520})
            EXPECT_EQ(collationOf(requestWith({.flags = mode, .type = type})), nullptr)
                << type << " " << mode;
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0D20, .type = 1}) + nameBlock("NOWHERE")), nullptr);
    EXPECT_EQ(collationOf(requestWith({.flags = 0x0404})), nullptr) << "a legacy binary";
}

TEST(CreateRequest, FindsBuiltInCollationsByName) {
    const Bytes request = requestWith({.flags = 0x0D20, .collationNumber = 9}) + nameBlock("LATIN1");
    const FileDefinition file = parseCreateRequest(request);
    EXPECT_EQ(file.indexes[0].segments[0].collation, findBuiltInCollation("LATIN1"));
    EXPECT_EQ(file.indexes[0].collationBlock, nameBlock("LATIN1"));
    EXPECT_TRUE(file.collations.empty());
}

TEST(CreateRequest, FindsTheBlockBehindTheSegmentsHoweverLongTheRequestIs) {
    const Bytes request =
        requestWith({.flags = 0x0D30}) + segmentBytes({.flags = 0x0D20}) + tableBlock("MINE");
    const FileDefinition file = parseCreateRequest(request + Bytes(48, '\0'));
    ASSERT_EQ(file.collations.size(), 1u);
    EXPECT_EQ(file.collations[0]->name, "MINE");
    EXPECT_EQ(file.collations[0]->table[0], 255);
    EXPECT_EQ(file.indexes[0].segments[0].collation, file.collations[0]);
    EXPECT_EQ(file.indexes[0].segments[1].collation, file.collations[0]);
    EXPECT_EQ(file.indexes[0].collationBlock, tableBlock("MINE"));
}

TEST(CreateRequest, ReadsOneBlockForEachIndexThatAsksForOne) {
    const Bytes request = fileBytes({.indexCount = 3}) + segmentBytes({.flags = 0x0D20}) + segmentBytes({}) +
                          segmentBytes({.flags = 0x0D20, .type = 1}) + tableBlock("A") + tableBlock("B", 7);
    const FileDefinition file = parseCreateRequest(request);
    ASSERT_EQ(file.collations.size(), 2u);
    EXPECT_EQ(file.indexes[0].segments[0].collation, file.collations[0]);
    EXPECT_EQ(file.indexes[1].collationBlock, "");
    EXPECT_EQ(file.indexes[2].collationBlock, tableBlock("B", 7));
    EXPECT_EQ(file.indexes[2].segments[0].collation, nullptr);
}

TEST(CreateRequest, LetsIndexesUseWhatThoseBeforeThemRegister) {
    const Bytes segments = fileBytes({.indexCount = 3}) + segmentBytes({.flags = 0x0D20}) +
                           segmentBytes({.flags = 0x0D20}) +
                           segmentBytes({.flags = 0x0520, .collationNumber = 1});
    const FileDefinition file = parseCreateRequest(segments + tableBlock("MINE") + nameBlock("MINE"));
    ASSERT_EQ(file.collations.size(), 1u);
    for (const IndexDefinition &index : file.indexes)
        EXPECT_EQ(index.segments[0].collation, file.collations[0]);
    EXPECT_EQ(createStatus(segments + nameBlock("MINE") + tableBlock("MINE")), 136);
}

TEST(CreateRequest, RegistersACollationOnce) {
    const Bytes segments =
        fileBytes({.indexCount = 2}) + segmentBytes({.flags = 0x0D20}) + segmentBytes({.flags = 0x0D20});
    EXPECT_EQ(parseCreateRequest(segments + tableBlock("A") + tableBlock("A")).collations.size(), 1u);
    EXPECT_EQ(createStatus(segments + tableBlock("A") + tableBlock("A", 254)), 48) << "another table";
}

TEST(CreateRequest, RefusesMalformedCollationBlocks) {
    const Bytes request = requestWith({.flags = 0x0D20});
    EXPECT_EQ(createStatus(request), 48);
    EXPECT_EQ(createStatus(request + nameBlock("UPPER").substr(0, 264)), 48);
    EXPECT_EQ(createStatus(request + nameBlock("")), 48);
    EXPECT_EQ(createStatus(request + Bytes(265, '\0')), 48);
    EXPECT_EQ(createStatus(requestWith({.flags = 0x0D20, .type = 1})), 48) << "though it would not be used";
    const Bytes two =
        fileBytes({.indexCount = 2}) + segmentBytes({.flags = 0x0D20}) + segmentBytes({.flags = 0x0D20});
    EXPECT_EQ(createStatus(two + nameBlock("NOWHERE") + nameBlock("")), 48) << "before any name is looked up";
}

TEST(CreateRequest, RefusesUnknownCollations) {
    EXPECT_EQ(createStatus(requestWith({.flags = 0x0D20}) + nameBlock("NOWHERE")), 136);
    for (const uint8_t number : std::initializer_list<uint8_t>{0, 1, 255})
        EXPECT_EQ(createStatus(requestWith({.flags = 0x0520, .collationNumber = number})), 136);
    EXPECT_EQ(createStatus(requestWith({.flags = 0x0520, .collationNumber = 1}) + tableBlock("MINE")), 136)
        << "a numbered request reads no block";
}

}  // namespace
