#include "file_state.h"

#include <algorithm>

namespace vantrel::test {

const IndexDefinition *FileState::index(VantrelIndex number) const {
    auto found = definition_.indexes.find(number);
    return found == definition_.indexes.end() ? nullptr : &found->second;
}

const Record *FileState::record(Address address) const {
    auto found = records_.find(address);
    return found == records_.end() ? nullptr : &found->second;
}

bool FileState::exists(Address address) const {
    const Record *found = record(address);
    return found != nullptr && !found->isDeleted;
}

std::vector<Address> FileState::addresses() const {
    std::vector<Address> addresses;
    for (const auto &[address, record] : records_) {
        if (!record.isDeleted)
            addresses.push_back(address);
    }
    return addresses;
}

void FileState::insert(Address address, const Bytes &bytes, Change change) {
    records_[address] = {bytes, {change}};
    lastAddress_ = address;
}

void FileState::update(Address address, const Bytes &bytes, Change change) {
    records_[address].bytes = bytes;
    records_[address].history.push_back(change);
}

void FileState::remove(Address address, Change change) {
    records_[address].isDeleted = true;
    records_[address].history.push_back(change);
}

bool FileState::takesLength(size_t length) const {
    return length == definition_.fixedLength || (definition_.isVariable && length > definition_.fixedLength);
}

Bytes FileState::keyAt(const IndexDefinition &index, Address address) const {
    return keyOf(index, records_.at(address).bytes);
}

std::vector<Address> FileState::entries(const IndexDefinition &index) const {
    std::vector<Address> entries;
    for (Address address : addresses()) {
        if (!isLeftOut(index, keyAt(index, address)))
            entries.push_back(address);
    }
    return entries;
}

bool FileState::hasDuplicate(const Bytes &bytes, std::optional<Address> except) const {
    for (const auto &[number, index] : definition_.indexes) {
        Bytes key = keyOf(index, bytes);
        if (!index.isUnique || isLeftOut(index, key))
            continue;
        for (Address address : entries(index)) {
            if (address != except && compareKeys(index, key, keyAt(index, address)) == 0)
                return true;
        }
    }
    return false;
}

bool FileState::changesFixedKey(Address address, const Bytes &bytes) const {
    return std::any_of(definition_.indexes.begin(), definition_.indexes.end(), [&](const auto &entry) {
        const IndexDefinition &index = entry.second;
        Bytes key = keyOf(index, bytes);
        Bytes oldKey = keyAt(index, address);
        bool isChanged =
            compareKeys(index, key, oldKey) != 0 || isLeftOut(index, key) != isLeftOut(index, oldKey);
        return !index.isModifiable && isChanged;
    });
}

bool FileState::rewritesFixedKey(Address address, const Bytes &bytes) const {
    return std::any_of(definition_.indexes.begin(), definition_.indexes.end(), [&](const auto &entry) {
        const IndexDefinition &index = entry.second;
        Bytes key = keyOf(index, bytes);
        Bytes oldKey = keyAt(index, address);
        return !index.isModifiable && key != oldKey && compareKeys(index, key, oldKey) == 0;
    });
}

VantrelStatus FileState::createIndex(VantrelIndex number, const IndexDefinition &index) {
    if (this->index(number) != nullptr)
        return VANTREL_STATUS_INVALID_INDEX_NUMBER;
    std::vector<Address> all = entries(index);
    for (size_t i = 0; index.isUnique && i < all.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (compareKeys(index, keyAt(index, all[i]), keyAt(index, all[j])) == 0)
                return VANTREL_STATUS_DUPLICATE_KEY_VALUE;
        }
    }
    definition_.indexes[number] = index;
    return VANTREL_STATUS_NO_ERROR;
}

std::vector<IndexStatistics> FileState::statistics() const {
    std::vector<IndexStatistics> statistics;
    for (const auto &[number, index] : definition_.indexes) {
        std::vector<Bytes> distinct;
        for (Address address : entries(index)) {
            Bytes key = keyAt(index, address);
            bool isKnown = std::any_of(distinct.begin(), distinct.end(), [&](const Bytes &other) {
                return compareKeys(index, key, other) == 0;
            });
            if (!isKnown)
                distinct.push_back(key);
        }
        statistics.push_back({number, index, static_cast<int64_t>(distinct.size())});
    }
    return statistics;
}

// Equal keys stand in the order of their addresses.
bool FileState::stands(const IndexDefinition &index, Address first, Address second) const {
    int order = compareKeys(index, keyAt(index, first), keyAt(index, second));
    return order < 0 || (order == 0 && first < second);
}

int FileState::compareWithPlace(const IndexDefinition &index, Address address,
                                const IndexPlace &place) const {
    int order = compareKeys(index, keyAt(index, address), place.key);
    if (order != 0 || !place.address || *place.address == address)
        return order;
    return address < *place.address ? -1 : 1;
}

std::optional<Address> FileState::following(VantrelIndex number,
                                            const std::optional<IndexPlace> &place) const {
    const IndexDefinition &definition = *index(number);
    std::optional<Address> nearest;
    for (Address address : entries(definition)) {
        bool isBehind = !place || compareWithPlace(definition, address, *place) > 0;
        if (isBehind && (!nearest || stands(definition, address, *nearest)))
            nearest = address;
    }
    return nearest;
}

std::optional<Address> FileState::preceding(VantrelIndex number,
                                            const std::optional<IndexPlace> &place) const {
    const IndexDefinition &definition = *index(number);
    std::optional<Address> nearest;
    for (Address address : entries(definition)) {
        bool isBefore = !place || compareWithPlace(definition, address, *place) < 0;
        if (isBefore && (!nearest || stands(definition, *nearest, address)))
            nearest = address;
    }
    return nearest;
}

std::optional<Address> FileState::firstEqual(VantrelIndex number, const Bytes &key) const {
    const IndexDefinition &definition = *index(number);
    for (Address address : entries(definition)) {
        if (compareKeys(definition, keyAt(definition, address), key) == 0)
            return address;
    }
    return std::nullopt;
}

std::optional<Address> FileState::lastEqual(VantrelIndex number, const Bytes &key) const {
    const IndexDefinition &definition = *index(number);
    std::optional<Address> last;
    for (Address address : entries(definition)) {
        if (compareKeys(definition, keyAt(definition, address), key) == 0)
            last = address;
    }
    return last;
}

std::optional<Address> FileState::following(std::optional<Address> address) const {
    for (Address candidate : addresses()) {
        if (!address || candidate > *address)
            return candidate;
    }
    return std::nullopt;
}

std::optional<Address> FileState::preceding(std::optional<Address> address) const {
    std::optional<Address> last;
    for (Address candidate : addresses()) {
        if (!address || candidate < *address)
            last = candidate;
    }
    return last;
}

}  // namespace vantrel::test
