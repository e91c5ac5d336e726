#ifndef VANTREL_EMBEDDED_OPERATION_STRUCTURE_H
#define VANTREL_EMBEDDED_OPERATION_STRUCTURE_H

#include "embedded/operation/session.h"
#include "vantrel.h"

// What the operations that change the structure of a file share.

namespace vantrel::embedded {

inline void refuseInsideTransaction(const Session &session) {
    if (session.insideTransaction())
        throw StatusError{VANTREL_STATUS_OPERATION_NOT_ALLOWED};
}

// The index number that a key number names in its low seven bits.
inline uint8_t namedIndexNumber(int32_t keyNumber) {
    int32_t number = keyNumber & 0x7F;
    if (number > VANTREL_INDEX_MAXIMUM)
        throw StatusError{VANTREL_STATUS_INVALID_INDEX_NUMBER};
    return static_cast<uint8_t>(number);
}

// A structural change: refused while any transaction holds the file.
inline Position &positionForStructure(Session &session, const Request &request) {
    Position &position = session.position(request.positionBlock);
    refuseInsideTransaction(session);
    if (position.isReadOnly)
        throw StatusError{VANTREL_STATUS_ACCESS_TO_FILE_DENIED};
    return position;
}

// Takes the changes back unless they were committed.
class StructuralChange {
  public:
    explicit StructuralChange(Storage &storage) : storage_(storage) {
        storage.begin(Waiting::no, TransactionPart::first);
    }
    ~StructuralChange() {
        if (storage_.isWriting())
            storage_.rollback();
    }
    StructuralChange(const StructuralChange &) = delete;
    StructuralChange &operator=(const StructuralChange &) = delete;
    void commit() { commitAlone(storage_, Durability::synced); }

  private:
    Storage &storage_;
};

}  // namespace vantrel::embedded

#endif
