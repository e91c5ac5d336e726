#include "embedded/lock/holder_slot.h"

#include <unistd.h>

#include <algorithm>

#include "engine/bytes.h"

namespace vantrel::embedded {

namespace {

constexpr size_t processOffset = 16, flagsOffset = 20, transactionStartOffset = 24, nameOffset = 32;
constexpr size_t slotSize = 128;
constexpr uint32_t flagNeverWaits = 1;

using Slot = std::array<uint8_t, slotSize>;

off_t offsetOf(uint16_t slot) {
    return static_cast<off_t>(slot) * static_cast<off_t>(slotSize);
}

}  // namespace

bool writeHolderSlot(int descriptor, uint16_t slot, const HolderDescription &description) {
    Slot bytes{};
    std::copy(description.identifier.begin(), description.identifier.end(), bytes.begin());
    storeU32(bytes.data() + processOffset, description.process);
    storeU32(bytes.data() + flagsOffset, description.transactionNeverWaits ? flagNeverWaits : 0);
    storeU64(bytes.data() + transactionStartOffset, description.transactionStart);
    std::copy(description.name.begin(), description.name.end(), bytes.begin() + nameOffset);
    for (size_t written = 0; written < slotSize;) {
        ssize_t more = pwrite(descriptor, bytes.data() + written, slotSize - written,
                              offsetOf(slot) + static_cast<off_t>(written));
        if (more < 0)
            return false;
        written += static_cast<size_t>(more);
    }
    return true;
}

std::optional<HolderDescription> readHolderSlot(int descriptor, uint16_t slot) {
    Slot bytes;
    if (pread(descriptor, bytes.data(), bytes.size(), offsetOf(slot)) != ssize_t{slotSize})
        return std::nullopt;
    HolderDescription description;
    std::copy_n(bytes.begin(), description.identifier.size(), description.identifier.begin());
    description.process = loadU32(bytes.data() + processOffset);
    description.transactionNeverWaits = loadU32(bytes.data() + flagsOffset) == flagNeverWaits;
    description.transactionStart = loadU64(bytes.data() + transactionStartOffset);
    std::copy_n(bytes.begin() + nameOffset, description.name.size(), description.name.begin());
    description.name.back() = '\0';
    return description;
}

}  // namespace vantrel::embedded
