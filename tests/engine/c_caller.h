#ifndef VANTREL_TESTS_ENGINE_C_CALLER_H
#define VANTREL_TESTS_ENGINE_C_CALLER_H

#include "vantrel.h"

// Calls as a program in C makes them, whose 64-bit arguments go through pairs of registers on 32-bit
// processors.
#ifdef __cplusplus
extern "C" {
#endif

extern const int64_t farCursorPosition;

int32_t retrieveFarRecordFromC(VantrelFile *file, void *record, int32_t recordSize);
int32_t numeratorOfFarRecordFromC(VantrelFile *file, uint32_t denominator);

#ifdef __cplusplus
}
#endif

#endif
