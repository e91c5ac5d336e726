#include <gtest/gtest.h>

#include "embedded/operation/proportion.h"

namespace {

using namespace vantrel::embedded;

TEST(Proportion, SpreadsRanksEvenly) {
    EXPECT_EQ(rankAt({0, 10000}, 5), 0u);
    EXPECT_EQ(rankAt({1249, 10000}, 5), 0u);
    EXPECT_EQ(rankAt({1250, 10000}, 5), 1u);
    EXPECT_EQ(rankAt({3749, 10000}, 5), 1u);
    EXPECT_EQ(rankAt({3750, 10000}, 5), 2u);
    EXPECT_EQ(rankAt({8750, 10000}, 5), 4u);
    EXPECT_EQ(rankAt({10000, 10000}, 5), 4u);
    EXPECT_EQ(numeratorAt(0, 5, 10000), 0u);
    EXPECT_EQ(numeratorAt(3, 5, 10000), 7500u);
    EXPECT_EQ(numeratorAt(4, 5, 10000), 10000u);
    EXPECT_EQ(numeratorAt(1, 4, 10000), 3333u);
    EXPECT_EQ(numeratorAt(2, 4, 10000), 6667u);
    EXPECT_EQ(numeratorAt(1, 3, 1), 1u);
}

TEST(Proportion, OfTheOnlyRecordIsNothing) {
    EXPECT_EQ(numeratorAt(0, 1, 10000), 0u);
    EXPECT_EQ(rankAt({0, 1}, 1), 0u);
    EXPECT_EQ(rankAt({1, 1}, 1), 0u);
}

TEST(Proportion, IsExactBeyond64Bits) {
    constexpr uint64_t total = (uint64_t{1} << 61) + 1;
    EXPECT_EQ(rankAt({UINT32_MAX, UINT32_MAX}, total), total - 1);
    EXPECT_EQ(rankAt({UINT32_MAX - 1, UINT32_MAX}, total), 2305843008676823040u);
    EXPECT_EQ(rankAt({1, UINT32_MAX}, total), 536870912u);
    EXPECT_EQ(numeratorAt(total - 1, total, UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(numeratorAt(total / 2, total, UINT32_MAX), 2147483648u);
    EXPECT_EQ(numeratorAt(536870912, total, UINT32_MAX), 1u);
    EXPECT_EQ(numeratorAt(268435455, total, UINT32_MAX), 0u);
}

TEST(Proportion, LeadsBackWhereTheUnitIsFineEnough) {
    for (uint64_t total = 2; total <= 400; ++total) {
        for (uint32_t denominator : {static_cast<uint32_t>(total - 1), uint32_t{400}, UINT32_MAX}) {
            for (uint64_t rank = 0; rank < total; ++rank)
                ASSERT_EQ(rankAt({numeratorAt(rank, total, denominator), denominator}, total), rank) << total;
        }
    }
}

}  // namespace
