#ifndef VANTREL_EMBEDDED_STORAGE_ENCRYPTED_FILE_H
#define VANTREL_EMBEDDED_STORAGE_ENCRYPTED_FILE_H

#include <sqlite3.h>

#include <memory>
#include <optional>
#include <vector>

#include "embedded/cipher/encryption_header.h"

namespace vantrel::embedded {

// What a database and its log share.
struct Encryption {
    EncryptionHeader header;
    FileKey key;
    PageCipher cipher;
    // Of the name that opened the file; none where it was opened for reading without one.
    std::optional<Key> nameMark;
};

// A database or write-ahead log of SQLite's, encrypted page by page on its way to the real file, which stands
// behind this object in memory. A database lies behind its header; a log has the shape that SQLite gives it.
// Everything but reading, writing and sizes goes straight to the real file.
class EncryptedFile final : public sqlite3_file {
  public:
    enum class Role { database, log };

    static constexpr size_t pageSize = 8192;

    // Null where the file is another one.
    static EncryptedFile *from(sqlite3_file *file);
    // Of this object with the real file.
    static int memoryNeeded();

    explicit EncryptedFile(Role role);

    sqlite3_file *realFile();
    // Files work from here on.
    void use(std::shared_ptr<Encryption> encryption);
    const std::shared_ptr<Encryption> &encryption() const { return encryption_; }

    // A wrong or absent name where nobody may read without it is thrown as status 51.
    Access access(ByteView name) const;

    int read(uint8_t *target, int64_t length, int64_t offset) noexcept;
    int write(const uint8_t *source, int64_t length, int64_t offset) noexcept;
    int64_t shift() const { return role_ == Role::database ? EncryptionHeader::size : 0; }

  private:
    struct Unit {
        UnitKind kind;
        uint64_t number;
        int64_t start;
        size_t length;
    };

    Unit unitAt(int64_t offset) const;

    Role role_;
    std::shared_ptr<Encryption> encryption_;
    std::vector<uint8_t> unit_ = std::vector<uint8_t>(pageSize);
};

}  // namespace vantrel::embedded

#endif
