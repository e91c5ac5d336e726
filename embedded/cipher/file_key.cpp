#include "embedded/cipher/file_key.h"

namespace vantrel::embedded {

FileKey FileKey::random() {
    FileKey key;
    fillRandom(key.secret_.bytes);
    return key;
}

std::optional<FileKey> FileKey::unwrap(const Key &under, ByteView wrapped, ByteView context) {
    FileKey key;
    if (!unseal(under.bytes, wrapped, context, key.secret_.bytes))
        return std::nullopt;
    return key;
}

Bytes FileKey::wrap(const Key &under, ByteView context) const {
    return seal(under.bytes, viewOf(secret_.bytes), context);
}

PageCipher FileKey::pageCipher() const {
    return PageCipher(all().first<PageCipher::keySize>());
}

Bytes FileKey::sealBytes(ByteView plain, ByteView context) const {
    return seal(sealingKey(), plain, context);
}

std::optional<Bytes> FileKey::openBytes(ByteView sealed, ByteView context) const {
    if (sealed.size() < sealOverhead)
        return std::nullopt;
    Bytes plain(sealed.size() - sealOverhead, '\0');
    if (!unseal(sealingKey(), sealed, context, {reinterpret_cast<uint8_t *>(plain.data()), plain.size()}))
        return std::nullopt;
    return plain;
}

Key FileKey::markOf(ByteView name) const {
    return authenticationCode(sealingKey(), name);
}

}  // namespace vantrel::embedded
