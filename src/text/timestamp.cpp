#include <cstdint>

#include "vantrel.h"

namespace {

constexpr uint64_t unixEpoch = 621355968000000000;
constexpr int32_t ticksPerMicrosecond = 10;

}  // namespace

VantrelTimestamp VantrelUnixEpochMicrosecondsToTimestamp(int64_t microseconds) {
    return static_cast<VantrelTimestamp>(static_cast<uint64_t>(microseconds) * ticksPerMicrosecond +
                                         unixEpoch);
}

int64_t VantrelTimestampToUnixEpochMicroseconds(VantrelTimestamp timestamp) {
    return static_cast<int64_t>(static_cast<uint64_t>(timestamp) - unixEpoch) / ticksPerMicrosecond;
}
