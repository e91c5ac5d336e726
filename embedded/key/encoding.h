#ifndef VANTREL_EMBEDDED_KEY_ENCODING_H
#define VANTREL_EMBEDDED_KEY_ENCODING_H

#include <cstddef>
#include <cstdint>

#include "embedded/key/definition.h"

// Keys become byte strings that memcmp puts in the order of the values: docs/keys.md has the table. An
// encoding never starts another one of its type and length, so encodings may follow one another.

namespace vantrel::embedded {

bool typeIsKnown(KeyType type);

// Whether a segment of the type may have this length. An unknown type has no legal length.
bool segmentLengthIsLegal(KeyType type, size_t length);

// Whether values of the type are ordered through the segment's collation.
bool typeIsText(KeyType type);

// Appends the encoding of one value. A length that is not legal for the type makes the value plain bytes.
void appendEncodedValue(KeyType type, const Collation *collation, ByteView value, Bytes &out);

// Appends the encoding of a whole key. rawKey holds the segments' record bytes one after another; one that is
// shorter than index.keyLength is encoded as far as it goes.
void appendEncodedKey(const IndexDefinition &index, ByteView rawKey, Bytes &out);

// Appends the segments' bytes of the record, with zeros for what lies beyond its end.
void extractRawKey(const IndexDefinition &index, ByteView record, Bytes &out);

// Whether a record with this raw key stays out of the index.
bool keyIsNull(const IndexDefinition &index, ByteView rawKey);

}  // namespace vantrel::embedded

#endif
