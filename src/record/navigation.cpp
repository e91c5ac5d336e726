#include "record/key_call.h"
#include "record/retrieval.h"

using namespace vantrel;

namespace {

// A move through the file, along an index or in the physical order.
struct Move {
    uint32_t alongIndex;
    uint32_t physical;
};

constexpr Move first = {operationGetFirst, operationStepFirst};
constexpr Move last = {operationGetLast, operationStepLast};
constexpr Move next = {operationGetNext, operationStepNext};
constexpr Move previous = {operationGetPrevious, operationStepPrevious};

int32_t retrieveAfterMove(VantrelFile *file, const Move &move, VantrelIndex index,
                          const ReadArguments &read) {
    if (file == nullptr)
        return -1;
    uint32_t operation = index == VANTREL_INDEX_NONE ? move.physical : move.alongIndex;
    return retrieveRecord(file, operation, index, read);
}

// Goes on in the order used last.
int32_t retrieveNeighbour(VantrelFile *file, const Move &move, const ReadArguments &read) {
    return file == nullptr ? -1 : retrieveAfterMove(file, move, cachedKeyNumber(file), read);
}

}  // namespace

int32_t VantrelFileRecordRetrieveFirst(VantrelFile *file, VantrelIndex index, void *key, int32_t keyLength,
                                       void *record, int32_t recordSize, VantrelLockMode lockMode) {
    return retrieveAfterMove(file, first, index, {key, keyLength, record, recordSize, lockMode});
}

int32_t VantrelFileRecordRetrieveLast(VantrelFile *file, VantrelIndex index, void *key, int32_t keyLength,
                                      void *record, int32_t recordSize, VantrelLockMode lockMode) {
    return retrieveAfterMove(file, last, index, {key, keyLength, record, recordSize, lockMode});
}

int32_t VantrelFileRecordRetrieveNext(VantrelFile *file, void *key, int32_t keyLength, void *record,
                                      int32_t recordSize, VantrelLockMode lockMode) {
    return retrieveNeighbour(file, next, {key, keyLength, record, recordSize, lockMode});
}

int32_t VantrelFileRecordRetrievePrevious(VantrelFile *file, void *key, int32_t keyLength, void *record,
                                          int32_t recordSize, VantrelLockMode lockMode) {
    return retrieveNeighbour(file, previous, {key, keyLength, record, recordSize, lockMode});
}
