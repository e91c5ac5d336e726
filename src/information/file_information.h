#ifndef VANTREL_INFORMATION_FILE_INFORMATION_H
#define VANTREL_INFORMATION_FILE_INFORMATION_H

#include <cstdint>

#include "vantrel.h"

// The engine's replies as they came; getters decode them on demand.
struct VantrelFileInformation {
    uint8_t statistics[65535];
    uint8_t replyLength[4];  // of the statistics
    uint8_t duplicateConflict[10];
    uint8_t fileUsage[20];
    uint8_t gateway[72];
    uint8_t lockOwner[104];
    uint8_t referentialIntegrity[267];
    uint8_t security[65535];
    uint8_t segmentFiles[65535];
    uint8_t systemData[8];
    uint8_t statisticsKey[1024];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelFileInformation) == 198118);

#endif
