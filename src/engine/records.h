#ifndef VANTREL_ENGINE_RECORDS_H
#define VANTREL_ENGINE_RECORDS_H

#include <cstdint>

#include "engine/bytes.h"
#include "vantrel.h"

// The two records that every operation works on. The engine is handed their addresses, so the identifier
// block and the position block stand at their very start.

struct VantrelClient {
    uint8_t reserved[12];
    uint8_t serviceAgentIdentifier[2];
    uint8_t clientIdentifier[2];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelClient) == 20);

struct VantrelFile {
    uint8_t positionBlock[128];
    uint8_t lastStatus[4];
    uint8_t client[sizeof(void *)];
    uint8_t cachedKeyNumber[4];
    uint8_t cachedKeyLength[4];
    uint8_t keyBuffer[1024];
    uint8_t savedCursorPosition[8];
};
static_assert(sizeof(VantrelFile) == 1172 + sizeof(void *));

namespace vantrel {

// The cached key number of a file on which no key operation has been made yet.
inline constexpr int32_t noCachedKey = -7;

inline constexpr uint32_t keyBufferSize = sizeof(VantrelFile::keyBuffer);

// Null where the file is not open.
inline VantrelClient *owningClient(const VantrelFile *file) {
    return loadPointer<VantrelClient>(file->client);
}

}  // namespace vantrel

#endif
