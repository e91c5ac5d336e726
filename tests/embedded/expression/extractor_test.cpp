#include <gtest/gtest.h>

#include "embedded/expression/extended_request.h"
#include "embedded/expression/request.h"
#include "embedded/key/request_builder.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

constexpr uint8_t integer = 1, character = 0, unsignedBinary = 14, currency = 19;

Extractor extractorOf(const std::vector<EntryFields> &entries) {
    RequestFields fields;
    fields.entries = entries;
    Bytes buffer = fields.bytes();
    buffer.resize(70000);
    return decodeExtendedRequest(buffer, {}, {false, false}).extractor;
}

Bytes extract(Extractor extractor, const RecordView &record) {
    Bytes reply(extractor.longest() + 4, '#');
    size_t length = extractor.extract(record, reinterpret_cast<uint8_t *>(reply.data()) + 2);
    EXPECT_EQ(reply.substr(0, 2), "##");
    EXPECT_EQ(reply.substr(length + 2).find_first_not_of('#'), Bytes::npos);
    return reply.substr(2, length);
}

Bytes aggregate(Extractor extractor, const std::vector<ByteView> &records) {
    for (ByteView record : records)
        extractor.accumulate({record, 1, 2});
    Bytes reply(extractor.longest(), '#');
    reply.resize(extractor.extractAggregates(reinterpret_cast<uint8_t *>(reply.data())));
    return reply;
}

