#ifndef VANTREL_EMBEDDED_STORAGE_REDO_SEAL_H
#define VANTREL_EMBEDDED_STORAGE_REDO_SEAL_H

#include <optional>

#include "embedded/cipher/file_key.h"
#include "embedded/storage/sqlite_database.h"

namespace vantrel::embedded {

// What a file's changes look like while another file keeps them for it: a file that is encrypted seals them,
// so that they cannot be read there; those of others stay as they are. Commit and piece together are never
// used twice.
class RedoSeal {
  public:
    explicit RedoSeal(const Database &file);

    Bytes sealRedo(ByteView piece, ByteView commit, int64_t number) const;
    Bytes openRedo(Bytes piece, ByteView commit, int64_t number) const;

  private:
    std::optional<FileKey> key_;
};

}  // namespace vantrel::embedded

#endif
