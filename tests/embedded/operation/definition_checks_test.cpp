#include "embedded/operation/engine_session.h"

// What is checked of the definition of an index, in a create request and in the request for one more index of
// a file with records: each refusal leaves everything as it was.

namespace {

using namespace vantrel::test;

constexpr uint16_t character = 0, integer = 1, floatingPoint = 2, numericSeparate = 17, wideString = 25;
constexpr uint16_t repeatingDuplicates = 0x0080, namedCollation = 0x0C20, numberedCollation = 0x0420;
constexpr uint16_t recordLength = 1100;

std::string segments(std::initializer_list<SegmentRequest> list) {
    std::string bytes;
    for (const SegmentRequest &segment : list)
        bytes += segmentBytes(segment);
    return bytes;
}

// A chain of so many segments of one byte.
std::string chain(size_t count) {
    std::string bytes;
    for (size_t number = 1; number < count; ++number)
        bytes += segmentBytes({0, 1, duplicates | continues});
    return bytes + segmentBytes({0, 1, duplicates});
}

std::string tableBlock(const std::string &name) {
    std::string block = '\xAC' + name + std::string(8 - name.size(), '\0');
    for (int byte = 0; byte < 256; ++byte)
        block.push_back(static_cast<char>(255 - byte));
    return block;
}

std::string nameBlock(const std::string &name) {
    return '\xAE' + name + std::string(264 - name.size(), '\0');
}

std::string numbered(uint8_t number) {
    std::string bytes = segmentBytes({0, 4, duplicates | numberedCollation});
    bytes[22] = static_cast<char>(number);
    return bytes;
}

struct Refusal {
    std::string what;
    int32_t status;
    std::string request;
};

const std::vector<Refusal> &refusals() {
    static const std::vector<Refusal> all = {
        {"NoSegment", 22, ""},
        {"HalfASegment", 22, segments({{0, 4}}).substr(0, 23)},
        {"ChainWithoutEnd", 29, segments({{0, 4, continues}})},
        {"ChainThatEndsWithinASegment", 29, segments({{0, 4, continues}, {4, 4}}).substr(0, 47)},
        {"BehindTheFixedPart", 27, segments({{recordLength - 3, 4}})},
        {"PositionZero", 27, segments({{0xFFFF, 4}})},
        {"SecondSegmentBehindTheFixedPart", 27, segments({{0, 4, continues}, {recordLength, 1}})},
        {"NoLength", 29, segments({{0, 0}})},
        {"LongSegment", 29, segments({{0, 1025}})},
        {"LongKey", 29, segments({{0, 1000, continues}, {0, 25}})},
        {"LengthOfAnInteger", 29, segments({{0, 9, extendedType, integer}})},
        {"LengthOfAFloat", 29, segments({{0, 5, extendedType, floatingPoint}})},
        {"LengthOfAWideString", 29, segments({{0, 3, extendedType, wideString}})},
        {"LengthOfANumericWithSign", 29, segments({{0, 1, extendedType, numericSeparate}})},
        {"RepeatingWithoutDuplicates", 45, segments({{0, 4, repeatingDuplicates}})},
        {"BothNullModes", 45, segments({{0, 4, nullIfAll | nullIfAny}})},
        {"NoCollationMode", 45, segments({{0, 4, 0x0800}})},
        {"DuplicatesInOneSegment", 45, segments({{0, 4, duplicates | continues}, {4, 4}})},
        {"ModifiableInOneSegment", 45, segments({{0, 4, continues}, {4, 4, modifiable}})},
        {"UnknownType", 49, segments({{0, 4, extendedType, 33}})},
        {"TypeOfTheLegacyString", 49, segments({{0, 4, extendedType, 0x100}})},
        {"NoBlock", 48, segments({{0, 4, duplicates | namedCollation}})},
        {"BlockWithoutMarker", 48, segments({{0, 4, duplicates | namedCollation}}) + std::string(265, 'x')},
        {"BlockWithoutName", 48, segments({{0, 4, duplicates | namedCollation}}) + tableBlock("")},
        {"BlockCutOff", 48,
         segments({{0, 4, duplicates | namedCollation}}) + tableBlock("MINE").substr(0, 264)},
        {"UnknownName", 136, segments({{0, 4, duplicates | namedCollation}}) + nameBlock("NOBODY")},
        {"NumberZero", 136, numbered(0) + tableBlock("MINE")},
        {"UnknownNumber", 136, numbered(1) + tableBlock("MINE")},
        {"TooManySegments", 26, chain(421)},
    };
    return all;
}

class DefinitionChecksTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(session.create(path, createRequest(recordLength, 0, {{{0, 4}}, {{1, 2, duplicates}}})), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        for (const char *start : {"a11x", "b22x", "c11y", "d33z"})
            ASSERT_EQ(session.call(2, &block, record(start), "", -1).status, 0);
    }

    static std::string record(const std::string &start) {
        return start + std::string(recordLength - start.size(), '.');
    }
    static std::string createWith(const std::string &request, uint16_t indexCount = 1) {
        std::string file = createRequest(recordLength, 0, {});
        return file.replace(16, 2, u16(indexCount)) + request;
    }
    int32_t createIndex(const std::string &request, int32_t keyNumber = 0) {
        return session.call(31, &block, request, "", keyNumber).status;
    }

