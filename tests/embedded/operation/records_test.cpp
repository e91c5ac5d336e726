#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class RecordsTest : public testing::Test {
  protected:
    void open(uint16_t recordLength, uint16_t fileFlags,
              const std::vector<std::vector<SegmentRequest>> &indexes) {
        ASSERT_EQ(session.create(path, createRequest(recordLength, fileFlags, indexes)), 0);
        ASSERT_EQ(session.open(&block, path), 0);
    }
    int32_t insert(const std::string &record) { return session.call(2, &block, record, "", -1).status; }
    std::string first(int32_t index = 0, uint32_t size = 200) {
        Reply reply = session.call(12, &block, "", "?", index, size);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(RecordsTest, FixedFilesTakeExactlyTheirLength) {
    open(4, 0, {{{0, 4}}});
    EXPECT_EQ(insert("abc"), 22);
    EXPECT_EQ(insert("abcde"), 22);
    EXPECT_EQ(insert(""), 22);
    EXPECT_EQ(insert("abcd"), 0);
    EXPECT_EQ(session.call(3, &block, "abc", "", -1).status, 22);
    EXPECT_EQ(session.call(3, &block, "abcde", "", -1).status, 22);
    EXPECT_EQ(session.call(3, &block, "abcd", "", -1).status, 0);
}

TEST_F(RecordsTest, VariableFilesTakeAtLeastTheFixedPart) {
    open(4, variableLength, {{{0, 4}}});
    EXPECT_EQ(insert("abc"), 22);
    EXPECT_EQ(insert("abcd"), 0);
    EXPECT_EQ(insert("bbbb" + std::string(65531, 'x')), 0);
    EXPECT_EQ(insert("cccc" + std::string(65532, 'x')), 22);
    EXPECT_EQ(session.call(5, &block, "", "bbbb", 0, 65535).data, "bbbb" + std::string(65531, 'x'));
    EXPECT_EQ(session.call(3, &block, "bbbb", "", -1).status, 0);
    EXPECT_EQ(session.call(5, &block, "", "bbbb", 0, 65535).data, "bbbb");
    EXPECT_EQ(session.call(3, &block, "bbb", "", -1).status, 22);
}

TEST_F(RecordsTest, RecordsOfAllVariableFilesMayBeEmpty) {
    open(0, variableLength, {});
    EXPECT_EQ(insert(""), 0);
    EXPECT_EQ(insert("x"), 0);
    EXPECT_EQ(session.call(33, &block, "", "", -1, 10).data, "");
    EXPECT_EQ(session.call(24, &block, "", "", -1, 10).data, "x");
}

TEST_F(RecordsTest, ARefusedInsertChangesNoIndex) {
    open(2, 0, {{{0, 1, duplicates}}, {{1, 1}}});
    ASSERT_EQ(insert("ax"), 0);
    EXPECT_EQ(insert("bx"), 5);
    EXPECT_EQ(session.call(5, &block, "", "b", 0, 2).status, 4);
    EXPECT_EQ(session.call(65, &block, "ExSt" + u32(3) + "??").data, u64(1) + u16(1));
    EXPECT_EQ(session.call(33, &block, "", "", -1, 2).data, "ax");
    EXPECT_EQ(session.call(24, &block, "", "", -1, 2).status, 9);
}

TEST_F(RecordsTest, AnUpdateMayKeepItsOwnUniqueKey) {
    open(2, 0, {{{0, 1, modifiable}}});
    ASSERT_EQ(insert("a1"), 0);
    EXPECT_EQ(session.call(3, &block, "a2", "", -1).status, 0);
    EXPECT_EQ(session.call(3, &block, "b2", "", -1).status, 0);
    ASSERT_EQ(insert("a3"), 0);
    EXPECT_EQ(session.call(3, &block, "b3", "", -1).status, 5);
    EXPECT_EQ(session.call(5, &block, "", "a", 0, 2).data, "a3");
    EXPECT_EQ(session.call(5, &block, "", "b", 0, 2).data, "b2");
}

TEST_F(RecordsTest, ANewSpellingOfTheSameKeyIsKept) {
    open(2, 0, {{{0, 1, modifiable | extendedType | 0x0400, 0}}});
    ASSERT_EQ(insert("a1"), 0);
    EXPECT_EQ(insert("A2"), 5);
    EXPECT_EQ(session.call(3, &block, "A1", "", -1).status, 0);
    Reply reply = session.call(5, &block, "", "a", 0, 2);
    EXPECT_EQ(reply.data, "A1");
    EXPECT_EQ(reply.key, "A");
}

TEST_F(RecordsTest, KeysThatAreNotModifiableStay) {
    open(2, 0, {{{0, 1}}, {{1, 1, duplicates | modifiable}}});
    ASSERT_EQ(insert("a1"), 0);
    EXPECT_EQ(session.call(3, &block, "b1", "", -1).status, 10);
    EXPECT_EQ(session.call(3, &block, "b2", "", -1).status, 10);
    EXPECT_EQ(session.call(3, &block, "a2", "", -1).status, 0);
    EXPECT_EQ(first(1), "a2");
}

TEST_F(RecordsTest, NullKeysStayOutOfTheirIndex) {
    open(3, 0,
         {{{0, 1, duplicates | modifiable | nullIfAll, 0, '-'},
           {1, 1, duplicates | modifiable | nullIfAll, 0, '-'}},
          {{0, 1, duplicates | modifiable | nullIfAny, 0, '-'},
           {1, 1, duplicates | modifiable | nullIfAny, 0, '-'}}});
    for (const char *record : {"--1", "a-2", "-b3", "ab4"})
        ASSERT_EQ(insert(record), 0);
    auto walk = [&](int32_t index) {
        std::string walked;
        Reply reply = session.call(12, &block, "", "??", index, 3);
        for (; reply.status == 0; reply = session.call(6, &block, "", "??", index, 3))
            walked += reply.data + ' ';
        return walked;
    };
    EXPECT_EQ(walk(0), "-b3 a-2 ab4 ");
    EXPECT_EQ(walk(1), "ab4 ");
    ASSERT_EQ(session.call(33, &block, "", "", -1, 3).data, "--1");
    ASSERT_EQ(session.call(3, &block, "cd1", "", -1).status, 0);
    EXPECT_EQ(walk(1), "ab4 cd1 ");
    ASSERT_EQ(session.call(3, &block, "c-1", "", -1).status, 0);
    EXPECT_EQ(walk(0), "-b3 a-2 ab4 c-1 ");
    EXPECT_EQ(walk(1), "ab4 ");
}

TEST_F(RecordsTest, AutoincrementFillsZeros) {
    open(5, 0, {{{0, 4, extendedType, 15}}});
    Reply reply = session.call(2, &block, u32(0) + "a", "????", 0);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.key, u32(1));
    EXPECT_EQ(insert(u32(7) + "b"), 0);
    EXPECT_EQ(insert(u32(0) + "c"), 0);
    EXPECT_EQ(session.call(13, &block, "", "????", 0, 5).data, u32(8) + "c");
    EXPECT_EQ(insert(u32(7) + "d"), 5);
    EXPECT_EQ(insert(u32(0x7FFFFFFF) + "e"), 0);
    EXPECT_EQ(insert(u32(0) + "f"), 55);
}

