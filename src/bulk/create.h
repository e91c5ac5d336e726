#ifndef VANTREL_BULK_CREATE_H
#define VANTREL_BULK_CREATE_H

#include <cstdint>

#include "bulk/results.h"
#include "vantrel.h"

// The used part of the area is the engine's request: the record count (4 bytes), then every record behind its
// length (4 bytes).
struct VantrelBulkCreatePayload {
    uint8_t area[vantrel::bulkAreaSize];
    uint8_t usedLength[4];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelBulkCreatePayload) == 258056);

// The area is the engine's reply: the record count (4 bytes), then the cursor positions (8 bytes each).
struct VantrelBulkCreateResult {
    uint8_t area[vantrel::bulkAreaSize];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelBulkCreateResult) == 258052);

#endif
