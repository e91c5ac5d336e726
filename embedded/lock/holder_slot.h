#ifndef VANTREL_EMBEDDED_LOCK_HOLDER_SLOT_H
#define VANTREL_EMBEDDED_LOCK_HOLDER_SLOT_H

#include "embedded/lock/lock_user.h"

// The bytes of a side file: slots in which the sessions that have the file open describe themselves. Which
// slot is whose, and whether it is in use at all, the locks on the side file say.

namespace vantrel::embedded {

// Slots are numbered from 1.
inline constexpr int64_t lastHolderSlot = 1022;

// False where the bytes could not be written.
bool writeHolderSlot(int descriptor, uint16_t slot, const HolderDescription &description);
// Nothing where the bytes could not be read.
std::optional<HolderDescription> readHolderSlot(int descriptor, uint16_t slot);

}  // namespace vantrel::embedded

#endif
