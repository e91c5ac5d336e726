#include "engine/c_caller.h"

#include <stddef.h>

const int64_t farCursorPosition = INT64_C(0x0123456789ABCDEF);

int32_t retrieveFarRecordFromC(VantrelFile *file, void *record, int32_t recordSize) {
    return VantrelFileRecordRetrieveByCursorPosition(file, 5, farCursorPosition, NULL, 0, record, recordSize,
                                                     VANTREL_LOCK_MODE_NONE);
}

int32_t numeratorOfFarRecordFromC(VantrelFile *file, uint32_t denominator) {
    return VantrelFileGetNumerator(file, 5, NULL, 0, farCursorPosition, denominator);
}
