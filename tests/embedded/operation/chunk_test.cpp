#include <random>

#include "embedded/operation/chunk_fixture.h"

namespace {

using namespace vantrel::test;

using ChunkTest = ChunkFixture;

TEST_F(ChunkTest, ReadsWhatThereIs) {
    open();
    EXPECT_EQ(read(0, 4), "abcd");
    EXPECT_EQ(read(1, 2), "bc");
    EXPECT_EQ(read(2, 9), "cd");
    EXPECT_EQ(read(4, 9), "");
    EXPECT_EQ(read(5, 9), "103");
    EXPECT_EQ(read(0, 4, overwriteCode, 2), "43");
    EXPECT_EQ(read(0, 4, insertCode), "41");
}

TEST_F(ChunkTest, ContinuesWhereTheLastOneEnded) {
    open();
    EXPECT_EQ(read(0, 1, overwriteCode | continuesBit), "106");
    EXPECT_EQ(read(1, 1), "b");
    EXPECT_EQ(read(0, 1, overwriteCode | continuesBit), "c");
    EXPECT_EQ(read(0, 9, overwriteCode | continuesBit), "d");
    EXPECT_EQ(change(insertCode | continuesBit, 0, "xy"), 0);
    EXPECT_EQ(change(overwriteCode | continuesBit, 0, "z"), 0);
    EXPECT_EQ(whole(), "abcdxyz");
    EXPECT_EQ(read(4, 1), "x");
    EXPECT_EQ(truncate(truncateCode | continuesBit, 0xFFFFFFFF), 0);
    EXPECT_EQ(whole(), "abcdx");
    ASSERT_EQ(session.call(2, &block, "bbbb", "", -1).status, 0);
    EXPECT_EQ(change(overwriteCode | continuesBit, 0, "z"), 106);
}

TEST_F(ChunkTest, ChangesPutBytesInPlace) {
    open();
    EXPECT_EQ(change(appendCode, 0, "efgh"), 0);
    EXPECT_EQ(change(overwriteCode, 6, "GH"), 0);
    EXPECT_EQ(change(overwriteCode, 7, "12345"), 0);
    EXPECT_EQ(whole(), "abcdefG12345");
    EXPECT_EQ(change(insertCode, 4, "--"), 0);
    EXPECT_EQ(whole(), "abcd--efG12345");
    EXPECT_EQ(remove(deleteCode, 5, 3), 0);
    EXPECT_EQ(whole(), "abcd-G12345");
    EXPECT_EQ(remove(deleteCode, 8, 100), 0);
    EXPECT_EQ(whole(), "abcd-G12");
    EXPECT_EQ(truncate(truncateCode, 5), 0);
    EXPECT_EQ(whole(), "abcd-");
    EXPECT_EQ(change(overwriteCode, 5, "+"), 0);
    EXPECT_EQ(change(overwriteCode, 7, "+"), 103);
    EXPECT_EQ(change(insertCode, 7, "+"), 103);
    EXPECT_EQ(truncate(truncateCode, 7), 103);
    EXPECT_EQ(whole(), "abcd-+");
}

TEST_F(ChunkTest, TheFixedPartKeepsItsLength) {
    open();
    ASSERT_EQ(change(appendCode, 0, "efgh"), 0);
    EXPECT_EQ(change(insertCode, 3, "x"), 151);
    EXPECT_EQ(remove(deleteCode, 3, 1), 151);
    EXPECT_EQ(truncate(truncateCode, 3), 151);
    EXPECT_EQ(change(overwriteCode, 2, "CD"), 0);
    EXPECT_EQ(whole(), "abCDefgh");
}

TEST_F(ChunkTest, KeysChangeOnlyWhereTheirIndexAllows) {
    open();
    EXPECT_EQ(change(overwriteCode, 0, "z"), 10);
    EXPECT_EQ(change(overwriteCode, 1, "z"), 0);
    EXPECT_EQ(session.call(5, &block, "", "z", 1, 4).data, "azcd");
    EXPECT_EQ(session.call(5, &block, "", "b", 1, 4).status, 4);
}

TEST_F(ChunkTest, FixedFilesTakeOverwritesOnly) {
    open(0);
    EXPECT_EQ(change(overwriteCode, 2, "CD"), 0);
    EXPECT_EQ(whole(), "abCD");
    EXPECT_EQ(change(overwriteCode, 3, "DE"), 107);
    EXPECT_EQ(change(appendCode, 0, "x"), 107);
    EXPECT_EQ(change(insertCode, 4, "x"), 107);
    EXPECT_EQ(truncate(truncateCode, 3), 107);
}

TEST_F(ChunkTest, Refusals) {
    open();
    EXPECT_EQ(session.call(53, &block, u32(truncateCode) + "abc", "", -1).status, 22);
    EXPECT_EQ(session.call(53, &block, u32(overwriteCode) + u32(1) + u32(0) + u32(0), "", -1).status, 22);
    EXPECT_EQ(
        session.call(53, &block, u32(overwriteCode) + u32(2) + u32(0) + u32(0) + pointer(nullptr), "", -1)
            .status,
        41);
    EXPECT_EQ(change(0x80000002, 0, "x"), 41);
    EXPECT_EQ(session.call(53, &block, u32(truncateCode) + u32(4), "", 2).status, 6);
    EXPECT_EQ(
        session.call(53, &block, u32(overwriteCode) + u32(1) + u32(0) + u32(9) + pointer(nullptr), "", -1)
            .status,
        22);
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(change(appendCode, 0, "x"), 8);
    EngineSession::PositionBlock reader{};
    ASSERT_EQ(session.open(&reader, path, -2), 0);
    EXPECT_EQ(session.call(53, &reader, u32(truncateCode) + u32(4), "", -1).status, 46);
}

TEST_F(ChunkTest, LocksAndConflictsCount) {
    open();
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(205, &otherBlock, "", "a", 0, 4).status, 0);
    EXPECT_EQ(change(appendCode, 0, "x"), 84);
    ASSERT_EQ(other.call(3, &otherBlock, "abcX", "", -1).status, 0);
    EXPECT_EQ(change(appendCode, 0, "x"), 80);
    EXPECT_EQ(read(0, 4), "abcX");
    EXPECT_EQ(change(appendCode, 0, "x"), 0);
    EXPECT_EQ(change(appendCode, 0, "y"), 0);
}

