#ifndef VANTREL_EMBEDDED_OPERATION_REPLY_H
#define VANTREL_EMBEDDED_OPERATION_REPLY_H

#include <string>

#include "embedded/core.h"
#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// Writes as much of the bytes as the caller's buffer takes, and returns 0 or, where they were cut, 22.
int32_t deliverData(Request &request, ByteView bytes);

// Writes as much of a record's raw key into the key buffer as fits.
void deliverKey(Request &request, const IndexDefinition &index, const StoredRecord &record);

// A text in the key or data buffer, which ends at a zero byte or with the buffer. Without a buffer status 21
// or 22 is thrown.
std::string textInKey(const Request &request);
std::string textInData(const Request &request);

// An owner's name in the key or data buffer, not copied; empty where there is none.
ByteView ownerNameIn(const uint8_t *buffer, uint32_t length);

// The caller's bytes. Fewer than needed are thrown as status 21 or 22.
ByteView keyBytes(const Request &request, uint32_t needed);
ByteView dataBytes(const Request &request, uint32_t needed);

}  // namespace vantrel::embedded

#endif