TEST_F(RecordsTest, AutoincrementWritesTheCallersBuffer) {
    open(2, 0, {{{0, 2, extendedType, 15}}});
    std::string record = u16(0);
    uint32_t length = 2;
    uint8_t client[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(VNTLEXID(2, block.data(), record.data(), &length, nullptr, 0, -1, client), 0);
    EXPECT_EQ(record, u16(1));
    EXPECT_EQ(length, 0u);
}

TEST_F(RecordsTest, ConstantBytesAreInsertedWithoutWritingThem) {
    open(4, 0, {{{0, 4}}});
    static const char record[] = "abcd";
    uint32_t length = 4;
    uint8_t client[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(VNTLEXID(2, block.data(), const_cast<char *>(record), &length, nullptr, 0, -1, client), 0);
}

TEST_F(RecordsTest, TimestampsAreFilledAndDistinct) {
    open(9, 0, {{{0, 8, extendedType, 32}}});
    for (char name : {'a', 'b', 'c'})
        ASSERT_EQ(insert(u64(0) + name), 0);
    ASSERT_EQ(insert(u64(5) + "d"), 0);
    EXPECT_EQ(session.call(12, &block, "", std::string(8, '?'), 0, 9).data, u64(5) + "d");
    std::string earlier = session.call(6, &block, "", std::string(8, '?'), 0, 9).data;
    std::string later = session.call(6, &block, "", std::string(8, '?'), 0, 9).data;
    EXPECT_EQ(earlier[8], 'a');
    EXPECT_EQ(later[8], 'b');
    EXPECT_LT(number(earlier, 0, 8), number(later, 0, 8));
    EXPECT_GT(number(earlier, 0, 8), 638'000'000'000'000'000u);
}

TEST_F(RecordsTest, TheKeyBufferGetsAsMuchAsFits) {
    open(6, 0, {{{4, 2}, {0, 2}}});
    ASSERT_EQ(insert("abcdef"), 0);
    EXPECT_EQ(session.call(12, &block, "", "........", 0, 6).key, "efab....");
    EXPECT_EQ(session.call(12, &block, "", "...", 0, 6).key, "efa");
    EXPECT_EQ(session.call(5, &block, "", "efab", 0, 6).data, "abcdef");
    EXPECT_EQ(session.call(5, &block, "", "efa", 0, 6).status, 21);
}

TEST_F(RecordsTest, TimesOfTheCurrentRecord) {
    open(1, 0, {});
    ASSERT_EQ(insert("a"), 0);
    std::string request = "SysD" + std::string(20, '\0');
    std::string inserted = session.call(22, &block, request, "", -3).data;
    ASSERT_EQ(inserted.size(), 24u);
    EXPECT_EQ(number(inserted, 8, 8), number(inserted, 16, 8));
    ASSERT_EQ(session.call(3, &block, "b", "", -1).status, 0);
    std::string updated = session.call(22, &block, request, "", -3).data;
    EXPECT_EQ(number(updated, 8, 8), number(inserted, 8, 8));
    EXPECT_GT(number(updated, 16, 8), number(inserted, 16, 8));
    EXPECT_EQ(session.call(22, &block, request.substr(0, 23), "", -3).status, 22);
    EXPECT_EQ(session.call(22, &block, "XysD" + std::string(20, '\0'), "", -3).status, 22);
}

}  // namespace
