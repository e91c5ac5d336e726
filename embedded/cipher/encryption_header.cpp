#include "embedded/cipher/encryption_header.h"

#include <cstring>

#include "embedded/status_error.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr ByteView magic("VNTL encrypted\r\n", EncryptionHeader::magicSize);
constexpr uint32_t formatNumber = 1;
constexpr uint32_t readableFlag = 1;

constexpr size_t formatOffset = EncryptionHeader::magicSize;
constexpr size_t flagsOffset = formatOffset + 4;
constexpr size_t costOffset = flagsOffset + 4;
constexpr size_t saltOffset = costOffset + 4;
constexpr size_t saltSize = 32;
constexpr size_t ownersKeyOffset = saltOffset + saltSize;
constexpr size_t wrappedKeySize = FileKey::size + sealOverhead;
constexpr size_t readersKeyOffset = ownersKeyOffset + wrappedKeySize;
constexpr size_t digestOffset = readersKeyOffset + wrappedKeySize;

// No secret: it keeps the file key of a readable file from nobody who knows this program.
Key readersKey() {
    Key key;
    memcpy(key.bytes.data(), "Anybody may read without a name.", keySize);
    return key;
}

uint8_t *at(Bytes &bytes, size_t offset) {
    return reinterpret_cast<uint8_t *>(bytes.data()) + offset;
}

}  // namespace

bool EncryptionHeader::isMagic(ByteView firstBytes) {
    return firstBytes.substr(0, magicSize) == magic;
}

EncryptionHeader::EncryptionHeader(const NewOwner &owner, const FileKey &key) : bytes_(magic) {
    bytes_.resize(size);
    storeU32(at(bytes_, formatOffset), formatNumber);
    storeU32(at(bytes_, flagsOffset), owner.mode.isReadable ? readableFlag : 0);
    storeU32(at(bytes_, costOffset), usualCost);
    fillRandom({at(bytes_, saltOffset), saltSize});
    bytes_.replace(ownersKeyOffset, wrappedKeySize, key.wrap(keyOf(owner.name), parameters()));
    if (owner.mode.isReadable)
        bytes_.replace(readersKeyOffset, wrappedKeySize, key.wrap(readersKey(), parameters()));
    Digest digest = digestOf(part(0, digestOffset));
    memcpy(at(bytes_, digestOffset), digest.data(), digest.size());
}

EncryptionHeader::EncryptionHeader(ByteView bytes) : bytes_(bytes) {
    require(bytes_.size() == size && isMagic(bytes_), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    require(field(formatOffset) == formatNumber, VANTREL_STATUS_NOT_A_VANTREL_FILE);
    Digest digest = digestOf(part(0, digestOffset));
    uint32_t cost = field(costOffset);
    require(part(digestOffset, digest.size()) == viewOf(digest) && cost > 0 && cost <= highestCost,
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

uint32_t EncryptionHeader::field(size_t offset) const {
    return loadU32(unsignedBytes(part(offset, 4)));
}

// Wrapped keys belong to these: changing them makes the keys unusable.
ByteView EncryptionHeader::parameters() const {
    return part(0, ownersKeyOffset);
}

Key EncryptionHeader::keyOf(ByteView name) const {
    return deriveKey(name, part(saltOffset, saltSize), static_cast<uint8_t>(field(costOffset)));
}

OwnerMode EncryptionHeader::mode() const {
    return {.isReadable = (field(flagsOffset) & readableFlag) != 0, .isEncrypted = true};
}

std::optional<FileKey> EncryptionHeader::unlock(ByteView name) const {
    if (!isOwnerName(name))
        return std::nullopt;
    return FileKey::unwrap(keyOf(name), part(ownersKeyOffset, wrappedKeySize), parameters());
}

std::optional<FileKey> EncryptionHeader::unlockForReading() const {
    if (!mode().isReadable)
        return std::nullopt;
    return FileKey::unwrap(readersKey(), part(readersKeyOffset, wrappedKeySize), parameters());
}

}  // namespace vantrel::embedded
