#ifndef VANTREL_EMBEDDED_OPERATION_READ_H
#define VANTREL_EMBEDDED_OPERATION_READ_H

#include <limits>

#include "embedded/operation/lock_attempt.h"
#include "embedded/operation/reply.h"

namespace vantrel::embedded {

// Copies bytes of a record, wherever in head and tail they lie.
void copyRecord(Storage &storage, const StoredRecord &record, uint64_t start, uint64_t length, void *target);

// Hands a found record to the caller: as many of its bytes as fit, or nothing for a key-only read.
int32_t deliverRecord(Request &request, Storage &storage, const StoredRecord &record);

// Makes a found record current, sets the place in the index where there is one, and hands key and record to
// the caller.
int32_t deliverFound(Position &position, Request &request, const IndexDefinition *index,
                     const StoredEntry &entry);

// Finds the entry that a search for an encoded key reads first: codes 5 and 8 to 11. Returns 4 or 9 where
// there is none.
int32_t searchKey(Storage &storage, uint16_t operation, uint8_t index, const Bytes &key, StoredEntry *entry);

// Behind every record, and behind every entry of a key.
constexpr int64_t behindAllAddresses = std::numeric_limits<int64_t>::max();

}  // namespace vantrel::embedded

#endif
