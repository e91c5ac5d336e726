#include <algorithm>

#include "model.h"

namespace vantrel::test {

// Why the current record cannot be changed: there is none, or it is not what was read.
std::vector<VantrelStatus> Model::refusalsOfCurrent(const Step &step) const {
    const Handle &handle = handles_[step.handle];
    if (!handle.current)
        return {VANTREL_STATUS_POSITION_NOT_SET};
    const Record &record = *view(step.session()).record(*handle.current);
    bool isChangedByOther =
        std::any_of(record.history.begin(), record.history.end(), [&](const Change &change) {
            bool wasSeen =
                std::find(handle.history.begin(), handle.history.end(), change) != handle.history.end();
            return !wasSeen && change.session != step.session();
        });
    if (isChangedByOther && holdOfOthers(step.session()) == Hold::certain)
        return {VANTREL_STATUS_CONFLICT, VANTREL_STATUS_RECORD_IN_USE, VANTREL_STATUS_FILE_IN_USE};
    if (isChangedByOther)
        return {VANTREL_STATUS_CONFLICT};
    if (record.isDeleted)
        return {VANTREL_STATUS_POSITION_NOT_SET};
    return {};
}

void Model::addRefusalsOfRecord(const Step &step, std::optional<Address> replaced,
                                std::vector<VantrelStatus> *statuses) const {
    const FileState &state = view(step.session());
    if (!state.takesLength(step.record.size())) {
        statuses->push_back(VANTREL_STATUS_DATA_LENGTH_ERROR);
        return;
    }
    if (state.hasDuplicate(step.record, replaced))
        statuses->push_back(VANTREL_STATUS_DUPLICATE_KEY_VALUE);
    if (replaced && state.changesFixedKey(*replaced, step.record))
        statuses->push_back(VANTREL_STATUS_MODIFIABLE_KEY_VALUE_ERROR);
    if (holdOfOthers(step.session()) == Hold::certain) {
        statuses->push_back(VANTREL_STATUS_RECORD_IN_USE);
        statuses->push_back(VANTREL_STATUS_FILE_IN_USE);
    }
}

Expected Model::insert(const Step &step, Address address) {
    Handle &handle = handles_[step.handle];
    VantrelIndex index = handle.cachedIndex == noIndexYet ? VANTREL_INDEX_NONE : handle.cachedIndex;
    const IndexDefinition *definition = view(step.session()).index(index);
    std::vector<VantrelStatus> refusals;
    if (index != VANTREL_INDEX_NONE && definition == nullptr)
        refusals.push_back(VANTREL_STATUS_INVALID_INDEX_NUMBER);
    addRefusalsOfRecord(step, std::nullopt, &refusals);
    if (!refusals.empty()) {
        if (holdOfOthers(step.session()) == Hold::none)
            noteHold(step.session(), true, false);
        return {refusals};
    }
    FileState &state = changeableView(step.session());
    Expected expected{{0}};
    expected.addressAbove = state.lastAddress();
    state.insert(address, step.record, {++changeCount_, step.session()});
    noteHold(step.session(), true, true);
    handle.current = address;
    handle.physicalPlace = address;
    handle.history = state.record(address)->history;
    if (definition != nullptr) {
        handle.place = {keyOf(*definition, step.record), address};
        handle.placeIndex = index;
        handle.isPlaceUnknown = isLeftOut(*definition, handle.place->key);
    }
    return expected;
}

Expected Model::update(const Step &step) {
    Handle &handle = handles_[step.handle];
    std::vector<VantrelStatus> refusals = refusalsOfCurrent(step);
    bool isThere = handle.current && view(step.session()).exists(*handle.current);
    if (isThere)
        addRefusalsOfRecord(step, handle.current, &refusals);
    else if (!view(step.session()).takesLength(step.record.size()))
        refusals.push_back(VANTREL_STATUS_DATA_LENGTH_ERROR);
    if (!refusals.empty()) {
        if (holdOfOthers(step.session()) == Hold::none)
            noteHold(step.session(), true, false);
        return {refusals};
    }
    FileState &state = changeableView(step.session());
    state.update(*handle.current, step.record, {++changeCount_, step.session()});
    noteHold(step.session(), true, true);
    handle.history = state.record(*handle.current)->history;
    return {{0}};
}

Expected Model::remove(const Step &step) {
    Handle &handle = handles_[step.handle];
    std::vector<VantrelStatus> refusals = refusalsOfCurrent(step);
    if (refusals.empty() && holdOfOthers(step.session()) == Hold::certain)
        refusals = {VANTREL_STATUS_RECORD_IN_USE, VANTREL_STATUS_FILE_IN_USE};
    if (!refusals.empty()) {
        if (holdOfOthers(step.session()) == Hold::none)
            noteHold(step.session(), true, false);
        return {refusals};
    }
    changeableView(step.session()).remove(*handle.current, {++changeCount_, step.session()});
    noteHold(step.session(), true, true);
    handle.current.reset();
    return {{0}};
}

}  // namespace vantrel::test
