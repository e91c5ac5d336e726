#include "model.h"

#include <algorithm>

namespace vantrel::test {

namespace {

bool changesRecords(Action action) {
    return action == Action::insert || action == Action::update || action == Action::remove;
}

bool isTransactional(Action action) {
    return action == Action::begin || action == Action::end || action == Action::abort;
}

}  // namespace

bool Expected::accepts(VantrelStatus status) const {
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

Model::Model(const FileDefinition &file) : committed_(file) {}

const FileState &Model::view(uint32_t session) const {
    const std::optional<FileState> &changed = sessions_[session].changed;
    return changed ? *changed : committed_;
}

FileState &Model::changeableView(uint32_t session) {
    Session &owner = sessions_[session];
    if (!owner.isInTransaction)
        return committed_;
    if (!owner.changed)
        owner.changed = committed_;
    return *owner.changed;
}

Model::Hold Model::holdOfOthers(uint32_t session) const {
    Hold hold = Hold::none;
    for (uint32_t other = 0; other < sessionCount; ++other) {
        if (other != session)
            hold = std::max(hold, sessions_[other].hold);
    }
    return hold;
}

// A concurrent transaction holds a file once it has changed it, an exclusive one as soon as it touches it.
void Model::noteHold(uint32_t session, bool isChange, bool isCertain) {
    Session &owner = sessions_[session];
    bool takesFile = isChange || owner.mode == VANTREL_TRANSACTION_MODE_EXCLUSIVE;
    if (owner.isInTransaction && takesFile)
        owner.hold = std::max(owner.hold, isCertain ? Hold::certain : Hold::maybe);
}

// A place at a key that was sought in vain says nothing about records that got just this key later: they may
// count as before it or as behind it.
bool Model::knowsWhatIsBeside(const Step &step) const {
    const Handle &handle = handles_[step.handle];
    if (handle.cachedIndex == VANTREL_INDEX_NONE || handle.cachedIndex == noIndexYet)
        return true;
    if (handle.isPlaceUnknown)
        return false;
    bool isAtKeyAlone = handle.place && !handle.place->address;
    const FileState &state = view(step.session());
    return !isAtKeyAlone || state.index(handle.placeIndex) == nullptr ||
           !state.firstEqual(handle.placeIndex, handle.place->key);
}

// It is not defined whether other bytes of the same value are a change of a key.
bool Model::rewritesFixedKey(const Step &step) const {
    const FileState &state = view(step.session());
    std::optional<Address> current = handles_[step.handle].current;
    return current && state.exists(*current) && state.takesLength(step.record.size()) &&
           state.rewritesFixedKey(*current, step.record);
}

// Whatever would wait for another session is left out: both live in one thread.
bool Model::permits(const Step &step) const {
    const Session &session = sessions_[step.session()];
    if (step.action == Action::open)
        return !handles_[step.handle].isOpen &&
               (!session.isInTransaction || session.mode != 0 || holdOfOthers(step.session()) == Hold::none);
    if (isTransactional(step.action))
        return true;
    if (!handles_[step.handle].isOpen)
        return false;
    bool isBeside = step.action == Action::next || step.action == Action::previous;
    if (isBeside && !knowsWhatIsBeside(step))
        return false;
    if (step.action == Action::update && rewritesFixedKey(step))
        return false;
    Hold others = holdOfOthers(step.session());
    if (others == Hold::none || step.action == Action::close)
        return true;
    if (session.isInTransaction && session.mode == VANTREL_TRANSACTION_MODE_EXCLUSIVE)
        return false;
    bool neverWaits = session.isInTransaction && session.mode == VANTREL_TRANSACTION_MODE_CONCURRENT_NO_WAIT;
    if (changesRecords(step.action))
        return neverWaits && others == Hold::certain;
    if (step.action == Action::createIndex || step.action == Action::dropIndex)
        return session.isInTransaction;
    return true;
}

// A few choices name records that do not exist.
Address Model::addressOf(const Step &step) const {
    std::vector<Address> addresses = view(step.session()).addresses();
    if (addresses.empty() || step.addressChoice % 12 == 0)
        return 1 + step.addressChoice / 12 % 40;
    return addresses[step.addressChoice % addresses.size()];
}

Expected Model::apply(const Step &step, Address insertedAddress) {
    switch (step.action) {
        case Action::insert:
            return insert(step, insertedAddress);
        case Action::update:
            return update(step);
        case Action::remove:
            return remove(step);
        case Action::getPosition:
            return getPosition(step);
        case Action::getProportion:
            return getProportion(step);
        case Action::begin:
            return begin(step);
        case Action::end:
        case Action::abort:
            return finish(step);
        case Action::open:
            handles_[step.handle] = {.isOpen = true};
            noteHold(step.session(), false, false);
            return {{0}};
        case Action::close:
            handles_[step.handle] = {};
            return {{0}};
        case Action::createIndex:
            return createIndex(step);
        case Action::dropIndex:
            return dropIndex(step);
        case Action::information:
            return information(step);
        default:
            return read(step);
    }
}

Expected Model::begin(const Step &step) {
    Session &session = sessions_[step.session()];
    if (session.isInTransaction)
        return {{VANTREL_STATUS_TRANSACTION_IS_ACTIVE}};
    session = {.isInTransaction = true, .mode = step.transactionMode};
    return {{0}};
}

Expected Model::finish(const Step &step) {
    Session &session = sessions_[step.session()];
    bool isEnd = step.action == Action::end;
    if (!session.isInTransaction)
        return {{isEnd ? VANTREL_STATUS_END_TRANSACTION_ERROR : VANTREL_STATUS_TRANSACTION_ERROR}};
    if (isEnd && session.changed)
        committed_ = *session.changed;
    session = {};
    if (!isEnd)
        forgetAborted(step.session());
    return {{0}};
}

// Records that only the aborted transaction knew are nobody's current record any more.
void Model::forgetAborted(uint32_t session) {
    for (uint32_t i = 0; i < handlesPerSession; ++i) {
        Handle &handle = handles_[session * handlesPerSession + i];
        if (handle.current && committed_.record(*handle.current) == nullptr)
            handle.current.reset();
    }
}

Expected Model::createIndex(const Step &step) {
    if (sessions_[step.session()].isInTransaction)
        return {{VANTREL_STATUS_OPERATION_NOT_ALLOWED}};
    return {{committed_.createIndex(step.index, step.indexDefinition)}};
}

// It is not defined whether a place in an index outlives it.
Expected Model::dropIndex(const Step &step) {
    if (sessions_[step.session()].isInTransaction)
        return {{VANTREL_STATUS_OPERATION_NOT_ALLOWED}};
    if (committed_.index(step.index) == nullptr)
        return {{VANTREL_STATUS_INVALID_INDEX_NUMBER}};
    committed_.dropIndex(step.index);
    for (Handle &handle : handles_) {
        if (handle.placeIndex == step.index)
            handle.isPlaceUnknown = handle.place.has_value();
    }
    return {{0}};
}

Expected Model::information(const Step &step) {
    noteHold(step.session(), false, false);
    const FileState &state = view(step.session());
    Expected expected{{0}};
    expected.recordCount = static_cast<int64_t>(state.addresses().size());
    expected.indexes = state.statistics();
    return expected;
}

}  // namespace vantrel::test
