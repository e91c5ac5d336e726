#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "embedded/emulation.h"
#include "embedded/operation/chunk_fixture.h"
#include "random_source.h"

namespace {

using namespace vantrel::test;

constexpr int64_t mebibyte = 1 << 20, pageCache = 64 * mebibyte;

// A text without end, of which a record holds parts; no two parts of it look alike.
std::string textFrom(uint64_t start, uint64_t length) {
    std::string text(static_cast<size_t>(length), '\0');
    for (size_t byte = 0; byte < text.size(); ++byte)
        text[byte] = static_cast<char>((start + byte) * 0x9E3779B97F4A7C15 >> 56);
    return text;
}

// What a record holds, told by where its bytes come from.
class RecordModel {
  public:
    uint64_t length() const { return length_; }

    // Puts the next bytes of the text, which are returned, in the place of others.
    std::string replace(uint64_t offset, uint64_t removed, uint64_t inserted) {
        size_t first = split(offset), behind = split(std::min(offset + removed, length_));
        for (size_t part = first; part < behind; ++part)
            length_ -= parts_[part].length;
        parts_.erase(parts_.begin() + static_cast<ptrdiff_t>(first),
                     parts_.begin() + static_cast<ptrdiff_t>(behind));
        uint64_t start = used_;
        if (inserted != 0)
            parts_.insert(parts_.begin() + static_cast<ptrdiff_t>(first), {start, inserted});
        length_ += inserted;
        used_ += inserted;
        return textFrom(start, inserted);
    }

    std::string read(uint64_t offset, uint64_t length) const {
        std::string bytes;
        uint64_t start = 0, end = offset + length;
        for (const Part &part : parts_) {
            uint64_t from = std::max(start, offset), to = std::min(start + part.length, end);
            if (from < to)
                bytes += textFrom(part.start + from - start, to - from);
            start += part.length;
        }
        return bytes;
    }

  private:
    struct Part {
        uint64_t start, length;
    };

    // The part that begins at the offset.
    size_t split(uint64_t offset) {
        size_t part = 0;
        for (; part < parts_.size() && offset >= parts_[part].length; ++part)
            offset -= parts_[part].length;
        if (offset == 0)
            return part;
        Part rest{parts_[part].start + offset, parts_[part].length - offset};
        parts_[part].length = offset;
        parts_.insert(parts_.begin() + static_cast<ptrdiff_t>(part) + 1, rest);
        return part + 1;
    }

    std::vector<Part> parts_;
    uint64_t length_ = 0, used_ = 0;
};

int64_t residentBytes() {
    std::ifstream sizes("/proc/self/statm");
    int64_t all = 0, resident = 0;
    sizes >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

class LongRecordTest : public ChunkFixture {
  protected:
    static constexpr uint32_t fixedPart = 4;

    // The fixed part is no part of the model.
    void replace(uint32_t code, uint64_t offset, uint64_t removed, uint64_t inserted) {
        std::string bytes = model.replace(offset, removed, inserted);
        auto place = static_cast<uint32_t>(offset + fixedPart);
        int32_t status = code == deleteCode     ? remove(code, place, static_cast<uint32_t>(removed))
                         : code == truncateCode ? truncate(code, place)
                                                : change(code, place, bytes);
        ASSERT_EQ(status, 0);
    }

    void append(uint32_t length) { replace(appendCode, model.length(), 0, length); }

    void changeAnywhere(RandomSource &random) {
        auto size = static_cast<uint32_t>(random.below(longestChange));
        uint64_t offset = random.below(static_cast<size_t>(model.length()));
        switch (random.below(16)) {
            case 0:
                replace(truncateCode, model.length() - size, size, 0);
                break;
            case 1:
                append(size);
                break;
            case 2:
            case 3:
            case 4:
            case 5:
                replace(insertCode, offset, 0, size);
                break;
            case 6:
            case 7:
            case 8:
            case 9:
                replace(deleteCode, offset, size, 0);
                break;
            default:
                replace(overwriteCode, offset, size, size);
                break;
        }
        expectEqualFrom(offset > size ? offset - size : 0, 3 * size);
        expectEqualFrom(random.below(static_cast<size_t>(model.length())), size);
    }

    void expectEqualFrom(uint64_t offset, uint32_t length) {
        ASSERT_TRUE(read(static_cast<uint32_t>(offset + fixedPart), length) == model.read(offset, length))
            << "at " << offset;
    }

    void beginAgain() {
        ASSERT_EQ(session.call(20, nullptr).status, 0);
        ASSERT_EQ(session.call(1019, nullptr).status, 0);
        mostResident = std::max(mostResident, residentBytes());
    }

    static constexpr uint32_t longestChange = 200000;
    RecordModel model;
    int64_t mostResident = 0;
};

TEST_F(LongRecordTest, ChunksOf300MegabytesEqualAModelAndTakeNoMemory) {
    constexpr uint32_t pieceLength = 262144;
    const uint32_t pieceCount = rounds(1200, 30), changeCount = rounds(600, 20);
    RandomSource random;
    open();
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    int64_t before = residentBytes(), afterAThird = 0;
    for (uint32_t piece = 0; piece < pieceCount; ++piece) {
        ASSERT_NO_FATAL_FAILURE(append(pieceLength));
        if (piece % 100 == 99)
            beginAgain();
        if (piece == pieceCount / 3)
            afterAThird = mostResident;
    }
    ASSERT_GT(model.length(), rounds(300'000'000u, 7'000'000u));
    for (uint32_t change = 0; change < changeCount; ++change) {
        ASSERT_NO_FATAL_FAILURE(changeAnywhere(random)) << "change " << change;
        if (change % 100 == 99)
            beginAgain();
    }
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, path), 0);
    for (uint64_t offset = 0; offset < model.length(); offset += mebibyte)
        ASSERT_NO_FATAL_FAILURE(expectEqualFrom(offset, mebibyte));
    EXPECT_EQ(read(0, fixedPart), "abcd");
    mostResident = std::max(mostResident, residentBytes());
    printf("resident MiB: %d before, %d after a third, %d at most\n", static_cast<int>(before / mebibyte),
           static_cast<int>(afterAThird / mebibyte), static_cast<int>(mostResident / mebibyte));
    // The address sanitizer keeps freed memory, and an emulator needs some itself.
#if !defined(__SANITIZE_ADDRESS__)
    if (!isEmulated()) {
        EXPECT_LT(mostResident - before, pageCache + 32 * mebibyte);
        EXPECT_LT(mostResident - afterAThird, 16 * mebibyte);
    }
#endif
}

}  // namespace
