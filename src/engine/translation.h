#ifndef VANTREL_ENGINE_TRANSLATION_H
#define VANTREL_ENGINE_TRANSLATION_H

#include <cstdint>

#include "vantrel.h"

// From the interface's enumerations to the engine's codes.

namespace vantrel {

// Adds the lock mode's bias to the operation code.
VantrelStatus setLockBias(uint32_t *operation, VantrelLockMode lockMode);

// Writes the engine's code of an interface data type. The two legacy types have none and are refused.
VantrelStatus setDataType(uint16_t *engineType, VantrelDataType dataType);

// The other way: false where the code is none of the engine's types.
bool dataTypeOfEngineType(uint16_t engineType, VantrelDataType *dataType);

bool indexIsOutOfRange(VantrelIndex index);

}  // namespace vantrel

#endif
