#ifndef VANTREL_EMBEDDED_OPERATION_KEY_ONLY_H
#define VANTREL_EMBEDDED_OPERATION_KEY_ONLY_H

#include "embedded/key/specification.h"

// The records of a key-only file are reached through its indexes alone.

namespace vantrel::embedded {

// Records of one length, and an index that leaves none of them out: other definitions of a key-only file are
// thrown as status 45 or 26.
void checkKeyOnly(const FileDefinition &file);

// Throws status 41 where the index is the last one that holds every record of a key-only file.
void checkDropFromKeyOnly(const FileDefinition &file, const IndexDefinition &dropped);

// Throws status 41 for a key-only file.
void requirePhysicalOrder(const FileDefinition &file);

}  // namespace vantrel::embedded

#endif
