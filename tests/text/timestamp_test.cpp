#include <gtest/gtest.h>

#include <cstdint>

#include "vantrel.h"

namespace {

struct Instant {
    int64_t microseconds;
    VantrelTimestamp timestamp;
};

constexpr Instant instants[] = {
    {0, 621355968000000000},
    {1, 621355968000000010},
    {-1, 621355967999999990},
    {-62135596800000000, 0},
    {946684800000000, 630822816000000000},      // 2000-01-01
    {253402300799999999, 3155378975999999990},  // the last microsecond of the year 9999
};

TEST(Timestamp, CountsTicksFromTheYear1) {
    for (const Instant &instant : instants)
        EXPECT_EQ(VantrelUnixEpochMicrosecondsToTimestamp(instant.microseconds), instant.timestamp);
}

TEST(Timestamp, GivesMicrosecondsBack) {
    for (const Instant &instant : instants)
        EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(instant.timestamp), instant.microseconds);
}

TEST(Timestamp, DropsPartsOfAMicrosecondTowardTheEpoch) {
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(621355968000000009), 0);
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(621355968000000019), 1);
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(621355967999999991), 0);
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(621355967999999985), -1);
}

TEST(Timestamp, WrapsAroundOnOverflow) {
    EXPECT_EQ(VantrelUnixEpochMicrosecondsToTimestamp(INT64_MAX), 621355967999999990);
    EXPECT_EQ(VantrelUnixEpochMicrosecondsToTimestamp(INT64_MIN), 621355968000000000);
    EXPECT_EQ(VantrelUnixEpochMicrosecondsToTimestamp(922337203685477580), -8602016068854775816);
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(INT64_MIN), 860201606885477580);
    EXPECT_EQ(VantrelTimestampToUnixEpochMicroseconds(INT64_MAX), 860201606885477580);
}

}  // namespace
