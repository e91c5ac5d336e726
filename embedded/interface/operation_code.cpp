#include "embedded/interface/operation_code.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t keyOnlyBias = 50;
constexpr uint32_t largestLockBias = 400;

bool between(uint32_t number, uint32_t first, uint32_t last) {
    return first <= number && number <= last;
}

bool isPlainOperation(uint32_t number) {
    return between(number, 0, 15) || between(number, 17, 40) || number == 42 || number == 44 ||
           number == 45 || number == 53 || number == 65 || number == 78 || between(number, 85, 88) ||
           number == 1019 || number == 1519 || number == 17029;
}

bool takesLockBias(uint32_t number) {
    return between(number, 5, 13) || number == 19 || number == 23 || number == 24 ||
           between(number, 33, 39) || number == 44 || number == 1019 || number == 1519;
}

bool hasKeyOnlyForm(uint32_t number) {
    return between(number, 5, 13) || number == 24 || between(number, 33, 35);
}

}  // namespace

std::optional<OperationCode> decodeOperation(uint32_t number, uint32_t offeredLength) {
    bool isKeyOnlyStepPrevious = number == 85 && offeredLength == 0;
    if (isPlainOperation(number) && !isKeyOnlyStepPrevious)
        return OperationCode{static_cast<uint16_t>(number), LockBias::none, false};
    if (number >= keyOnlyBias && hasKeyOnlyForm(number - keyOnlyBias))
        return OperationCode{static_cast<uint16_t>(number - keyOnlyBias), LockBias::none, true};
    for (uint32_t bias = 100; bias <= largestLockBias && bias <= number; bias += 100) {
        if (takesLockBias(number - bias))
            return OperationCode{static_cast<uint16_t>(number - bias), static_cast<LockBias>(bias / 100),
                                 false};
    }
    return std::nullopt;
}

}  // namespace vantrel::embedded
