#ifndef VANTREL_EMBEDDED_CIPHER_FILE_KEY_H
#define VANTREL_EMBEDDED_CIPHER_FILE_KEY_H

#include "embedded/cipher/cryptography.h"
#include "embedded/cipher/page_cipher.h"

namespace vantrel::embedded {

// The random key of one encrypted file: for its pages, and for bytes that other files keep for it.
class FileKey {
  public:
    static constexpr size_t size = PageCipher::keySize + keySize;

    static FileKey random();
    // None where the bytes are not a key that was wrapped under that key and in that context.
    static std::optional<FileKey> unwrap(const Key &under, ByteView wrapped, ByteView context);
    Bytes wrap(const Key &under, ByteView context) const;

    PageCipher pageCipher() const;

    // Makes bytes unreadable outside this file; the context says what they are and is not kept in them.
    Bytes sealBytes(ByteView plain, ByteView context) const;
    // None where they were not sealed so.
    std::optional<Bytes> openBytes(ByteView sealed, ByteView context) const;

    // What only this file's key makes of a name.
    Key markOf(ByteView name) const;

  private:
    FileKey() = default;
    std::span<const uint8_t, size> all() const { return secret_.bytes; }
    KeyBytes sealingKey() const { return all().last<keySize>(); }

    Secret<size> secret_;
};

}  // namespace vantrel::embedded

#endif
