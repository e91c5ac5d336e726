#include <stdio.h>

#include "questions.h"
#include "report.h"

static void printIndexes(VantrelFileInformation *information, VantrelKeySegment *segment) {
    printf("  %-5s %-18s %6s %6s %-16s %-10s %-14s %12s\n", "INDEX", "ON", "OFFSET", "LENGTH", "TYPE",
           "ORDER", "DUPLICATES", "UNIQUE KEYS");
    for (int32_t number = 1;
         VantrelFileInformationGetKeySegment(information, segment, number) == VANTREL_STATUS_NO_ERROR;
         number++) {
        VantrelIndex index = VantrelKeySegmentGetIndex(segment);
        printf("  %-5s %-18s %6d %6d %-16s %-10s %-14s %12lld\n", VantrelIndexToString(index),
               index >= 0 && index < INDEX_COUNT ? indexNames[index] : "",
               (int)VantrelKeySegmentGetOffset(segment), (int)VantrelKeySegmentGetLength(segment),
               VantrelDataTypeToString(VantrelKeySegmentGetDataType(segment)),
               VantrelKeySegmentGetDescendingSortOrder(segment) == 1 ? "descending" : "ascending",
               VantrelKeySegmentGetDuplicateMode(segment) == VANTREL_DUPLICATE_MODE_NOT_ALLOWED ? "refused"
                                                                                                : "allowed",
               (long long)VantrelKeySegmentGetUniqueValueCount(segment));
    }
}

static void printFile(VantrelFileInformation *information) {
    printf("  %-28s %lld\n", "records", (long long)VantrelFileInformationGetRecordCount(information));
    printf("  %-28s %d\n", "fixed part of a record",
           (int)VantrelFileInformationGetFixedRecordLength(information));
    printf("  %-28s %s\n", "variable-length records",
           VantrelVariableLengthRecordsModeToString(
               VantrelFileInformationGetVariableLengthRecordsMode(information)));
    printf("  %-28s %s\n", "page size",
           VantrelPageSizeToString(VantrelFileInformationGetPageSize(information)));
    printf("  %-28s %s\n", "file version",
           VantrelFileVersionToString(VantrelFileInformationGetFileVersion(information)));
    printf("  %-28s %d\n", "indexes", (int)VantrelFileInformationGetIndexCount(information));
    printf("  %-28s %d\n", "open handles", (int)VantrelFileInformationGetHandleCount(information));
}

static bool printStatistics(Store *store, VantrelFileInformation *information, VantrelKeySegment *segment) {
    double start = now();
    if (VantrelFileGetInformation(store->file, information) != VANTREL_STATUS_NO_ERROR)
        return complainOfFile(store, "cannot get the statistics of");
    double seconds = now() - start;
    printf("\nThe file's statistics\n");
    printFile(information);
    printIndexes(information, segment);
    printSeconds(seconds, 1, "requests");
    return true;
}

bool showStatistics(Store *store) {
    VantrelFileInformation *information = NULL;
    VantrelKeySegment *segment = NULL;
    bool shown = false;
    VantrelStatus status = VantrelFileInformationAllocate(&information);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelKeySegmentAllocate(&segment);
    if (status == VANTREL_STATUS_NO_ERROR)
        shown = printStatistics(store, information, segment);
    else
        complainOfStatus(store->path, status, "cannot get the statistics of");
    VantrelKeySegmentFree(segment);
    VantrelFileInformationFree(information);
    return shown;
}