std::vector<EntryFields> joined(std::vector<EntryFields> first, const std::vector<EntryFields> &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

int32_t entriesStatus(const std::vector<EntryFields> &entries) {
    return statusOf([&] { extractorOf(entries); });
}

TEST(Extractor, FieldsStandOneAfterAnother) {
    EXPECT_EQ(extract(extractorOf({{2, 4}, {3, 0}, {1, 4}}), {"abcdefg", 0, 0}), "efabce");
    EXPECT_EQ(extract(extractorOf({}), {"abcdefg", 0, 0}), "");
    EXPECT_EQ(extract(extractorOf({{0, 3}}), {"abcdefg", 0, 0}), "");
}

TEST(Extractor, FieldsAreCutAtTheRecordsEnd) {
    Extractor extractor = extractorOf({{4, 5}, {4, 0}, {2, 9}});
    EXPECT_EQ(extractor.longest(), 10u);
    EXPECT_EQ(extract(extractor, {"abcdefg", 0, 0}), "fgabcd");
    EXPECT_EQ(extract(extractor, {"", 0, 0}), "");
}

TEST(Extractor, SystemFieldsAreTheTimes) {
    Extractor extractor = extractorOf({{0xFF08, 0xFFFB}, {1, 0}, {0xFF08, 0xFFFE}});
    EXPECT_EQ(extractor.longest(), 17u);
    EXPECT_EQ(extract(extractor, {"x", 0x0807060504030201, 0x1817161514131211}),
              "\x11\x12\x13\x14\x15\x16\x17\x18x\x01\x02\x03\x04\x05\x06\x07\x08");
}

TEST(Extractor, FunctionsKeepTypeAndLength) {
    std::vector<EntryFields> entries = functionEntries(integer, "AV", {2, 1});
    entries = joined(entries, {{1, 0}});
    EXPECT_EQ(extract(extractorOf(entries), {"x\xFE\xFF", 0, 0}), ByteView("\x02\0x", 3));
    EXPECT_EQ(extract(extractorOf(entries), {"x\xFE", 0, 0}), "\xFEx");
    std::string value("\x39\x30\0\0\0\0\0\0", 8);
    EXPECT_EQ(extract(extractorOf(functionEntries(currency, "CE", {8, 0})), {value, 0, 0}),
              std::string("\x20\x4E\0\0\0\0\0\0", 8));
    EXPECT_EQ(extract(extractorOf(functionEntries(currency, "FL", {8, 0})), {value, 0, 0}),
              std::string("\x10\x27\0\0\0\0\0\0", 8));
    EXPECT_EQ(extract(extractorOf(functionEntries(currency, "RO", {8, 0}, 3)), {value, 0, 0}),
              std::string("\x3E\x30\0\0\0\0\0\0", 8));
    EXPECT_EQ(extract(extractorOf(functionEntries(currency, "TR", {8, 0}, -1)), {value, 0, 0}),
              std::string(8, '\0'));
}

TEST(Extractor, AggregatesFindTheSmallestAndLargest) {
    std::vector<EntryFields> entries = joined(
        aggregateEntries(integer, "MI", {1, 0}),
        joined(aggregateEntries(integer, "MA", {1, 0}), aggregateEntries(unsignedBinary, "MA", {1, 0})));
    Extractor extractor = extractorOf(entries);
    EXPECT_TRUE(extractor.aggregates());
    EXPECT_EQ(extractor.longest(), 3u);
    EXPECT_EQ(aggregate(extractor, {"\x05", "\xFB", "\x07"}), "\xFB\x07\xFB");
    EXPECT_EQ(aggregate(extractor, {"\x05"}), "\x05\x05\x05");
    EXPECT_EQ(aggregate(extractorOf(aggregateEntries(character, "MI", {2, 1})), {"xbb", "xba", "xca"}), "ba");
}

TEST(Extractor, RecordsWithoutTheFieldHaveNoPartInItsAggregate) {
    Extractor extractor = extractorOf(aggregateEntries(character, "MI", {2, 1}));
    EXPECT_EQ(aggregate(extractor, {"xa", "xbb", ""}), "bb");
    EXPECT_EQ(aggregate(extractor, {"xa"}), "");
}

TEST(Extractor, OtherItemsBesideAggregatesShowTheLastRecord) {
    std::vector<EntryFields> entries =
        joined(joined({{2, 1}}, aggregateEntries(character, "MA", {1, 0})), {{0xFF08, 0xFFFB}});
    EXPECT_EQ(aggregate(extractorOf(entries), {"axy", "czw", "bq"}), ByteView("qc\x02\0\0\0\0\0\0\0", 10));
}

TEST(Extractor, MalformedEntriesAreRefused) {
    EntryFields aggregateMark{0xFF00, 0xFFF9}, functionMark{0xFF00, 0xFFFA}, minimum{integer, 0x494D},
        absolute{integer, 0x5641}, round{integer, 0x4F52}, field{2, 0};
    EXPECT_EQ(entriesStatus({aggregateMark, minimum, field}), 0);
    EXPECT_EQ(entriesStatus({aggregateMark, minimum}), 65);
    EXPECT_EQ(entriesStatus({aggregateMark}), 65);
    EXPECT_EQ(entriesStatus({functionMark, absolute}), 65);
    EXPECT_EQ(entriesStatus({functionMark, absolute, field}), 0);
    EXPECT_EQ(entriesStatus({functionMark, round, field}), 65);
    EXPECT_EQ(entriesStatus({functionMark, round, field, {0, 2}}), 0);
    EXPECT_EQ(entriesStatus({functionMark, round, field, {1, 2}}), 65);
    EXPECT_EQ(entriesStatus({aggregateMark, absolute, field}), 65);
    EXPECT_EQ(entriesStatus({functionMark, minimum, field}), 65);
    EXPECT_EQ(entriesStatus({aggregateMark, {12, 0x494D}, field}), 65);
    EXPECT_EQ(entriesStatus({aggregateMark, {0x100, 0x494D}, field}), 65);
    EXPECT_EQ(entriesStatus({functionMark, {character, 0x5641}, field}), 65);
    EXPECT_EQ(entriesStatus({functionMark, absolute, {9, 0}}), 65);
    EXPECT_EQ(entriesStatus({aggregateMark, minimum, {0xFF08, 0xFFFE}}), 65);
    EXPECT_EQ(entriesStatus({{0xFF08, 0xFFFC}}), 65);
    EXPECT_EQ(entriesStatus({{0xFF04, 0xFFFE}}), 65);
    EXPECT_EQ(entriesStatus({{0xFF00, 0xFFFE}}), 65);
}

TEST(Extractor, AReplyRecordHasAtMost65535Bytes) {
    EXPECT_EQ(entriesStatus({{65535, 0}}), 0);
    EXPECT_EQ(entriesStatus({{65535, 0}, {0, 0}}), 0);
    EXPECT_EQ(entriesStatus({{65535, 0}, {1, 0}}), 65);
    EXPECT_EQ(entriesStatus({{40000, 0}, {30000, 0}}), 65);
}

}  // namespace
