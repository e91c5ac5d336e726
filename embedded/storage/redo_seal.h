#ifndef VANTREL_EMBEDDED_STORAGE_REDO_SEAL_H
#define VANTREL_EMBEDDED_STORAGE_REDO_SEAL_H

#include "embedded/key/definition.h"

namespace vantrel::embedded {

// What a file's changes look like while another file keeps them for it: a file that is encrypted seals them,
// so that they cannot be read there. Commit and piece together are never used twice.
class RedoSeal {
  public:
    virtual ~RedoSeal() = default;
    virtual Bytes sealRedo(Bytes piece, ByteView commit, int64_t number) const = 0;
    virtual Bytes openRedo(Bytes piece, ByteView commit, int64_t number) const = 0;
};

// Of a file that is not encrypted: as they are.
class NoRedoSeal final : public RedoSeal {
  public:
    Bytes sealRedo(Bytes piece, ByteView, int64_t) const override { return piece; }
    Bytes openRedo(Bytes piece, ByteView, int64_t) const override { return piece; }
};

}  // namespace vantrel::embedded

#endif
