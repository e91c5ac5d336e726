#include "embedded/fault/injection.h"

#include <openssl/evp.h>
#include <unistd.h>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

namespace {

Injection *current = nullptr;

bool concernsAllocations(FaultKind kind) {
    return kind == FaultKind::allocationFails || kind == FaultKind::memoryIsUsedUp;
}

bool concerns(FaultKind kind, const SystemCall &call) {
    bool isWrite = call.name == "write";
    bool isNewFile = call.name == "open" && access(call.path.c_str(), F_OK) != 0;
    switch (kind) {
        case FaultKind::allocationFails:
        case FaultKind::memoryIsUsedUp:
            return false;
        case FaultKind::writeTears:
            return isWrite;
        case FaultKind::diskIsFull:
            return isWrite || isNewFile;
        default:
            return true;
    }
}

bool allocationFails(void *injection) {
    return static_cast<Injection *>(injection)->failsAllocation();
}

SystemCallWatch::Decision decisionOf(Injection &injection) {
    return [&injection](const SystemCall &call) { return injection.decide(call); };
}

}  // namespace

const char *nameOf(FaultKind kind) {
    switch (kind) {
        case FaultKind::callFails:
            return "CallFails";
        case FaultKind::writeTears:
            return "WriteTears";
        case FaultKind::diskFails:
            return "DiskFails";
        case FaultKind::diskIsFull:
            return "DiskIsFull";
        case FaultKind::allocationFails:
            return "AllocationFails";
        case FaultKind::memoryIsUsedUp:
            return "MemoryIsUsedUp";
        case FaultKind::processDies:
            return "ProcessDies";
    }
    return "";
}

Injection::Injection(FaultKind kind, uint64_t number, std::string directory, Place place)
    : kind_(kind), number_(number), directory_(std::move(directory)) {
    if (place == Place::calls) {
        current = this;
        return;
    }
    allocations_.emplace(allocationFails, this, AllocationWatch::Threads::others);
    calls_.emplace(directory_, decisionOf(*this), SystemCallWatch::Threads::others);
}

Injection::~Injection() {
    current = nullptr;
}

// Whether the event that was counted last is one to fail.
bool Injection::isHit() const {
    bool lasts =
        kind_ == FaultKind::diskFails || kind_ == FaultKind::diskIsFull || kind_ == FaultKind::memoryIsUsedUp;
    uint64_t counted = counted_[static_cast<size_t>(kind_)];
    return lasts ? counted >= number_ : counted == number_;
}

Fate Injection::decide(const SystemCall &call) {
    for (size_t kind = 0; kind < faultKinds; ++kind)
        counted_[kind] += concerns(static_cast<FaultKind>(kind), call) ? 1 : 0;
    if (!concerns(kind_, call) || !isHit())
        return Fate::happens;
    bool isWrite = call.name == "write";
    bool isFirst = counted_[static_cast<size_t>(kind_)] == number_;
    switch (kind_) {
        case FaultKind::writeTears:
            return Fate::isShortAndFails;
        case FaultKind::diskIsFull:
            return isWrite && isFirst && call.bytes.size() > 1 ? Fate::isShort : Fate::fillsDisk;
        case FaultKind::processDies:
            return isWrite ? Fate::tears : Fate::kills;
        default:
            return Fate::fails;
    }
}

bool Injection::failsAllocation() {
    ++counted_[static_cast<size_t>(FaultKind::allocationFails)];
    ++counted_[static_cast<size_t>(FaultKind::memoryIsUsedUp)];
    return concernsAllocations(kind_) && isHit();
}

}  // namespace vantrel::test

extern "C" {

int32_t __real_VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                        int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

// Stands in front of the engine: what fails, fails inside it.
int32_t __wrap_VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                        int32_t keyLength, int32_t keyNumber, void *clientIdentifier) {
    using namespace vantrel::test;
    if (current == nullptr)
        return __real_VNTLEXID(operation, positionBlock, data, dataLength, key, keyLength, keyNumber,
                               clientIdentifier);
    SystemCallWatch calls(current->directory(), decisionOf(*current));
    AllocationWatch allocations(allocationFails, current);
    return __real_VNTLEXID(operation, positionBlock, data, dataLength, key, keyLength, keyNumber,
                           clientIdentifier);
}

// Costs too little to matter: what derives keys from names is not what is tested.
#pragma GCC visibility push(default)
int EVP_PBE_scrypt(const char *name, size_t nameLength, const unsigned char *salt, size_t saltLength,
                   uint64_t, uint64_t, uint64_t, uint64_t, unsigned char *key, size_t keyLength) {
    return PKCS5_PBKDF2_HMAC(name, static_cast<int>(nameLength), salt, static_cast<int>(saltLength), 1,
                             EVP_sha256(), static_cast<int>(keyLength), key);
}
#pragma GCC visibility pop
}
