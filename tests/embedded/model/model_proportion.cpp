#include <algorithm>

#include "model.h"

namespace vantrel::test {

std::vector<Address> Model::ordered(const Step &step) const {
    const FileState &state = view(step.session());
    const IndexDefinition *definition = state.index(step.index);
    if (definition == nullptr)
        return state.addresses();
    std::vector<Address> found;
    std::optional<IndexPlace> place;
    while (std::optional<Address> next = state.following(step.index, place)) {
        found.push_back(*next);
        place = IndexPlace{keyOf(*definition, state.record(*next)->bytes), next};
    }
    return found;
}

// From the first record at nothing to the last at the whole, rounded to the nearest.
Expected Model::readByProportion(const Step &step) {
    if (step.index != VANTREL_INDEX_NONE && view(step.session()).index(step.index) == nullptr)
        return {{VANTREL_STATUS_INVALID_INDEX_NUMBER}};
    if (step.denominator == 0)
        return {{VANTREL_STATUS_OPERATION_NOT_ALLOWED}};
    std::vector<Address> order = ordered(step);
    if (order.empty() || step.numerator > step.denominator)
        return {{VANTREL_STATUS_END_OF_FILE}};
    uint64_t last = order.size() - 1;
    uint64_t rank = (2 * last * step.numerator + step.denominator) / (2 * uint64_t{step.denominator});
    return found(step, step.index, order[static_cast<size_t>(rank)]);
}

Step Model::withOwnKey(Step step) const {
    const FileState &state = view(step.session());
    const IndexDefinition *definition = state.index(step.index);
    Address address = addressOf(step);
    bool usesOwnKey = step.action == Action::getProportion && !step.hasKey && definition != nullptr;
    if (!usesOwnKey)
        return step;
    step.hasKey = true;
    step.key = state.exists(address) ? keyOf(*definition, state.record(address)->bytes)
                                     : Bytes(keyLengthOf(*definition), 'b');
    return step;
}

Expected Model::getProportion(const Step &step) {
    handles_[step.handle].cachedIndex = step.index;
    const FileState &state = view(step.session());
    const IndexDefinition *definition = state.index(step.index);
    std::vector<VantrelStatus> refusals;
    if (step.index != VANTREL_INDEX_NONE && definition == nullptr)
        refusals.push_back(VANTREL_STATUS_INVALID_INDEX_NUMBER);
    if (definition != nullptr && step.key.size() < keyLengthOf(*definition))
        refusals.push_back(VANTREL_STATUS_KEY_BUFFER_TOO_SHORT);
    if (step.denominator == 0)
        refusals.push_back(VANTREL_STATUS_OPERATION_NOT_ALLOWED);
    noteHold(step.session(), false, refusals.empty());
    if (!refusals.empty())
        return {refusals};

    Address address = addressOf(step);
    if (!state.exists(address))
        return {{VANTREL_STATUS_INVALID_RECORD_ADDRESS}};
    Expected expected{{0}};
    std::vector<Address> order = ordered(step);
    auto place = std::find(order.begin(), order.end(), address);
    if (definition != nullptr) {
        expected.key = keyOf(*definition, state.record(address)->bytes);
        Bytes key(step.key.begin(), step.key.begin() + keyLengthOf(*definition));
        if (place == order.end() || compareKeys(*definition, key, expected.key) != 0)
            return {{VANTREL_STATUS_NULL_KEY_PATH}};
    }
    auto rank = static_cast<uint64_t>(place - order.begin());
    uint64_t last = order.size() - 1;
    uint64_t numerator = last == 0 ? 0 : (2 * rank * step.denominator + last) / (2 * last);
    expected.value = static_cast<int32_t>(static_cast<uint32_t>(numerator));
    return expected;
}

}  // namespace vantrel::test
