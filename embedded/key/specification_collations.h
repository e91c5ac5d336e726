#ifndef VANTREL_EMBEDDED_KEY_SPECIFICATION_COLLATIONS_H
#define VANTREL_EMBEDDED_KEY_SPECIFICATION_COLLATIONS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "embedded/key/specification.h"

// How the segments of a request come to their collations.

namespace vantrel::embedded {

// The first segment that takes its collation from the index's block, or null.
const KeySegment *namedSegment(const IndexDefinition &index);

// The number of a named collation in the file as a reply gives it; 0 for a built-in one. The index has a
// block.
uint8_t collationNumberInReply(const IndexDefinition &index);

// Gives each index that asks for a collation block the next one from the position on, and returns where the
// last one ends.
size_t takeBlocks(ByteView request, size_t at, std::vector<IndexDefinition> &indexes);

// Registers the collation that the index defines and finds those that it names or numbers. An index finds
// what the indexes before it have registered.
void resolveCollations(IndexDefinition &index, CollationList &registered);

// The same for all indexes of a marked reply, whose collations are numbered; those that no index defines
// stand in further blocks from the position on.
void restoreCollations(ByteView request, size_t at, FileDefinition &file);

}  // namespace vantrel::embedded

#endif
