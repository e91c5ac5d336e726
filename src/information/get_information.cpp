#include <cstring>

#include "engine/call.h"
#include "engine/records.h"
#include "engine/status.h"
#include "information/file_information.h"

using namespace vantrel;

namespace {

constexpr char extendedStatisticsSignature[4] = {'E', 'x', 'S', 't'};
constexpr uint32_t duplicateConflictFunction = 3;
constexpr uint32_t fileUsageFunction = 4;
constexpr uint32_t gatewayFunction = 5;
constexpr uint32_t lockOwnerFunction = 6;
constexpr uint32_t referentialIntegrityFunction = 8;
constexpr uint32_t securityFunction = 7;
constexpr uint32_t segmentFilesFunction = 1;
constexpr uint32_t systemDataFunction = 2;
constexpr int32_t statisticsKeyNumber = -1;

VantrelStatus requestStatistics(VantrelFile *file, VantrelFileInformation *information) {
    uint32_t dataLength = sizeof information->statistics;
    VantrelStatus status = callVantrel(operationStatistics, file, information->statistics, &dataLength,
                                       information->statisticsKey, sizeof information->statisticsKey,
                                       statisticsKeyNumber, owningClient(file));
    storeU32(information->replyLength, dataLength);
    return keepStatus(file, status);
}

// The area holds the request first; the reply overwrites it.
struct ExtendedStatistics {
    uint32_t function;
    uint8_t *area;
    uint32_t size;
};

void writeRequest(const ExtendedStatistics &statistics) {
    memcpy(statistics.area, extendedStatisticsSignature, sizeof extendedStatisticsSignature);
    storeU32(statistics.area + 4, statistics.function);
    if (statistics.function != segmentFilesFunction)
        return;
    storeU32(statistics.area + 8, 0);
    storeU32(statistics.area + 12, 32);
    storeU32(statistics.area + 16, 1);
}

VantrelStatus requestExtendedStatistics(VantrelFile *file, const ExtendedStatistics &statistics) {
    writeRequest(statistics);
    VantrelClient *client = owningClient(file);
    if (client == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    uint32_t dataLength = statistics.size;
    return keepStatus(file, callVantrel(operationExtendedStatistics, file, statistics.area, &dataLength,
                                        nullptr, 0, 0, client));
}

}  // namespace

VantrelStatus VantrelFileGetInformation(VantrelFile *file, VantrelFileInformation *information) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (information == nullptr || owningClient(file) == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    VantrelStatus status = requestStatistics(file, information);
    const ExtendedStatistics sequence[] = {
        {duplicateConflictFunction, information->duplicateConflict, sizeof information->duplicateConflict},
        {fileUsageFunction, information->fileUsage, sizeof information->fileUsage},
        {gatewayFunction, information->gateway, sizeof information->gateway},
        {lockOwnerFunction, information->lockOwner, sizeof information->lockOwner},
        {referentialIntegrityFunction, information->referentialIntegrity,
         sizeof information->referentialIntegrity},
        {securityFunction, information->security, sizeof information->security},
        {segmentFilesFunction, information->segmentFiles, sizeof information->segmentFiles},
        {systemDataFunction, information->systemData, sizeof information->systemData},
    };
    for (const ExtendedStatistics &statistics : sequence) {
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        status = requestExtendedStatistics(file, statistics);
    }
    return status;
}
