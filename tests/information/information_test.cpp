#include "information/information_test.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace vantrel::test {

void GuardedText::expectContents(const std::string &expected) const {
    EXPECT_EQ(contents(), expected);
    EXPECT_EQ(std::string(bytes_.data(), guardSize), std::string(guardSize, guard));
    EXPECT_EQ(std::string(bytes_.data() + guardSize + size_, guardSize), std::string(guardSize, guard));
}

InformationTest::InformationTest() {
    EXPECT_EQ(VantrelFileInformationAllocate(&information), 0);
    resetStatus();
}

InformationTest::~InformationTest() {
    VantrelFileInformationFree(information);
}

void InformationTest::put(size_t offset, const Bytes &bytes) {
    std::copy(bytes.begin(), bytes.end(), at(offset));
}

void InformationTest::fill(uint8_t value) {
    memset(information, value, lastStatusField);
}

void InformationTest::expectAllBytes(uint8_t value, size_t exceptOffset, size_t exceptWidth) {
    auto isOther = [value](uint8_t byte) { return byte != value; };
    EXPECT_TRUE(std::none_of(at(0), at(exceptOffset), isOther));
    EXPECT_TRUE(std::none_of(at(exceptOffset + exceptWidth), at(lastStatusField), isOther));
}

void InformationTest::expectEveryValue(Getter<int32_t> get, size_t offset, size_t width,
                                       const Expected &expected) {
    for (uint8_t background : backgrounds) {
        fill(background);
        for (uint32_t value = 0; value < 1u << 8 * width; ++value) {
            *at(offset) = static_cast<uint8_t>(value);
            if (width == 2)
                *at(offset + 1) = static_cast<uint8_t>(value >> 8);
            resetStatus();
            std::optional<int32_t> wanted = expected(static_cast<uint16_t>(value));
            int32_t actual = get(information);
            if (actual == wanted.value_or(-7) && status() == (wanted ? 0 : 2002))
                continue;
            FAIL() << "the field holding " << value << " is read as " << actual << " with status "
                   << status();
        }
        expectAllBytes(background, offset, width);
    }
}

void InformationTest::expectEveryByte(Getter<int32_t> get, size_t offset, const Expected &expected) {
    expectEveryValue(get, offset, 1, expected);
}

void InformationTest::expectEveryWord(Getter<int32_t> get, size_t offset, const Expected &expected) {
    expectEveryValue(get, offset, 2, expected);
}

void InformationTest::expectEnumeration(Getter<int32_t> get, size_t offset, uint16_t mask,
                                        const std::map<uint16_t, int32_t> &values) {
    expectEveryWord(get, offset, [&](uint16_t word) -> std::optional<int32_t> {
        auto found = values.find(word & mask);
        if (found == values.end())
            return std::nullopt;
        return found->second;
    });
}

void InformationTest::expectFlag(Getter<int32_t> get, size_t offset, uint16_t mask) {
    expectEveryWord(get, offset, [mask](uint16_t word) { return (word & mask) == 0 ? 0 : 1; });
}

void InformationTest::expectLong(Getter<int32_t> get, size_t offset) {
    expectReads(get, offset, {0x78, 0x56, 0x34, 0x12}, 0x12345678);
    expectReads(get, offset, {0x00, 0x00, 0x00, 0x00}, 0);
    expectReads(get, offset, {0xFF, 0xFF, 0xFF, 0x7F}, INT32_MAX);
    expectReads(get, offset, {0x00, 0x00, 0x00, 0x80}, INT32_MIN);
    expectReads(get, offset, {0xFF, 0xFF, 0xFF, 0xFF}, -1);
    expectReads(get, offset, {0xF9, 0xFF, 0xFF, 0xFF}, -7);
}

void InformationTest::expectLongLong(Getter<int64_t> get, size_t offset) {
    expectReads(get, offset, {0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12}, int64_t{0x123456789ABCDEF0});
    expectReads(get, offset, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, int64_t{0});
    expectReads(get, offset, {0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00}, int64_t{4294967296});
    expectReads(get, offset, {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00}, int64_t{4294967295});
    expectReads(get, offset, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80}, INT64_MIN);
    expectReads(get, offset, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, int64_t{-1});
}

void InformationTest::expectTextRefusals(TextGetter get, int32_t width) {
    GuardedText buffer(static_cast<size_t>(width));
    EXPECT_EQ(get(nullptr, buffer.get(), width), 2007);
    EXPECT_EQ(get(nullptr, nullptr, -1), 2007);
    buffer.expectUntouched();
    EXPECT_EQ(status(), 7777);
    for (int32_t size : {width, 0, -1}) {
        resetStatus();
        EXPECT_EQ(get(information, nullptr, size), 2007);
        EXPECT_EQ(status(), 2007);
    }
    for (int32_t size : {width - 1, 1, 0, -1, INT_MIN}) {
        resetStatus();
        EXPECT_EQ(get(information, buffer.get(), size), 2002);
        EXPECT_EQ(status(), 2002);
        buffer.expectUntouched();
    }
}

void InformationTest::expectFixedText(TextGetter get, size_t offset, int32_t width) {
    expectTextRefusals(get, width);
    size_t length = static_cast<size_t>(width);
    fill('n');
    resetStatus();
    GuardedText full(length), wide(length + 3);
    EXPECT_EQ(get(information, full.get(), width), 0);
    EXPECT_EQ(status(), 0);
    full.expectContents(std::string(length - 1, 'n') + '\0');
    EXPECT_EQ(get(information, wide.get(), width + 3), 0);
    wide.expectContents(std::string(length - 1, 'n') + '\0' + std::string(3, GuardedText::guard));

    put(offset, std::string("a name\0", 7));
    GuardedText shorter(length);
    EXPECT_EQ(get(information, shorter.get(), width), 0);
    shorter.expectContents("a name" + std::string(length - 6, '\0'));

    *at(offset) = 0;
    GuardedText empty(length);
    EXPECT_EQ(get(information, empty.get(), width), 0);
    empty.expectContents(std::string(length, '\0'));
}

}  // namespace vantrel::test
