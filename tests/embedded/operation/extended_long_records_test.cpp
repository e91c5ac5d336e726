#include <cstring>

#include "embedded/expression/extended_request.h"
#include "embedded/operation/engine_session.h"

// Extended operations on fields that lie behind the part of a record that is stored in one piece.

namespace {

using namespace vantrel::test;

constexpr uint32_t readNext = 36, readStepNext = 38, readStepPrevious = 39, deleteNext = 85;
constexpr uint16_t character = 0;
// Longer fields at a higher offset are codes of something else.
constexpr uint16_t largestLength = 65535, highestOffset = 65530;

class ExtendedLongRecordsTest : public testing::Test {
  protected:
    // Records of 200,000, 66,000 and 100 bytes and one of 131,070, named a to d by their first byte. Each
    // other byte tells its place and its record.
    ExtendedLongRecordsTest() {
        EXPECT_EQ(session.create(path, createRequest(1, variableLength, {{{0, 1}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (auto [name, length] :
             {std::pair('a', 200000u), std::pair('b', 66000u), std::pair('c', 100u), std::pair('d', 131070u)})
            insert(bytesOf(name, length));
    }

    static std::string bytesOf(char name, size_t length) {
        std::string bytes(length, name);
        for (size_t place = 1; place < length; ++place)
            bytes[place] = static_cast<char>('A' + (place / 7 + static_cast<size_t>(name)) % 26);
        return bytes;
    }
    static std::string field(char name, size_t offset, size_t length) {
        return bytesOf(name, offset + length).substr(offset);
    }

    void insert(const std::string &bytes) {
        ASSERT_EQ(session.call(2, &block, bytes.substr(0, 1), "", -1).status, 0);
        std::string rest = bytes.substr(1);
        const char *address = rest.data();
        std::string descriptor = u32(0xA0000001) + u32(1) + u32(0) + u32(static_cast<uint32_t>(rest.size())) +
                                 std::string(sizeof address, '\0');
        memcpy(descriptor.data() + 16, &address, sizeof address);
        ASSERT_EQ(session.call(53, &block, descriptor, "", -1).status, 0);
    }

    // The name comes back in front of the field asked for.
    static RequestFields request(std::vector<TermFields> terms, EntryFields entry = {0, 0}) {
        RequestFields fields;
        fields.terms = std::move(terms);
        fields.entries = {{1, 0}, entry};
        return fields;
    }
    static TermFields term(uint16_t offset, const std::string &bytes, uint8_t comparison = equalTo) {
        return {character,
                static_cast<uint16_t>(bytes.size()),
                static_cast<uint16_t>(offset),
                comparison,
                bytes,
                0,
                ""};
    }

    // What was extracted of each record.
    std::vector<std::string> run(uint32_t operation, const RequestFields &fields,
                                 int32_t expectedStatus = 9) {
        Reply reply = session.call(operation, &block, fields.bytes(), "", 0, 300000);
        EXPECT_EQ(reply.status, expectedStatus);
        std::vector<std::string> records;
        for (size_t at = 2; at < reply.data.size();) {
            auto length = static_cast<size_t>(number(reply.data, at, 2));
            records.push_back(reply.data.substr(at + 10, length));
            at += 10 + length;
        }
        return records;
    }
    using Records = std::vector<std::string>;

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(ExtendedLongRecordsTest, FieldsAreExtractedAcrossAndBehindTheHead) {
    EXPECT_EQ(run(readNext, request({}, {20, 65530})),
              (Records{"a" + field('a', 65530, 20), "b" + field('b', 65530, 20), "c",
                       "d" + field('d', 65530, 20)}));
    EXPECT_EQ(run(readStepNext, request({}, {2000, 65535})),
              (Records{"a" + field('a', 65535, 2000), "b" + field('b', 65535, 465), "c",
                       "d" + field('d', 65535, 2000)}));
    EXPECT_EQ(run(readStepPrevious, request({}, {1000, 65000}), 9), (Records{"a" + field('a', 65000, 1000)}));
}

TEST_F(ExtendedLongRecordsTest, TheFarthestFieldIsReached) {
    RequestFields fields;
    fields.entries = {{largestLength, highestOffset}};
    EXPECT_EQ(run(readNext, fields),
              (Records{field('a', highestOffset, largestLength), field('b', highestOffset, 470), "",
                       field('d', highestOffset, 65535)}));
}

TEST_F(ExtendedLongRecordsTest, TermsLookAcrossAndBehindTheHead) {
    EXPECT_EQ(run(readNext, request({term(65530, field('b', 65530, 20))})), Records{"b"});
    EXPECT_EQ(run(readNext, request({term(65535, field('b', 65535, 465))})), Records{"b"});
    EXPECT_EQ(run(readNext, request({term(65535, field('b', 65535, 465), notEqualTo)})), (Records{"a", "d"}));
    EXPECT_EQ(run(readNext, request({term(highestOffset, field('d', highestOffset, largestLength))})),
              Records{"d"});
}

TEST_F(ExtendedLongRecordsTest, TermsBehindTheEndFail) {
    EXPECT_EQ(run(readNext, request({term(65535, field('b', 65535, 466))})), Records{});
    EXPECT_EQ(run(readNext, request({term(65535, std::string(466, '?'), notEqualTo)})), (Records{"a", "d"}));
}

TEST_F(ExtendedLongRecordsTest, FieldsArePutBesideFields) {
    // The letters return after 182 bytes; the record b ends within the second field.
    TermFields equalFields{character, 700, 7, equalTo | fieldFlag, fieldComparand(7 + 359 * 182), 0, ""};
    EXPECT_EQ(run(readNext, request({equalFields})), (Records{"a", "d"}));
}

TEST_F(ExtendedLongRecordsTest, PatternsAndAggregatesSeeTheWholeField) {
    std::string start = field('b', 65535, 150) + "%";
    TermFields pattern{character, 200, 65535, patternFlag, patternComparand(1, start), 0, ""};
    EXPECT_EQ(run(readNext, request({pattern})), Records{"b"});
    RequestFields largest;
    largest.entries = aggregateEntries(character, "MA", {8, 65530});
    std::string expected = std::max({field('a', 65530, 8), field('b', 65530, 8), field('d', 65530, 8)});
    EXPECT_EQ(run(readNext, largest), Records{expected});
}

TEST_F(ExtendedLongRecordsTest, DeletesGoByThem) {
    RequestFields fields = request({term(65535, field('d', 65535, 466))});
    fields.entries = {};
    Reply reply = session.call(deleteNext, &block, fields.bytes(), "", 0, 1000);
    EXPECT_EQ(reply.status, 9);
    EXPECT_EQ(reply.data, u16(1) + u16(static_cast<uint16_t>(131070)) + u64(4));
    EXPECT_EQ(run(readNext, request({})), (Records{"a", "b", "c"}));
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.open(&block, path, -3), 0);
    EXPECT_EQ(run(readNext, request({}, {9, 65532})),
              (Records{"a" + field('a', 65532, 9), "b" + field('b', 65532, 9), "c"}));
}

}  // namespace
