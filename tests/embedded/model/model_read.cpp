#include <algorithm>
#include <limits>

#include "model.h"

namespace vantrel::test {

namespace {

bool isEnd(Action action) {
    return action == Action::first || action == Action::last;
}

bool goesForward(Action action) {
    return action == Action::first || action == Action::next;
}

}  // namespace

// Every request that goes by an index makes it the one that later requests without an index go by.
Expected Model::read(const Step &step) {
    Handle &handle = handles_[step.handle];
    bool isBeside = step.action == Action::next || step.action == Action::previous;
    VantrelIndex index = step.index;
    if (isBeside)
        index = handle.cachedIndex;
    else if (index != noIndexYet)
        handle.cachedIndex = index;
    Expected expected;
    if (step.action == Action::retrieveByPosition)
        expected = readByPosition(step);
    else if (step.action == Action::retrieveByProportion)
        expected = readByProportion(step);
    else if (step.action == Action::retrieve)
        expected = readByKey(step, index);
    else if (index == VANTREL_INDEX_NONE && !step.readsKeyAlone)
        expected = readPhysical(step);
    else if (isBeside)
        expected = readBeside(step);
    else
        expected = readEnd(step, index);
    bool touches = expected.succeeds() || expected.accepts(VANTREL_STATUS_KEY_VALUE_NOT_FOUND) ||
                   expected.accepts(VANTREL_STATUS_END_OF_FILE);
    noteHold(step.session(), false, touches);
    return expected;
}

// The record becomes current; with an index, the place in it moves there too.
Expected Model::found(const Step &step, VantrelIndex index, Address address) {
    Handle &handle = handles_[step.handle];
    const FileState &state = view(step.session());
    const Record &record = *state.record(address);
    handle.current = address;
    handle.physicalPlace = address;
    handle.history = record.history;
    Expected expected{{0}};
    const IndexDefinition *definition = state.index(index);
    if (definition != nullptr) {
        expected.key = keyOf(*definition, record.bytes);
        handle.place = {expected.key, address};
        handle.placeIndex = index;
        handle.isPlaceUnknown = false;
    }
    if (step.isKeyOnly)
        return expected;
    auto size = static_cast<size_t>(step.recordSize);
    if (size < record.bytes.size())
        expected.statuses = {VANTREL_STATUS_DATA_LENGTH_ERROR};
    expected.record = record.bytes;
    expected.record.resize(std::min(size, record.bytes.size()));
    expected.value = static_cast<int64_t>(expected.record.size());
    return expected;
}

std::optional<Address> Model::search(const Step &step, VantrelIndex index, const Bytes &key) const {
    const FileState &state = view(step.session());
    IndexPlace atKey{key, std::nullopt};
    switch (step.comparison) {
        case VANTREL_COMPARISON_EQUAL:
            return state.firstEqual(index, key);
        case VANTREL_COMPARISON_GREATER:
            return state.following(index, atKey);
        case VANTREL_COMPARISON_LESS:
            return state.preceding(index, atKey);
        case VANTREL_COMPARISON_GREATER_OR_EQUAL:
            if (std::optional<Address> equal = state.firstEqual(index, key))
                return equal;
            return state.following(index, atKey);
        default:
            if (std::optional<Address> equal = state.lastEqual(index, key))
                return equal;
            return state.preceding(index, atKey);
    }
}

// A search that fails leaves the place at the key sought: behind all its records where greater keys were
// sought, before them where lesser ones were.
Expected Model::readByKey(const Step &step, VantrelIndex index) {
    const IndexDefinition *definition = view(step.session()).index(index);
    if (definition == nullptr)
        return {{VANTREL_STATUS_INVALID_INDEX_NUMBER}};
    if (step.key.size() < keyLengthOf(*definition))
        return {{VANTREL_STATUS_KEY_BUFFER_TOO_SHORT}};
    Bytes key = step.key;
    key.resize(keyLengthOf(*definition));
    std::optional<Address> address = search(step, index, key);
    if (address)
        return found(step, index, *address);
    Handle &handle = handles_[step.handle];
    handle.place = {key, std::nullopt};
    if (step.comparison == VANTREL_COMPARISON_GREATER)
        handle.place->address = std::numeric_limits<Address>::max();
    if (step.comparison == VANTREL_COMPARISON_LESS)
        handle.place->address = 0;
    handle.placeIndex = index;
    handle.isPlaceUnknown = false;
    handle.current.reset();
    handle.physicalPlace.reset();
    bool isEqual = step.comparison == VANTREL_COMPARISON_EQUAL;
    return {{isEqual ? VANTREL_STATUS_KEY_VALUE_NOT_FOUND : VANTREL_STATUS_END_OF_FILE}};
}

Expected Model::readEnd(const Step &step, VantrelIndex index) {
    const FileState &state = view(step.session());
    if (state.index(index) == nullptr)
        return {{VANTREL_STATUS_INVALID_INDEX_NUMBER}};
    std::optional<Address> address = goesForward(step.action) ? state.following(index, std::nullopt)
                                                              : state.preceding(index, std::nullopt);
    if (!address)
        return {{VANTREL_STATUS_END_OF_FILE}};
    return found(step, index, *address);
}

Expected Model::readBeside(const Step &step) {
    const Handle &handle = handles_[step.handle];
    const FileState &state = view(step.session());
    VantrelIndex index = handle.cachedIndex;
    if (index == VANTREL_INDEX_NONE || index == noIndexYet)
        return {{VANTREL_STATUS_POSITION_NOT_SET}};
    std::vector<VantrelStatus> refusals;
    if (state.index(index) == nullptr)
        refusals.push_back(VANTREL_STATUS_INVALID_INDEX_NUMBER);
    if (!handle.place)
        refusals.push_back(VANTREL_STATUS_POSITION_NOT_SET);
    else if (handle.placeIndex != index)
        refusals.push_back(VANTREL_STATUS_DIFFERENT_INDEX_NUMBER);
    if (!refusals.empty())
        return {refusals};
    std::optional<Address> address = goesForward(step.action) ? state.following(index, handle.place)
                                                              : state.preceding(index, handle.place);
    if (!address)
        return {{VANTREL_STATUS_END_OF_FILE}};
    return found(step, index, *address);
}

// The place in an index stays where it is.
Expected Model::readPhysical(const Step &step) {
    Handle &handle = handles_[step.handle];
    const FileState &state = view(step.session());
    std::optional<Address> from;
    if (!isEnd(step.action)) {
        if (!handle.physicalPlace)
            return {{VANTREL_STATUS_POSITION_NOT_SET}};
        from = handle.physicalPlace;
    }
    std::optional<Address> address = goesForward(step.action) ? state.following(from) : state.preceding(from);
    if (!address)
        return {{VANTREL_STATUS_END_OF_FILE}};
    return found(step, VANTREL_INDEX_NONE, *address);
}

Expected Model::readByPosition(const Step &step) {
    const FileState &state = view(step.session());
    const IndexDefinition *definition = state.index(step.index);
    Address address = addressOf(step);
    std::vector<VantrelStatus> refusals;
    if (step.index != VANTREL_INDEX_NONE && definition == nullptr)
        refusals.push_back(VANTREL_STATUS_INVALID_INDEX_NUMBER);
    if (!state.exists(address))
        refusals.push_back(VANTREL_STATUS_INVALID_RECORD_ADDRESS);
    else if (definition != nullptr &&
             isLeftOut(*definition, keyOf(*definition, state.record(address)->bytes)))
        refusals.push_back(VANTREL_STATUS_NULL_KEY_PATH);
    if (!refusals.empty())
        return {refusals};
    return found(step, step.index, address);
}

Expected Model::getPosition(const Step &step) const {
    const Handle &handle = handles_[step.handle];
    if (!handle.current)
        return {{VANTREL_STATUS_POSITION_NOT_SET}};
    Expected expected{{0}};
    expected.value = *handle.current;
    if (!view(step.session()).exists(*handle.current))
        expected.statuses.push_back(VANTREL_STATUS_POSITION_NOT_SET);
    return expected;
}

}  // namespace vantrel::test
