#ifndef VANTREL_BULK_EXECUTION_H
#define VANTREL_BULK_EXECUTION_H

#include <cstdint>

#include "vantrel.h"

namespace vantrel {

// Write the request into the result, hand it to the engine and leave the reply there. Only a missing pointer
// and the status of the lock mode are kept in the file where the engine is not called.
VantrelStatus fileBulkRetrieve(uint32_t operation, VantrelFile *file, int32_t keyNumber, void *key,
                               uint32_t keyLength, const VantrelBulkRetrieveAttributes *attributes,
                               VantrelBulkRetrieveResult *result, VantrelLockMode lockMode);
VantrelStatus fileBulkDelete(uint32_t operation, VantrelFile *file, int32_t keyNumber, void *key,
                             uint32_t keyLength, const VantrelBulkDeleteAttributes *attributes,
                             VantrelBulkDeleteResult *result);

}  // namespace vantrel

#endif