    void walk(EngineSession &reader, EngineSession::PositionBlock *position, uint32_t first, uint32_t next,
              int32_t index, std::string *all) {
        for (uint32_t operation = first;; operation = next) {
            Reply reply = reader.call(operation, position, "", std::string(16, '?'), index, recordLength);
            *all += std::to_string(reply.status) + reply.key + reply.data + '\n';
            if (reply.status != 0)
                return;
        }
    }
    // The outcome of all reads there are.
    std::string allReads(EngineSession &reader, EngineSession::PositionBlock *position) {
        Reply statistics = reader.call(15, position, std::string(65535, '\0'), "k");
        std::string all = std::to_string(statistics.status) + statistics.data;
        walk(reader, position, 33, 24, 0, &all);
        walk(reader, position, 34, 35, 0, &all);
        for (int32_t index = 0; index <= 125; ++index) {
            walk(reader, position, 12, 6, index, &all);
            walk(reader, position, 13, 7, index, &all);
        }
        return all;
    }
    std::string readsAfterReopening() {
        EXPECT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(session.open(&block, path, -3), 0);
        return allReads(session, &block);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(DefinitionChecksTest, CreateRefuses) {
    std::vector<std::string> names = directory.names();
    for (const Refusal &refusal : refusals())
        EXPECT_EQ(session.create(directory / "new", createWith(refusal.request)), refusal.status)
            << refusal.what;
    EXPECT_EQ(directory.names(), names);
}

TEST_F(DefinitionChecksTest, IndexCreateRefusesAndChangesNothing) {
    std::string before = allReads(session, &block);
    for (const Refusal &refusal : refusals()) {
        EXPECT_EQ(createIndex(refusal.request), refusal.status) << refusal.what;
        EXPECT_EQ(allReads(session, &block), before) << refusal.what;
    }
    EXPECT_EQ(readsAfterReopening(), before);
}

TEST_F(DefinitionChecksTest, CreateRefusesFilesThatCannotBe) {
    std::string file = createRequest(100, 0, {});
    auto with = [&](size_t offset, uint16_t value) {
        return std::string(file).replace(offset, 2, u16(value));
    };
    std::string newPath = directory / "new";
    EXPECT_EQ(session.create(newPath, file.substr(0, 31)), 22);
    EXPECT_EQ(session.create(newPath, with(2, 4095)), 24);
    EXPECT_EQ(session.create(newPath, with(2, 0)), 24);
    EXPECT_EQ(session.create(newPath, with(0, 0)), 28);
    EXPECT_EQ(session.create(newPath, with(16, 120)), 26);
    EXPECT_EQ(session.create(newPath, with(16, 1)), 22);
    EXPECT_EQ(session.create(newPath, createWith(segments({{0, 4}}), 2)), 22);
    EXPECT_EQ(session.create(newPath, createWith(segments({{0, 4}})), 0x80 + 119), 6);
    EXPECT_EQ(session.create(newPath, with(0, 0).replace(4, 2, u16(variableLength))), 0);
}

TEST_F(DefinitionChecksTest, RepliesNumberTheirIndexesUpward) {
    std::string reply = session.call(15, &block, std::string(65535, '\0'), "k").data;
    constexpr size_t firstNumber = 32 + 20, secondNumber = 56 + 20;
    std::string newPath = directory / "new";
    EXPECT_EQ(session.create(newPath, std::string(reply).replace(firstNumber, 2, u16(119))), 6);
    EXPECT_EQ(session.create(newPath, std::string(reply).replace(firstNumber, 2, u16(1))), 6);
    EXPECT_EQ(session.create(newPath, std::string(reply).replace(secondNumber, 2, u16(118))), 0);
}

TEST_F(DefinitionChecksTest, IndexCreateTakesAsManyAsThereCanBe) {
    std::string one = segments({{0, 1, duplicates}});
    EXPECT_EQ(createIndex(one, 0x80), 6);
    EXPECT_EQ(createIndex(one, 0x80 + 119), 6);
    for (int number = 2; number < 119; ++number)
        ASSERT_EQ(createIndex(one), 0) << number;
    EXPECT_EQ(createIndex(one), 26);
    ASSERT_EQ(session.call(32, &block, "", "", 50).status, 0);
    EXPECT_EQ(createIndex(chain(420 - 118 + 1)), 26);
    EXPECT_EQ(createIndex(chain(420 - 118)), 0);
}

TEST_F(DefinitionChecksTest, ADuplicateInTheDataChangesNothing) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    std::string before = allReads(session, &block);
    ASSERT_EQ(allReads(other, &otherBlock), before);
    EXPECT_EQ(createIndex(segments({{1, 2}})), 5);
    EXPECT_EQ(createIndex(segments({{1, 2, modifiable}}), 0x80 + 118), 5);
    EXPECT_EQ(createIndex(segments({{1, 2, namedCollation}}) + tableBlock("MINE")), 5);
    EXPECT_EQ(allReads(session, &block), before);
    EXPECT_EQ(allReads(other, &otherBlock), before);
    ASSERT_EQ(other.call(1, &otherBlock).status, 0);
    EXPECT_EQ(readsAfterReopening(), before);
    EXPECT_EQ(createIndex(numbered(1)), 136);
    EXPECT_EQ(createIndex(segments({{1, 2, duplicates}}), 0x80 + 118), 0);
}

}  // namespace
