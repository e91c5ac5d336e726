#ifndef VANTREL_EMBEDDED_CIPHER_ENCRYPTION_HEADER_H
#define VANTREL_EMBEDDED_CIPHER_ENCRYPTION_HEADER_H

#include <optional>

#include "embedded/cipher/file_key.h"
#include "embedded/cipher/owner.h"

namespace vantrel::embedded {

// The plain bytes in front of an encrypted database, by which it is recognised: how the owner serves others,
// and the file key, wrapped under a key made from the owner's name and, where everybody may read, under a
// constant too.
class EncryptionHeader {
  public:
    // As long as a page, so that the pages behind it stay aligned.
    static constexpr size_t size = 8192;
    static constexpr size_t magicSize = 16;

    static bool isMagic(ByteView firstBytes);

    EncryptionHeader(const NewOwner &owner, const FileKey &key);
    // An unknown format number is thrown as status 30, damage as an input/output error.
    explicit EncryptionHeader(ByteView bytes);

    const Bytes &bytes() const { return bytes_; }
    OwnerMode mode() const;

    std::optional<FileKey> unlock(ByteView name) const;
    // None where the file is not readable without the name.
    std::optional<FileKey> unlockForReading() const;

  private:
    ByteView part(size_t offset, size_t length) const { return ByteView(bytes_).substr(offset, length); }
    uint32_t field(size_t offset) const;
    ByteView parameters() const;
    Key keyOf(ByteView name) const;

    Bytes bytes_;
};

}  // namespace vantrel::embedded

#endif
