#ifndef VANTREL_BULK_RESULTS_H
#define VANTREL_BULK_RESULTS_H

#include <cstdint>

#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel {

// The largest buffer that the engine is handed.
inline constexpr uint32_t bulkAreaSize = 258048;

// Every record of a reply starts with its length (2 bytes) and its cursor position (8 bytes); the record
// count (2 bytes) stands before the first.
inline constexpr uint32_t replyRecordHead = 10;
inline constexpr uint32_t firstReplyRecord = 2;

// Requests are written into the area, and the engine's reply replaces them there.
struct BulkResult {
    uint8_t area[bulkAreaSize];
    uint8_t lastStatus[4];
};
static_assert(sizeof(BulkResult) == 258052);

}  // namespace vantrel

struct VantrelBulkDeleteResult : vantrel::BulkResult {};

// Records vary in length, so the one last found is remembered: reading on starts there.
struct VantrelBulkRetrieveResult : vantrel::BulkResult {
    uint8_t foundNumber[4];
    uint8_t foundOffset[4];
    uint8_t foundHead[vantrel::replyRecordHead];
};
static_assert(sizeof(VantrelBulkRetrieveResult) ==
              sizeof(vantrel::BulkResult) + 4 + 4 + vantrel::replyRecordHead);

namespace vantrel {

// Called whenever the area is about to be filled again.
inline void forgetFoundRecord(VantrelBulkRetrieveResult *result) {
    storeU32(result->foundNumber, 0);
}

}  // namespace vantrel

#endif
