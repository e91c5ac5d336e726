#include "embedded/kill/inspection.h"

#include <algorithm>
#include <cstdio>

namespace vantrel::test {

namespace {

constexpr int32_t verifyMode = -3;
constexpr int32_t physical = -1;

bool say(const char *what, size_t file, int32_t status) {
    fprintf(stderr, "file %zu: %s: status %d\n", file, what, status);
    return false;
}

// The key of a record in an index, in an order as the engine's.
uint64_t keyOf(const std::string &record, int32_t index) {
    constexpr uint32_t shorter = 24;
    switch (index) {
        case physical:
            return 0;
        case 0:
            return fieldOf(record, 0);
        case 1:
            return fieldOf(record, groupOffset);
        case 2:
            return fieldOf(record, tagOffset);
        default:
            return fieldOf(record, tagOffset) << (32 - shorter) >> (32 - shorter);
    }
}

std::vector<const std::string *> inOrderOf(const ExpectedFile &file, int32_t index) {
    std::vector<const std::string *> records;
    for (const auto &[place, record] : file.records)
        records.push_back(record.get());
    std::stable_sort(records.begin(), records.end(), [&](const std::string *one, const std::string *another) {
        return keyOf(*one, index) < keyOf(*another, index);
    });
    return records;
}

std::vector<int32_t> indexesOf(const ExpectedFile &file) {
    std::vector<int32_t> indexes = {0, 1};
    indexes.insert(indexes.end(), file.extraIndexes.begin(), file.extraIndexes.end());
    return indexes;
}

}  // namespace

Inspection::Inspection(const std::string &directory) : files_(directory, 2), others_(directory, 3) {}

bool Inspection::openEarly() {
    isOpen_ = files_.openAll() == 0;
    // A look at the records, and so a view of the file from before the other one's death.
    for (size_t file = 0; isOpen_ && file < killedFileCount; ++file)
        files_.numbers(file, physical);
    return isOpen_;
}

bool Inspection::verify() {
    for (size_t file : {size_t{1}, size_t{0}}) {
        if (isOpen_)
            files_.close(file);
        if (int32_t status = files_.open(file, verifyMode))
            return say("open with verification", file, status);
    }
    return true;
}

std::string Inspection::differenceInCounts(size_t file, const ExpectedFile &expected) {
    std::string statistics = files_.statistics(file);
    if (number(statistics, 8, 4) != expected.records.size())
        return "record count";
    size_t segment = 32;
    for (int32_t index : indexesOf(expected)) {
        std::set<uint64_t> keys;
        for (const std::string *record : inOrderOf(expected, index))
            keys.insert(keyOf(*record, index));
        if (number(statistics, segment + 8, 8) != keys.size())
            return "unique count of index " + std::to_string(index);
        segment += 24;
    }
    return segment == statistics.size() ? "" : "another index";
}

// Empty where there is none.
std::string Inspection::difference(size_t file, const ExpectedFile &expected) {
    std::vector<int32_t> orders = indexesOf(expected);
    orders.push_back(physical);
    for (int32_t order : orders) {
        std::vector<uint32_t> numbers;
        for (const std::string *record : inOrderOf(expected, order))
            numbers.push_back(fieldOf(*record, 0));
        if (files_.numbers(file, order) != numbers)
            return "order " + std::to_string(order);
    }
    for (const auto &[place, record] : expected.records) {
        if (files_.find(file, fieldOf(*record, 0)) != 0 || files_.current(file) != *record)
            return "record " + std::to_string(fieldOf(*record, 0));
    }
    return differenceInCounts(file, expected);
}

// In a transaction that never waits, taken back; and by single changes that undo each other.
bool Inspection::anybodyMayLockAndChange(size_t file, const ExpectedFile &expected) {
    constexpr uint32_t withoutWaiting = 1519, unused = 1000000, lockBias = 400;
    int32_t status = others_.begin(withoutWaiting);
    for (const auto &[place, record] : expected.records) {
        if (status == 0)
            status = others_.find(file, fieldOf(*record, 0), lockBias);
        if (status == 0 && record->size() <= 65535)
            status = others_.update(file, *record);
    }
    if (status == 0)
        status = others_.abort();
    if (status == 0)
        status = others_.insert(file, recordBytes(unused, 0, fixedLength, 0));
    if (status == 0)
        status = others_.erase(file);
    return status == 0 || say("lock and change", file, status);
}

// A view from before shows one file as it was, while another one has its part of a commit already. Who takes
// a file for itself brings it up to date.
void Inspection::takeNewViews() {
    constexpr uint32_t exclusive = 19;
    for (size_t file = 0; file < killedFileCount; ++file) {
        files_.begin(exclusive);
        files_.numbers(file, physical);
        files_.end();
    }
}

int Inspection::find(const std::vector<ExpectedState> &states) {
    std::vector<std::string> differences;
    auto isThere = [&](const ExpectedState &state) {
        for (size_t file = 0; file < killedFileCount; ++file) {
            std::string found = difference(file, state.committed()[file]);
            if (!found.empty())
                differences.push_back("file " + std::to_string(file) + ": " + found);
            if (!found.empty())
                return false;
        }
        return true;
    };
    if (!isOpen_ && !verify())
        return -1;
    takeNewViews();
    auto found = std::find_if(states.begin(), states.end(), isThere);
    if (found == states.end()) {
        for (size_t state = 0; state < differences.size(); ++state)
            fprintf(stderr, "against state %zu: %s\n", state, differences[state].c_str());
        return -1;
    }
    if (others_.openAll() != 0)
        return -1;
    for (size_t file = 0; file < killedFileCount; ++file) {
        if (!anybodyMayLockAndChange(file, found->committed()[file]))
            return -1;
    }
    if (!verify())
        return -1;
    return static_cast<int>(found - states.begin());
}

}  // namespace vantrel::test
