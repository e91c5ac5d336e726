#ifndef VANTREL_EMBEDDED_KEY_COLLATION_H
#define VANTREL_EMBEDDED_KEY_COLLATION_H

#include <cstddef>
#include <memory>
#include <vector>

#include "embedded/key/definition.h"

namespace vantrel::embedded {

using CollationPointer = std::shared_ptr<const Collation>;
using CollationList = std::vector<CollationPointer>;

// A collation block of a request: a marker, then a name alone or a short name and a table.
constexpr size_t collationBlockSize = 265;

// Sorts A to Z as a to z; every other byte stands for itself.
const CollationPointer &caseInsensitiveCollation();

// UPPER, LATIN1 and CP850; null for any other name.
CollationPointer findBuiltInCollation(ByteView name);

// Looks among the file's own collations first, then among the built-in ones; null when there is none.
CollationPointer findCollation(const CollationList &registered, ByteView name);

// Numbers start at 1, in the order of registration; null for any other number.
CollationPointer findCollation(const CollationList &registered, size_t number);

// The number of the collation in the file, or 0 for one that is not registered.
size_t numberOfCollation(const CollationList &registered, const Collation *collation);

// Whether the block carries a table of its own.
bool blockDefinesCollation(ByteView block);

// The name in a block, without its padding.
ByteView nameInBlock(ByteView block);

// Throws 48 unless the block is complete, has a known marker and a name.
void checkCollationBlock(ByteView block);

// The collation that a block with a table defines, and the block that defines a collation.
CollationPointer collationFromBlock(ByteView block);
Bytes blockFromCollation(const Collation &collation);

}  // namespace vantrel::embedded

#endif
