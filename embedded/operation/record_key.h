#ifndef VANTREL_EMBEDDED_OPERATION_RECORD_KEY_H
#define VANTREL_EMBEDDED_OPERATION_RECORD_KEY_H

#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// The raw key of a record in an index: bytes of the record, or one of its times.
void rawKeyOf(const IndexDefinition &index, const StoredRecord &record, Bytes &rawKey);

// The encoded key; false where the record is not in the index.
bool encodedKeyOf(const IndexDefinition &index, const StoredRecord &record, Bytes &key);

}  // namespace vantrel::embedded

#endif
