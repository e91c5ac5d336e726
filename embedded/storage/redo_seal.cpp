#include "embedded/storage/redo_seal.h"

#include "embedded/key/little_endian.h"
#include "embedded/storage/encrypted_file.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

Bytes contextOf(ByteView commit, int64_t number) {
    Bytes context(commit);
    appendNumber(context, static_cast<uint64_t>(number), sizeof number);
    return context;
}

}  // namespace

RedoSeal::RedoSeal(const Database &file) {
    if (EncryptedFile *encrypted = EncryptedFile::from(file.mainFile()))
        key_ = encrypted->encryption()->key;
}

Bytes RedoSeal::sealRedo(ByteView piece, ByteView commit, int64_t number) const {
    return key_ ? key_->sealBytes(piece, contextOf(commit, number)) : Bytes(piece);
}

Bytes RedoSeal::openRedo(Bytes piece, ByteView commit, int64_t number) const {
    if (!key_)
        return piece;
    std::optional<Bytes> opened = key_->openBytes(piece, contextOf(commit, number));
    require(opened.has_value(), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    return std::move(*opened);
}

}  // namespace vantrel::embedded
