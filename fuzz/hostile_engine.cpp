#include "hostile_engine.h"

namespace vantrel::fuzz {

namespace {

Input *current = nullptr;

// Statuses are mostly 0: behind others the library seldom looks at the reply.
int32_t takeStatus() {
    auto choice = current->number<uint8_t>();
    if (choice < 224)
        return 0;
    return choice < 240 ? 22 : current->number<int32_t>();
}

uint32_t takeLength(uint32_t offered) {
    constexpr uint8_t offeredLength = 0;
    constexpr uint8_t halfOfIt = 1;
    constexpr uint8_t oneMore = 2;
    switch (current->number<uint8_t>() % 4) {
        case offeredLength:
            return offered;
        case halfOfIt:
            return offered / 2;
        case oneMore:
            return offered + 1;
        default:
            return current->number<uint32_t>();
    }
}

// Some bytes of the input at the start of the buffer, over and over again where the input says so.
void fill(void *buffer, uint32_t size) {
    if (buffer == nullptr || size == 0)
        return;
    auto *bytes = static_cast<uint8_t *>(buffer);
    bool repeats = current->number<uint8_t>() % 2 == 1;
    size_t filled = current->take(bytes, std::min<uint32_t>(size, current->number<uint16_t>()));
    if (!repeats || filled == 0)
        return;
    while (filled < size) {
        size_t count = std::min(filled, size - filled);
        memcpy(bytes + filled, bytes, count);
        filled += count;
    }
}

int32_t answer(void *data, uint32_t *dataLength, void *key, int32_t keyLength) {
    int32_t status = takeStatus();
    fill(data, *dataLength);
    fill(key, static_cast<uint32_t>(std::max(keyLength, 0)));
    *dataLength = takeLength(*dataLength);
    return status;
}

}  // namespace

void answerWith(Input *input) {
    current = input;
}

}  // namespace vantrel::fuzz

extern "C" int32_t VNTLEXID(uint32_t operation, void *, void *data, uint32_t *dataLength, void *key,
                            int32_t keyLength, int32_t, void *) {
    constexpr uint32_t open = 0;
    constexpr uint32_t close = 1;
    constexpr uint32_t create = 14;
    // These have no reply, and may be given constants.
    if (operation == open || operation == close || operation == create)
        return 0;
    return vantrel::fuzz::answer(data, dataLength, key, keyLength);
}
