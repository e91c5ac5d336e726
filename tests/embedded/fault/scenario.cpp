#include "embedded/fault/scenario.h"

#include <cstring>

namespace vantrel::test {

namespace {

constexpr uint32_t truncateCode = 0x80000004;

std::string addressOf(const void *bytes) {
    std::string address(sizeof bytes, '\0');
    memcpy(address.data(), &bytes, sizeof bytes);
    return address;
}

}  // namespace

int32_t World::changeChunk(uint32_t code, uint32_t offset, const std::string &bytes) {
    auto length = static_cast<uint32_t>(bytes.size());
    return call(53, u32(code) + u32(1) + u32(offset) + u32(length) + addressOf(bytes.data()), "", -1).status;
}

int32_t World::truncate(uint32_t offset) {
    return call(53, u32(truncateCode) + u32(offset), "", -1).status;
}

void makeFile(World &world, const std::string &name, uint16_t flags) {
    std::string request = createRequest(4, flags, {{{0, 2, modifiable}}, {{2, 1, modifiable | duplicates}}});
    ASSERT_EQ(world.session().create(world.path(name), request), 0);
}

std::string recordOf(uint32_t number, const std::string &rest) {
    std::string record = {static_cast<char>('a' + number / 26 % 26), static_cast<char>('a' + number % 26),
                          static_cast<char>('0' + number % 4), 'r'};
    return record + rest;
}

void fill(World &world, uint32_t count, const std::string &rest, size_t position) {
    ASSERT_EQ(world.session().call(1019, nullptr).status, 0);
    for (uint32_t number = 0; number < count; ++number)
        ASSERT_EQ(world.insert(recordOf(number, rest), position), 0);
    ASSERT_EQ(world.session().call(20, nullptr).status, 0);
}

void prepareFile(World &world) {
    makeFile(world, "file");
    openIt(world);
    fill(world, 12);
}

void prepareVariableFile(World &world) {
    makeFile(world, "file", variableLength);
    openIt(world);
    fill(world, 12, std::string(100, 'v'));
}

void openIt(World &world) {
    ASSERT_EQ(world.open("file"), 0);
}

void openAndFind(World &world) {
    openIt(world);
    ASSERT_EQ(world.find("ab"), 0);
}

const std::vector<Scenario> &scenarios() {
    static const std::vector<Scenario> all = [] {
        std::vector<Scenario> joined;
        for (auto family : {fileScenarios, sessionScenarios, logScenarios, structureScenarios,
                            recordScenarios, readScenarios, transactionScenarios}) {
            for (Scenario &scenario : family())
                joined.push_back(std::move(scenario));
        }
        return joined;
    }();
    return all;
}

}  // namespace vantrel::test
