#include "embedded/fault/scenario.h"

// Indexes and owners of files that hold records.

namespace vantrel::test {

namespace {

Step durably(std::function<int32_t(World &)> run, bool rewrites = false) {
    return {.run = std::move(run),
            .mayHaveHappened = rewrites,
            .mayHaveHappenedWithoutMemory = rewrites,
            .isDurable = true};
}

Step setOwner(int32_t mode) {
    return durably([=](World &world) { return world.call(29, ownerName, ownerName, mode).status; },
                   mode >= 2);
}

const Step insert = {.run = [](World &world) { return world.insert("zz1r"); }};

std::function<void(World &)> prepareOwned(int32_t mode) {
    return [=](World &world) {
        prepareFile(world);
        ASSERT_EQ(world.call(29, ownerName, ownerName, mode).status, 0);
    };
}

}  // namespace

std::vector<Scenario> structureScenarios() {
    constexpr int32_t denied = 0, readable = 1, deniedEncrypted = 2, readableEncrypted = 3;
    auto clear = [](World &world) { return world.call(30).status; };
    auto createIndex = [](World &world) {
        return world.call(31, segmentBytes({1, 3, modifiable}), "", 0x85).status;
    };
    auto dropIndex = [](World &world) { return world.call(32, "", "", 1).status; };
    return {
        {.name = "CreateIndex",
         .prepare = prepareVariableFile,
         .begin = openIt,
         .work = {durably(createIndex), insert}},
        {.name = "DropIndex", .prepare = prepareFile, .begin = openIt, .work = {durably(dropIndex), insert}},
        {.name = "SetOwner", .prepare = prepareFile, .begin = openIt, .work = {setOwner(denied), insert}},
        {.name = "SetReadableOwner", .prepare = prepareFile, .begin = openIt, .work = {setOwner(readable)}},
        {.name = "Encrypt",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {setOwner(deniedEncrypted), insert}},
        {.name = "EncryptReadable",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {setOwner(readableEncrypted)}},
        {.name = "ClearOwner",
         .prepare = prepareOwned(denied),
         .begin = openIt,
         .work = {durably(clear), insert}},
        {.name = "Decrypt",
         .prepare = prepareOwned(deniedEncrypted),
         .begin = openIt,
         .work = {durably(clear, true), insert}},
    };
}

}  // namespace vantrel::test
