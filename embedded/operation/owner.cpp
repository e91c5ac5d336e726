#include "embedded/operation/operations.h"
#include "embedded/operation/reply.h"
#include "embedded/operation/structure.h"

namespace vantrel::embedded {

namespace {

constexpr size_t longestShortName = 8;
constexpr int32_t firstEncryptedMode = 2;
constexpr int32_t lastMode = 3;

// Denied, readable, denied and encrypted, readable and encrypted.
OwnerMode ownerModeOf(int32_t keyNumber) {
    if (keyNumber < 0 || keyNumber > lastMode)
        throw StatusError{VANTREL_STATUS_INVALID_KEY_OPTION};
    return {.isReadable = (keyNumber & 1) != 0, .isEncrypted = keyNumber >= firstEncryptedMode};
}

// The name that data and key buffer both carry.
ByteView newNameIn(const Request &request) {
    dataBytes(request, 1);
    keyBytes(request, 1);
    ByteView name = ownerNameIn(request.data, request.offered);
    size_t longest = request.operation == codeSetLongOwner ? longestOwnerName : longestShortName;
    if (name.empty() || name.size() > longest || !areEqual(name, ownerNameIn(request.key, request.keyLength)))
        throw StatusError{VANTREL_STATUS_INVALID_OWNER};
    return name;
}

// Keeps all other sessions from the file.
class SoleUse {
  public:
    explicit SoleUse(OpenFile &file) : file_(file) {
        if (file.lockFile().makeExclusive())
            return;
        file.lockFile().noteRefusal(openedFile);
        throw StatusError{VANTREL_STATUS_FILE_IN_USE};
    }
    ~SoleUse() {
        if (!file_.isOpenExclusively())
            file_.lockFile().makeShared();
    }
    SoleUse(const SoleUse &) = delete;
    SoleUse &operator=(const SoleUse &) = delete;

  private:
    OpenFile &file_;
};

void encrypt(Session &session, OpenFile &file, const NewOwner *owner) {
    try {
        SoleUse soleUse(file);
        if (owner != nullptr && file.storage().owner())
            throw StatusError{VANTREL_STATUS_OWNER_ALREADY_SET};
        file.encrypt(owner);
    } catch (...) {
        if (file.isLost())
            session.dropLostFile(file);
        throw;
    }
}

}  // namespace

int32_t setOwner(Session &session, Request &request) {
    Position &position = positionForStructure(session, request);
    NewOwner owner{.name = newNameIn(request), .mode = ownerModeOf(request.keyNumber)};
    if (owner.mode.isEncrypted) {
        encrypt(session, *position.file, &owner);
        return VANTREL_STATUS_NO_ERROR;
    }
    Storage &storage = position.file->storage();
    StructuralChange change(storage);
    if (storage.owner())
        return VANTREL_STATUS_OWNER_ALREADY_SET;
    storage.setOwner(owner);
    change.commit();
    return VANTREL_STATUS_NO_ERROR;
}

int32_t clearOwner(Session &session, Request &request) {
    Position &position = positionForStructure(session, request);
    Storage &storage = position.file->storage();
    std::optional<OwnerMode> owner = storage.owner();
    if (owner && owner->isEncrypted) {
        encrypt(session, *position.file, nullptr);
        return VANTREL_STATUS_NO_ERROR;
    }
    StructuralChange change(storage);
    if (storage.owner())
        storage.clearOwner();
    change.commit();
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
