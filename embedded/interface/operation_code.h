#ifndef VANTREL_EMBEDDED_INTERFACE_OPERATION_CODE_H
#define VANTREL_EMBEDDED_INTERFACE_OPERATION_CODE_H

#include <cstdint>
#include <optional>

#include "embedded/core.h"

namespace vantrel::embedded {

// An operation code taken apart.
struct OperationCode {
    uint16_t operation;
    LockBias lock;
    bool keyOnly;
};

// Nothing where the number is no operation. The code 85 is two: the key-only step to the previous record
// when no data is offered, a bulk delete otherwise.
std::optional<OperationCode> decodeOperation(uint32_t number, uint32_t offeredLength);

}  // namespace vantrel::embedded

#endif
