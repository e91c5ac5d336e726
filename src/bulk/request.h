#ifndef VANTREL_BULK_REQUEST_H
#define VANTREL_BULK_REQUEST_H

#include <cstdint>

#include "bulk/attributes.h"
#include "bulk/results.h"

namespace vantrel {

// Writes the extended operation's request into the area and the data length that goes with it: room for the
// request and for the reply. Fails with VANTREL_STATUS_INVALID_OPTION for an unfinished filter and
// VANTREL_STATUS_DATA_LENGTH_ERROR where the area is too small.
VantrelStatus writeRequest(uint8_t (&area)[bulkAreaSize], const VantrelBulkRetrieveAttributes &attributes,
                           uint32_t *dataLength);
VantrelStatus writeRequest(uint8_t (&area)[bulkAreaSize], const VantrelBulkDeleteAttributes &attributes,
                           uint32_t *dataLength);

}  // namespace vantrel

#endif
