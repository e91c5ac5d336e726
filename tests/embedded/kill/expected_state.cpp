#include "embedded/kill/expected_state.h"

#include <algorithm>
#include <functional>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

namespace {

constexpr int32_t noKey = 4, duplicate = 5, noIndex = 6, indexExists = 6;

std::string changedByChunk(std::string record, const Call &call) {
    switch (call.chunkCode & 0xFF) {
        case 0x01:
            if (call.chunkCode >> 28 == 0xA)
                return record + randomBytes(call.length, call.seed);
            record.resize(std::max<size_t>(record.size(), call.offset + call.length));
            return record.replace(call.offset, call.length, randomBytes(call.length, call.seed));
        case 0x09:
            return record.insert(call.offset, randomBytes(call.length, call.seed));
        case 0x10:
            return record.erase(call.offset, call.length);
        default:
            return record.substr(0, call.offset);
    }
}

}  // namespace

std::string randomBytes(uint32_t length, uint32_t seed) {
    std::string bytes(length, '\0');
    uint64_t state = seed + 1;
    for (char &byte : bytes) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        byte = static_cast<char>(state >> 56);
    }
    return bytes;
}

std::string recordBytes(uint32_t number, uint32_t group, uint32_t length, uint32_t seed) {
    return u32(number) + u32(group) + randomBytes(length - tagOffset, seed);
}

uint32_t fieldOf(const std::string &record, uint32_t offset) {
    return static_cast<uint32_t>(number(record, offset, 4));
}

uint64_t valueOf(const std::string &record) {
    return std::hash<std::string>()(record) | 1;
}

bool ExpectedFile::operator==(const ExpectedFile &other) const {
    auto isSame = [](const auto &one, const auto &another) { return *one.second == *another.second; };
    return extraIndexes == other.extraIndexes &&
           std::equal(records.begin(), records.end(), other.records.begin(), other.records.end(), isSame);
}

std::map<uint64_t, ExpectedFile::Record>::iterator ExpectedFile::find(uint32_t number) {
    return std::find_if(records.begin(), records.end(),
                        [number](const auto &entry) { return fieldOf(*entry.second, 0) == number; });
}

bool ExpectedFile::insert(const std::string &record) {
    if (find(fieldOf(record, 0)) != records.end())
        return false;
    records.emplace(inserted++, std::make_shared<const std::string>(record));
    return true;
}

bool ExpectedState::readsAs(const Call &call) {
    switch (call.kind) {
        case CallKind::update:
        case CallKind::erase:
        case CallKind::chunk: {
            ExpectedFile &file = current_[call.file];
            auto found = file.find(call.number);
            return call.valueRead == (found == file.records.end() ? 0 : valueOf(*found->second));
        }
        default:
            return true;
    }
}

int32_t ExpectedState::performOnRecord(ExpectedFile &file, const Call &call) {
    auto found = file.find(call.number);
    if (found == file.records.end())
        return noKey;
    if (call.kind == CallKind::erase)
        file.records.erase(found);
    else if (call.kind == CallKind::update)
        found->second =
            std::make_shared<const std::string>(recordBytes(call.number, call.group, call.length, call.seed));
    else if (call.kind == CallKind::chunk)
        found->second = std::make_shared<const std::string>(changedByChunk(*found->second, call));
    return 0;
}

int32_t ExpectedState::performOnIndex(ExpectedFile &file, const Call &call) {
    if (call.kind == CallKind::createIndex)
        return file.extraIndexes.insert(call.number).second ? 0 : indexExists;
    return file.extraIndexes.erase(call.number) != 0 ? 0 : noIndex;
}

int32_t ExpectedState::perform(const Call &call) {
    ExpectedFile &file = current_[call.file];
    switch (call.kind) {
        case CallKind::begin:
            insideTransaction_ = true;
            return 0;
        case CallKind::end:
            insideTransaction_ = false;
            return 0;
        case CallKind::abort:
            insideTransaction_ = false;
            current_ = committed_;
            return 0;
        case CallKind::insert:
            return file.insert(recordBytes(call.number, call.group, call.length, call.seed)) ? 0 : duplicate;
        case CallKind::insertMany:
            for (uint32_t number = call.number; number < call.number + call.count; ++number) {
                if (!file.insert(recordBytes(number, call.group, call.length, call.seed)))
                    return duplicate;
            }
            return 0;
        case CallKind::eraseGroup:
            std::erase_if(file.records, [&](const auto &entry) {
                return fieldOf(*entry.second, groupOffset) == call.group;
            });
            return endOfFile;
        case CallKind::percentage:
            return file.records.empty() ? endOfFile : 0;
        case CallKind::createIndex:
        case CallKind::dropIndex:
            return performOnIndex(file, call);
        case CallKind::update:
        case CallKind::erase:
        case CallKind::chunk:
        case CallKind::lock:
            return performOnRecord(file, call);
        default:
            return 0;
    }
}

bool ExpectedState::follow(const Call &call) {
    if (!readsAs(call))
        return false;
    int32_t expected = perform(call);
    if (!insideTransaction_)
        committed_ = current_;
    return call.status == expected || (call.kind == CallKind::eraseGroup && call.status == endOfRange);
}

bool ExpectedState::followUnanswered(const Call &call) {
    if (!readsAs(call))
        return false;
    perform(call);
    if (!insideTransaction_)
        committed_ = current_;
    return true;
}

void ExpectedState::die() {
    current_ = committed_;
    insideTransaction_ = false;
}

std::vector<ExpectedState> statesAfterDeath(const std::vector<ExpectedState> &before,
                                            const Journal &journal) {
    std::vector<ExpectedState> after;
    auto add = [&](ExpectedState state) {
        state.die();
        if (std::find(after.begin(), after.end(), state) == after.end())
            after.push_back(state);
    };
    for (ExpectedState state : before) {
        auto answered = journal.calls + journal.answered;
        if (!std::all_of(journal.calls, answered, [&](const Call &call) { return state.follow(call); }))
            continue;
        add(state);
        if (journal.asked != journal.answered && state.followUnanswered(*answered))
            add(state);
    }
    return after;
}

}  // namespace vantrel::test
