#include "embedded/cipher/owner.h"

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t saltOffset = 1;
constexpr size_t saltSize = 32;
constexpr size_t derivedOffset = saltOffset + saltSize;
constexpr size_t verifierSize = derivedOffset + keySize;

}  // namespace

NameVerifier NameVerifier::of(ByteView name) {
    Bytes bytes(derivedOffset, '\0');
    bytes.front() = static_cast<char>(usualCost);
    fillRandom({reinterpret_cast<uint8_t *>(bytes.data()) + saltOffset, saltSize});
    Key derived = deriveKey(name, ByteView(bytes).substr(saltOffset, saltSize), usualCost);
    bytes += viewOf(derived.bytes);
    return NameVerifier(std::move(bytes));
}

NameVerifier NameVerifier::parse(ByteView bytes) {
    require(bytes.size() == verifierSize && static_cast<uint8_t>(bytes.front()) <= highestCost &&
                bytes.front() != 0,
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    return NameVerifier(Bytes(bytes));
}

bool NameVerifier::accepts(ByteView name) const {
    if (!isOwnerName(name))
        return false;
    ByteView bytes = bytes_;
    Key derived = deriveKey(name, bytes.substr(saltOffset, saltSize), static_cast<uint8_t>(bytes.front()));
    return areEqual(viewOf(derived.bytes), bytes.substr(derivedOffset));
}

}  // namespace vantrel::embedded
