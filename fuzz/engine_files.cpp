#include "engine_files.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "engine/bytes.h"
#include "engine_requests.h"

extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

namespace vantrel::fuzz {

namespace {

constexpr uint8_t builder = 200, checker = 201;
constexpr uint16_t plain = 0x0100, repeated = 0x0103, variableLength = 0x0001;

std::array<std::string, fileKindCount> images;

std::string requestOf(size_t kind) {
    switch (kind) {
        case 0:
            return createRequest(32, 0,
                                 {{0, 4, plain | 2, 14},
                                  {4, 8, repeated | 0x40, 11},
                                  {12, 4, repeated | 0x10, 1},
                                  {16, 4, repeated | 0x0400, 0}},
                                 3);
        case 1:
            return createRequest(32, variableLength | 0x4200,
                                 {{0, 4, plain, 15},
                                  {4, 8, repeated, 2},
                                  {12, 4, repeated | 0x0200, 5},
                                  {16, 8, repeated | 0x0C20, 10},
                                  {24, 8, repeated, 32}},
                                 5) +
                   collationBlock();
        default:
            return createRequest(32, variableLength, {}, 0);
    }
}

// Digits and signs of all kinds of decimals.
std::string recordOf(size_t number) {
    constexpr char signs[] = "0123456789<=+-{}pqy\x0C";
    std::string record = littleEndian(number, 4);
    for (size_t byte = 4; byte < 32; ++byte)
        record.push_back(signs[number * byte % (sizeof signs - 1)]);
    return record;
}

// A few records, of which one is long where the file takes it.
std::string makeImage(size_t kind) {
    Client client(builder);
    Client::PositionBlock position{};
    std::string request = requestOf(kind), nothing;
    require(client.call(14, nullptr, &request, "file", 0) == 0, "create");
    require(client.call(0, &position, &nothing, "file", 0) == 0, "open");
    for (size_t number = 1; number <= 6; ++number) {
        std::string record = recordOf(number);
        require(client.call(2, &position, &record, "", -1) == 0, "insert");
    }
    std::string bytes(70000, 'x');
    std::string append = littleEndian(0xA0000001, 4) + littleEndian(1, 4) + littleEndian(0, 4) +
                         littleEndian(bytes.size(), 4) + std::string(sizeof(void *), '\0');
    const char *address = bytes.data();
    memcpy(append.data() + 16, &address, sizeof address);
    require(client.call(53, &position, &append, "", -1) == (kind == 0 ? 107 : 0), "append");
    require(client.call(1, &position, &nothing, "", 0) == 0, "close");
    std::ifstream file("file", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string makeDirectory() {
    const char *chosen = getenv("TMPDIR");
    std::string parent = chosen != nullptr ? chosen
                         : access("/dev/shm", W_OK | X_OK) == 0
                             ? "/dev/shm"
                             : std::filesystem::temp_directory_path().string();
    std::string path = parent + "/engine-fuzz-XXXXXX";
    require(mkdtemp(path.data()) != nullptr, "temporary directory");
    return path;
}

void removeFiles() {
    for (const auto &entry : std::filesystem::directory_iterator(workDirectory()))
        std::filesystem::remove_all(entry.path());
}

// The addresses of the records that a walk meets.
using Addresses = std::multiset<int64_t>;

Addresses walk(Client &client, Client::PositionBlock *position, int32_t index, uint32_t first,
               uint32_t next) {
    Addresses met;
    uint32_t operation = first;
    for (;;) {
        std::string data(8, '\0');
        int32_t status = client.call(operation, position, &data, "", index);
        require(status == 0 || status == 9 || status == 22, "walk");
        if (status == 9)
            return met;
        data.assign(8, '\0');
        require(client.call(22, position, &data, "", 0) == 0, "position");
        met.insert(loadI64(reinterpret_cast<const uint8_t *>(data.data())));
        operation = next;
    }
}

void checkIndex(Client &client, Client::PositionBlock *position, int32_t index, const Addresses &records,
                uint64_t uniqueCount) {
    Addresses forward = walk(client, position, index, 12, 6);
    Addresses backward = walk(client, position, index, 13, 7);
    require(forward == backward, "the same entries in both directions");
    for (int64_t address : forward) {
        require(records.count(address) == 1, "a record for each entry");
        require(forward.count(address) == 1, "one entry for each record");
    }
    require(uniqueCount <= forward.size(), "unique count");
    require((uniqueCount == 0) == forward.empty(), "unique count of nothing");
}

}  // namespace

void require(bool condition, const char *what) {
    if (condition)
        return;
    fprintf(stderr, "does not hold: %s\n", what);
    abort();
}

int32_t Client::call(uint32_t operation, PositionBlock *position, std::string *data, std::string key,
                     int32_t keyNumber) {
    auto length = static_cast<uint32_t>(data->size());
    key.push_back('\0');
    int32_t status = VNTLEXID(operation, position == nullptr ? nullptr : position->data(), data->data(),
                              &length, key.data(), static_cast<int32_t>(key.size()), keyNumber, block.data());
    data->resize(length);
    return status;
}

void removeWorkDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(workDirectory(), ignored);
}

const std::string &workDirectory() {
    static const std::string path = makeDirectory();
    return path;
}

void prepareFiles() {
    require(chdir(workDirectory().c_str()) == 0, "current directory");
    atexit(removeWorkDirectory);
    for (size_t kind = 0; kind < fileKindCount; ++kind)
        images[kind] = makeImage(kind);
}

void placeFiles(size_t kind) {
    removeFiles();
    std::ofstream("file", std::ios::binary) << images[kind];
    std::ofstream("other", std::ios::binary) << images[(kind + 1) % fileKindCount];
}

void checkFile(const char *name) {
    if (access(name, F_OK) != 0)
        return;
    constexpr int32_t ownedByAnother = 51;
    constexpr size_t fileSpecification = 32, segmentSize = 24, longestReply = 65535;
    Client client(checker);
    Client::PositionBlock position{};
    std::string nothing, reply(longestReply, '\0');
    int32_t opened = client.call(0, &position, &nothing, name, -3);
    if (opened == ownedByAnother)
        return;
    require(opened == 0, "open with verification");
    require(client.call(15, &position, &reply, "", 0) == 0, "statistics");
    auto *fields = reinterpret_cast<const uint8_t *>(reply.data());
    bool isKeyOnly = (loadU16(fields + 4) & 0x0010) != 0;
    Addresses records = isKeyOnly ? Addresses() : walk(client, &position, 0, 33, 24);
    require(isKeyOnly || loadU32(fields + 8) == records.size(), "record count");
    const uint8_t *segment = fields + fileSpecification;
    for (size_t index = isKeyOnly ? 0 : loadU16(fields + 16); index > 0; --index) {
        checkIndex(client, &position, loadU16(segment + 20), records, loadU64(segment + 8));
        while ((loadU16(segment + 4) & 0x10) != 0)
            segment += segmentSize;
        segment += segmentSize;
    }
    require(client.call(28, nullptr, &nothing, "", 0) == 0, "reset");
}

}  // namespace vantrel::fuzz
