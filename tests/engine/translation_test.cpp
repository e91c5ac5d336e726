#include "engine/translation.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using namespace vantrel;

TEST(LockBias, AddsAHundredPerMode) {
    const uint32_t expected[] = {5, 105, 205, 305, 405};
    for (int32_t mode = 0; mode <= 4; ++mode) {
        uint32_t operation = 5;
        EXPECT_EQ(setLockBias(&operation, mode), 0);
        EXPECT_EQ(operation, expected[mode]);
    }
}

TEST(LockBias, RefusesOtherModesAndLeavesTheOperation) {
    for (int32_t mode : {-1, 5, INT_MIN, INT_MAX}) {
        uint32_t operation = 5;
        EXPECT_EQ(setLockBias(&operation, mode), 2002);
        EXPECT_EQ(operation, 5u);
    }
}

TEST(LockBias, RefusesAMissingOperationBeforeTheMode) {
    EXPECT_EQ(setLockBias(nullptr, 5), 2007);
}

TEST(DataTypes, HaveTheirEngineCodes) {
    const struct {
        int32_t dataType;
        uint16_t engineType;
    } rows[] = {{0, 0},   {1, 11},  {2, 1},   {3, 14},  {4, 2},   {5, 15},   {6, 3},   {7, 17},
                {8, 4},   {9, 18},  {10, 5},  {11, 19}, {12, 6},  {13, 20},  {14, 7},  {15, 25},
                {16, 8},  {17, 26}, {18, 9},  {19, 27}, {20, 10}, {21, 255}, {24, 32}, {25, 21},
                {26, 34}, {27, 16}, {28, 28}, {29, 29}, {30, 31}};
    for (auto row : rows) {
        uint16_t engineType = 0xABCD;
        EXPECT_EQ(setDataType(&engineType, row.dataType), 0);
        EXPECT_EQ(engineType, row.engineType);
        VantrelDataType dataType = -1;
        EXPECT_TRUE(dataTypeOfEngineType(row.engineType, &dataType));
        EXPECT_EQ(dataType, row.dataType);
    }
}

TEST(DataTypes, LegacyAndUnknownTypesAreRefused) {
    for (int32_t dataType : {22, 23, 31, 32, 255, 65536, -1, INT_MIN, INT_MAX}) {
        uint16_t engineType = 0xABCD;
        EXPECT_EQ(setDataType(&engineType, dataType), 2002) << dataType;
        EXPECT_EQ(engineType, 0xABCD);
    }
    EXPECT_EQ(setDataType(nullptr, 22), 2007);
}

TEST(DataTypes, EveryOtherEngineCodeIsUnknown) {
    int known = 0;
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        VantrelDataType dataType = -5;
        if (dataTypeOfEngineType(static_cast<uint16_t>(code), &dataType))
            ++known;
        else
            EXPECT_EQ(dataType, -5);
    }
    EXPECT_EQ(known, 29);
}

TEST(IndexRange, HoldsNoneTheIndexesAndTheSystemIndexes) {
    for (int32_t index : {-1, 0, 1, 117, 118, 124, 125})
        EXPECT_FALSE(indexIsOutOfRange(index)) << index;
    for (int32_t index : {INT_MIN, -7, -2, 119, 120, 123, 126, 127, 255, INT_MAX})
        EXPECT_TRUE(indexIsOutOfRange(index)) << index;
}

}  // namespace
