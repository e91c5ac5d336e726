#include "embedded/kill/record_files.h"

#include <cstring>

#include "embedded/expression/extended_request.h"

namespace vantrel::test {

namespace {

constexpr uint32_t longestRead = 1 << 20;
constexpr uint32_t readChunk = 0x80000001;
const std::string owner("keeper\0", 7);

std::string descriptor(uint32_t code, uint32_t offset, const void *bytes, uint32_t length) {
    std::string address(sizeof bytes, '\0');
    memcpy(address.data(), &bytes, sizeof bytes);
    return u32(code) + u32(1) + u32(offset) + u32(length) + address;
}

SegmentRequest extraSegment(uint32_t number) {
    auto length = static_cast<uint16_t>(6 - number);
    return {tagOffset, length, duplicates | modifiable | extendedType, unsignedType};
}

}  // namespace

RecordFiles::RecordFiles(const std::string &directory, uint8_t sessionNumber)
    : paths_{directory + "/a", directory + "/b"}, sessionNumber_(sessionNumber), session_(sessionNumber) {}

bool RecordFiles::create(const std::string &directory, bool isEncrypted) {
    constexpr int32_t deniedAndEncrypted = 2;
    constexpr uint16_t key = extendedType, group = extendedType | duplicates | modifiable;
    std::string request = createRequest(
        fixedLength, variableLength, {{{0, 4, key, unsignedType}}, {{groupOffset, 4, group, unsignedType}}});
    RecordFiles files(directory, 1);
    for (const std::string &path : files.paths_) {
        if (files.session_.create(path, request) != 0)
            return false;
    }
    return !isEncrypted ||
           (files.open(1) == 0 &&
            files.session_.call(29, &files.blocks_[1], owner, owner, deniedAndEncrypted).status == 0);
}

int32_t RecordFiles::open(size_t file, int32_t mode) {
    return session_.call(0, &blocks_[file], owner, paths_[file] + '\0', mode).status;
}

int32_t RecordFiles::openAll(int32_t mode) {
    int32_t status = open(1, mode);
    return status != 0 ? status : open(0, mode);
}

int32_t RecordFiles::find(size_t file, uint32_t number, uint32_t lockBias) {
    int32_t status = session_.call(5 + lockBias, &blocks_[file], "", u32(number), 0, fixedLength).status;
    constexpr int32_t cut = 22;
    return status == cut ? 0 : status;
}

std::string RecordFiles::current(size_t file) {
    std::string target(longestRead, '\0');
    std::string address = session_.call(22, &blocks_[file], "", "", 0, 8).data;
    std::string request = address + descriptor(readChunk, 0, target.data(), longestRead);
    auto delivered = static_cast<uint32_t>(request.size());
    uint8_t client[16] = {};
    client[12] = sessionNumber_;
    int32_t status = VNTLEXID(23, blocks_[file].data(), request.data(), &delivered, nullptr, 0, -2, client);
    target.resize(status == 0 ? delivered : 0);
    return target;
}

int32_t RecordFiles::insert(size_t file, const std::string &record) {
    return session_.call(2, &blocks_[file], record, "", -1).status;
}

int32_t RecordFiles::insertMany(size_t file, const std::vector<std::string> &records) {
    std::string request = u32(static_cast<uint32_t>(records.size()));
    for (const std::string &record : records)
        request += u32(static_cast<uint32_t>(record.size())) + record;
    return session_.call(40, &blocks_[file], request, "", -1).status;
}

int32_t RecordFiles::update(size_t file, const std::string &record) {
    return session_.call(3, &blocks_[file], record, "", -1).status;
}

int32_t RecordFiles::chunk(size_t file, uint32_t code, uint32_t offset, const std::string &bytes) {
    constexpr uint32_t truncate = 0x80000004;
    std::string request = descriptor(code, offset, bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (code == truncate)
        request = u32(code) + u32(offset);
    return session_.call(53, &blocks_[file], request, "", -1).status;
}

int32_t RecordFiles::eraseGroup(size_t file, uint32_t group) {
    RequestFields request;
    request.terms = {{unsignedType, 4, groupOffset, equalTo, u32(group), 0, ""}};
    request.recordLimit = 1000;
    return session_.call(85, &blocks_[file], request.bytes(), "????", 1, 20000).status;
}

int32_t RecordFiles::createIndex(size_t file, uint32_t number) {
    return session_
        .call(31, &blocks_[file], segmentBytes(extraSegment(number)), "", static_cast<int32_t>(0x80 + number))
        .status;
}

int32_t RecordFiles::dropIndex(size_t file, uint32_t number) {
    return session_.call(32, &blocks_[file], "", "", static_cast<int32_t>(number)).status;
}

int32_t RecordFiles::percentage(size_t file, uint32_t index) {
    constexpr int32_t cut = 22;
    int32_t status =
        session_.call(44, &blocks_[file], u32(5000), "????", static_cast<int32_t>(index), fixedLength).status;
    return status == cut ? 0 : status;
}

std::vector<uint32_t> RecordFiles::numbers(size_t file, int32_t index) {
    std::vector<uint32_t> found;
    uint32_t first = index < 0 ? 33 : 12, next = index < 0 ? 24 : 6;
    Reply reply = session_.call(first, &blocks_[file], "", "????", index, fixedLength);
    while (reply.status == 0 || reply.status == 22) {
        found.push_back(fieldOf(reply.data, 0));
        reply = session_.call(next, &blocks_[file], "", "????", index, fixedLength);
    }
    constexpr uint32_t statusMark = 0xFF000000;
    if (reply.status != endOfFile)
        found.push_back(statusMark + static_cast<uint32_t>(reply.status));
    return found;
}

std::string RecordFiles::statistics(size_t file) {
    return session_.call(15, &blocks_[file], std::string(2000, '\0'), "????", -1).data;
}

}  // namespace vantrel::test
