#ifndef VANTREL_BENCH_NULL_ENGINE_H
#define VANTREL_BENCH_NULL_ENGINE_H

#include <cstdint>

// Answers every request with status 0, the data length that was offered and no bytes.
extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

#endif
