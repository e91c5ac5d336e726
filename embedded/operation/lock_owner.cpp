#include "embedded/operation/lock_owner.h"

#include <algorithm>

#include "engine/bytes.h"

namespace vantrel::embedded {

namespace {

constexpr size_t replySize = 104;
constexpr size_t clientOffset = 12, flagsOffset = 16, timeOffset = 20, levelOffset = 28, processOffset = 32,
                 nameOffset = 40;

// The last four bytes of the client identifier block: service agent and client.
constexpr size_t clientInIdentifier = 12, clientSize = 4;

enum LockOwnerFlags : uint16_t {
    implicitLock = 0x0001,
    explicitLock = 0x0002,
    fileLock = 0x0010,
    recordLock = 0x0040,
    sameProcess = 0x0800,
    writeNoWait = 0x1000,
    writeHold = 0x2000,
    modeSingleNoWait = 0x4000,
    modeMultipleWait = 0x8000,
    modeMultipleNoWait = 0xC000,
};

uint16_t flagsOfKind(HoldKind kind) {
    switch (kind) {
        case HoldKind::change:
            return implicitLock;
        case HoldKind::singleWait:
            return explicitLock;
        case HoldKind::singleNoWait:
            return explicitLock | modeSingleNoWait;
        case HoldKind::multipleWait:
            return explicitLock | modeMultipleWait;
        case HoldKind::multipleNoWait:
            return explicitLock | modeMultipleNoWait;
        default:
            return 0;
    }
}

uint16_t flagsOf(const Refusal &refusal) {
    uint16_t flags = flagsOfKind(refusal.kind);
    flags |= refusal.isRecord ? recordLock : fileLock;
    if (refusal.isSameProcess)
        flags |= sameProcess;
    bool isInTransaction = refusal.holder && refusal.holder->transactionStart != 0;
    if (isInTransaction && refusal.kind == HoldKind::change)
        flags |= refusal.holder->transactionNeverWaits ? writeNoWait : writeHold;
    return flags;
}

uint32_t timeInTransaction(const Refusal &refusal) {
    uint64_t start = refusal.holder->transactionStart;
    return start == 0 || start > refusal.time ? 0 : static_cast<uint32_t>(refusal.time - start);
}

}  // namespace

Bytes lockOwnerReply(const std::optional<Refusal> &refusal) {
    Bytes reply(replySize, '\0');
    if (!refusal)
        return reply;
    auto *bytes = reinterpret_cast<uint8_t *>(reply.data());
    storeU16(bytes + flagsOffset, flagsOf(*refusal));
    if (!refusal->holder)
        return reply;
    const HolderDescription &holder = *refusal->holder;
    std::copy_n(holder.identifier.begin() + clientInIdentifier, clientSize, bytes + clientOffset);
    storeU32(bytes + timeOffset, timeInTransaction(*refusal));
    storeU32(bytes + levelOffset, holder.transactionStart != 0);
    storeU32(bytes + processOffset, holder.process);
    std::copy(holder.name.begin(), holder.name.end(), bytes + nameOffset);
    return reply;
}

}  // namespace vantrel::embedded