TEST_F(ChunkTest, LongRecordsShrinkByUpdateAndGoByDelete) {
    open();
    std::string bytes(300000, 'x');
    ASSERT_EQ(change(appendCode, 0, bytes), 0);
    EXPECT_EQ(whole(), "abcd" + bytes);
    Reply cut = session.call(5, &block, "", "a", 0, 65535);
    EXPECT_EQ(cut.status, 22);
    EXPECT_EQ(cut.data, "abcd" + std::string(65531, 'x'));
    EXPECT_EQ(session.call(5, &block, "", "a", 0, 300003).data, "abcd" + bytes.substr(1));
    EXPECT_EQ(session.call(5, &block, "", "a", 0, 300004).data, "abcd" + bytes);
    ASSERT_EQ(session.call(3, &block, "abcdef", "", -1).status, 0);
    EXPECT_EQ(whole(), "abcdef");
    ASSERT_EQ(change(appendCode, 0, bytes), 0);
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(read(0, 1), "43");
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.open(&block, path, -3), 0);
}

TEST_F(ChunkTest, AbortTakesTailsBack) {
    open();
    std::string bytes(100000, 'x');
    ASSERT_EQ(change(appendCode, 0, bytes), 0);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(change(overwriteCode, 90000, std::string(50000, 'y')), 0);
    EXPECT_EQ(whole(), "abcd" + bytes.substr(0, 89996) + std::string(50000, 'y'));
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(whole(), "abcd" + bytes);
}

TEST_F(ChunkTest, RandomEditsEqualThoseOfAString) {
    open();
    const char *given = getenv("VANTREL_SEED");
    auto seed =
        given != nullptr ? static_cast<uint32_t>(strtoul(given, nullptr, 10)) : std::random_device{}();
    SCOPED_TRACE("VANTREL_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    auto below = [&](size_t limit) { return static_cast<uint32_t>(random() % (limit + 1)); };
    std::string model = "abcd";
    for (int step = 0; step < 600; ++step) {
        uint32_t size = random() % 4 == 0 ? below(200000) : below(300);
        std::string bytes(size, static_cast<char>('a' + step % 26));
        uint32_t offset = 4 + below(model.size() - 4);
        switch (random() % 6) {
            case 0:
                ASSERT_EQ(change(appendCode, 0, bytes), 0);
                model += bytes;
                break;
            case 1:
                ASSERT_EQ(change(overwriteCode, offset, bytes), 0);
                model.replace(offset, std::min<size_t>(bytes.size(), model.size() - offset), bytes);
                break;
            case 2:
                ASSERT_EQ(change(insertCode, offset, bytes), 0);
                model.insert(offset, bytes);
                break;
            case 3:
            case 4:
                ASSERT_EQ(remove(deleteCode, offset, size), 0);
                model.erase(offset, size);
                break;
            default:
                if (random() % 8 == 0) {
                    ASSERT_EQ(truncate(truncateCode, offset), 0);
                    model.resize(offset);
                }
                break;
        }
        uint32_t from = below(model.size()), length = below(150000);
        ASSERT_TRUE(read(from, length) == model.substr(from, length)) << "step " << step;
        if (step % 20 == 0) {
            ASSERT_TRUE(read(0, static_cast<uint32_t>(model.size())) == model) << "step " << step;
        }
    }
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, path, -3), 0);
    ASSERT_TRUE(read(0, static_cast<uint32_t>(model.size())) == model);
}

}  // namespace
