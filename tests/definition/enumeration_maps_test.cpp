#include "definition/enumeration_maps.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using namespace vantrel;

template <size_t count>
int32_t decoded(const EnumerationMap<count> &map, uint16_t stored) {
    uint8_t field[2];
    storeU16(field, stored);
    return decodeEnumeration(map, field);
}

// The bits after encoding the value into a field that had these.
template <size_t count>
uint16_t encoded(const EnumerationMap<count> &map, int32_t value, uint16_t stored) {
    uint8_t field[2];
    storeU16(field, stored);
    EXPECT_EQ(encodeEnumeration(map, value, field), 0);
    return loadU16(field);
}

TEST(EnumerationMaps, PageSizesAreStoredInBytes) {
    const std::pair<uint16_t, int32_t> rows[] = {{512, 0},  {1024, 1}, {1536, 2}, {2048, 3}, {3072, 4},
                                                 {3584, 5}, {4096, 6}, {8192, 7}, {16384, 8}};
    for (auto [size, value] : rows)
        EXPECT_EQ(decoded(pageSizeMap, size), value);
    for (uint16_t size : {uint16_t{0}, uint16_t{511}, uint16_t{2560}, uint16_t{65535}})
        EXPECT_EQ(decoded(pageSizeMap, size), -7);
}

TEST(EnumerationMaps, FileVersionsAreCodes) {
    const std::pair<uint16_t, int32_t> rows[] = {{0x60, 0}, {0x61, 1}, {0x70, 2}, {0x80, 3}, {0x90, 4},
                                                 {0x95, 5}, {0x00, 6}, {0xD0, 7}, {0xD3, 8}};
    for (auto [code, value] : rows)
        EXPECT_EQ(decoded(fileVersionMap, code), value);
    for (uint16_t code : {uint16_t{0x62}, uint16_t{0xD1}, uint16_t{0x0160}})
        EXPECT_EQ(decoded(fileVersionMap, code), -7);
}

TEST(EnumerationMaps, OtherBitsAreIgnored) {
    EXPECT_EQ(decoded(recordCompressionMap, 0xFFF5 | 0x0008), 2);
    EXPECT_EQ(decoded(recordCompressionMap, 0xFFFF), -7);
    EXPECT_EQ(decoded(variableLengthRecordsMap, 0xFFFF), 2);
    EXPECT_EQ(decoded(variableLengthRecordsMap, 0x0800), -7);
    EXPECT_EQ(decoded(freeSpaceThresholdMap, 0xFF3F), 3);
    EXPECT_EQ(decoded(freeSpaceThresholdMap, 0xFF7F), 0);
    EXPECT_EQ(decoded(systemDataMap, 0xADFF), 2);
    EXPECT_EQ(decoded(systemDataMap, 0xEFFF), 3);
    EXPECT_EQ(decoded(systemDataMap, 0x1000), -7);
}

TEST(EnumerationMaps, EncodingLeavesOtherBits) {
    EXPECT_EQ(encoded(systemDataMap, 3, 0xFFFF), 0xEFFF);
    EXPECT_EQ(encoded(systemDataMap, 3, 0x0000), 0x4200);
    EXPECT_EQ(encoded(freeSpaceThresholdMap, 3, 0xFFFF), 0xFF3F);
}

TEST(EnumerationMaps, ValuesOutOfRangeLeaveTheField) {
    uint8_t field[2] = {0x34, 0x12};
    for (int32_t value : {4, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(encodeEnumeration(systemDataMap, value, field), 2002);
    EXPECT_EQ(loadU16(field), 0x1234);
}

}  // namespace
