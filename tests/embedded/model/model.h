#ifndef VANTREL_TESTS_EMBEDDED_MODEL_MODEL_H
#define VANTREL_TESTS_EMBEDDED_MODEL_MODEL_H

#include "file_state.h"
#include "step.h"

namespace vantrel::test {

// What a step must bring. Where several things are wrong with a request at once, any of their statuses will
// do.
struct Expected {
    std::vector<VantrelStatus> statuses;
    // Bytes put in front of the caller's record, and of the caller's key.
    Bytes record = {};
    Bytes key = {};
    // The length returned by reads, the address by getPosition.
    int64_t value = 0;
    // An inserted record stands behind all that were ever inserted for good.
    Address addressAbove = 0;
    int64_t recordCount = 0;
    std::vector<IndexStatistics> indexes = {};

    bool succeeds() const { return statuses.front() == 0 || statuses.front() == 22; }
    bool accepts(VantrelStatus status) const;
};

// A record-manager file with its sessions and their file handles, written to be obviously right rather than
// fast: what the engine does is compared with it step by step.
class Model {
  public:
    explicit Model(const FileDefinition &file);

    // Whether the step makes sense now and its outcome is certain: it needs an open handle, and nothing that
    // another session's transaction may hold.
    bool permits(const Step &step) const;

    // Does the step; an insert learns from the outside which address the record got.
    Expected apply(const Step &step, Address insertedAddress);

    Address addressOf(const Step &step) const;
    // With the key of the record that the step is about, where it needs one and has none.
    Step withOwnKey(Step step) const;
    bool isOpen(uint32_t handle) const { return handles_[handle].isOpen; }
    bool isInTransaction(uint32_t session) const { return sessions_[session].isInTransaction; }

  private:
    // How far a session's transaction keeps the file from others; "maybe" after requests of which it is not
    // defined whether they take the file.
    enum class Hold { none, maybe, certain };

    struct Session {
        bool isInTransaction = false;
        VantrelTransactionMode mode = VANTREL_TRANSACTION_MODE_EXCLUSIVE;
        Hold hold = Hold::none;
        // The session's own view, once it has changed the file.
        std::optional<FileState> changed = {};
    };

    struct Handle {
        bool isOpen = false;
        VantrelIndex cachedIndex = noIndexYet;
        std::optional<IndexPlace> place = {};
        VantrelIndex placeIndex = VANTREL_INDEX_NONE;
        // After requests of which it is not defined where they leave the place.
        bool isPlaceUnknown = false;
        std::optional<Address> current = {};
        // What the current record's history was when it was read.
        History history = {};
        std::optional<Address> physicalPlace = {};
    };

    const FileState &view(uint32_t session) const;
    FileState &changeableView(uint32_t session);
    bool knowsWhatIsBeside(const Step &step) const;
    bool rewritesFixedKey(const Step &step) const;
    Hold holdOfOthers(uint32_t session) const;
    void noteHold(uint32_t session, bool isChange, bool isCertain);

    Expected insert(const Step &step, Address address);
    Expected update(const Step &step);
    Expected remove(const Step &step);
    std::vector<VantrelStatus> refusalsOfCurrent(const Step &step) const;
    void addRefusalsOfRecord(const Step &step, std::optional<Address> replaced,
                             std::vector<VantrelStatus> *statuses) const;

    Expected read(const Step &step);
    Expected readByKey(const Step &step, VantrelIndex index);
    Expected readEnd(const Step &step, VantrelIndex index);
    Expected readBeside(const Step &step);
    Expected readPhysical(const Step &step);
    Expected readByPosition(const Step &step);
    std::optional<Address> search(const Step &step, VantrelIndex index, const Bytes &key) const;
    Expected found(const Step &step, VantrelIndex index, Address address);
    Expected getPosition(const Step &step) const;
    // The records of an index, or all of them, in order.
    std::vector<Address> ordered(const Step &step) const;
    Expected readByProportion(const Step &step);
    Expected getProportion(const Step &step);

    Expected begin(const Step &step);
    Expected finish(const Step &step);
    void forgetAborted(uint32_t session);
    Expected createIndex(const Step &step);
    Expected dropIndex(const Step &step);
    Expected information(const Step &step);

    FileState committed_;
    Session sessions_[sessionCount];
    Handle handles_[handleCount];
    uint64_t changeCount_ = 0;
};

}  // namespace vantrel::test

#endif
