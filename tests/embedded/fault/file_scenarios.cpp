#include <csignal>
#include <filesystem>

#include "embedded/fault/scenario.h"
#include "embedded/system_calls.h"

// Creating, deleting, renaming, opening and closing.

namespace vantrel::test {

namespace {

constexpr uint16_t keyOnly = 0x0010, systemData = 0x4200, preallocation = 0x0080;
constexpr int32_t replaces = 0, refuses = -1, deletes = -128, renames = -127;
constexpr int32_t accelerated = -1, readOnly = -2, verify = -3, exclusive = -4;

Step create(const std::string &request, int32_t mode) {
    return {.run = [=](World &world) { return world.session().create(world.path("file"), request, mode); },
            .mayHaveHappened = true,
            .isDurable = true};
}

Scenario creating(const char *name, const std::string &request) {
    return {.name = name, .prepare = nothing, .begin = nothing, .work = {create(request, refuses)}};
}

const Step erase = {
    .run =
        [](World &world) {
            return world.session().call(14, nullptr, "", world.path("file") + '\0', deletes).status;
        },
    .mayHaveHappened = true,
    .isDurable = true};

const Step rename = {.run =
                         [](World &world) {
                             return world.session()
                                 .call(14, nullptr, world.path("file") + '\0', world.path("moved") + '\0',
                                       renames)
                                 .status;
                         },
                     .mayHaveHappened = true,
                     .isDurable = true};

Step openStep(int32_t mode) {
    return {.run = [=](World &world) { return world.open("file", mode); }};
}
const Step read = {.run = [](World &world) { return world.find("ab"); }};
const Step readLast = {.run = [](World &world) { return world.find("bb"); }};
const Step insert = {.run = [](World &world) { return world.insert("zz1r"); }};
const Step close = {.run = [](World &world) { return world.call(1).status; }};

// So that the log is there, whole, and nobody has the file open any more.
void changeAndDie(World &world) {
    prepareFile(world);
    for (uint32_t number = 26; number < 30; ++number)
        ASSERT_EQ(world.insert(recordOf(number)), 0);
}

void openAndReplaceIt(World &world) {
    openIt(world);
    std::filesystem::copy_file(world.path("file"), world.path("copy"));
    std::filesystem::rename(world.path("copy"), world.path("file"));
}

void changeEncryptedAndDie(World &world) {
    prepareFile(world);
    ASSERT_EQ(world.call(29, ownerName, ownerName, 2).status, 0);
    for (uint32_t number = 26; number < 30; ++number)
        ASSERT_EQ(world.insert(recordOf(number)), 0);
}

// Dies when the first file has decided about a transaction over two.
void decideAndDie(World &world) {
    for (const char *name : {"file", "other"})
        makeFile(world, name);
    ASSERT_EQ(world.open("other", 0, 0), 0);
    ASSERT_EQ(world.open("file", 0, 1), 0);
    ASSERT_EQ(world.session().call(1019, nullptr).status, 0);
    for (size_t position : {size_t{0}, size_t{1}})
        ASSERT_EQ(world.insert("bb1r", position), 0);
    SystemCallWatch watch(world.path(""), [](const SystemCall &call) {
        return call.path.ends_with("file-wal") ? Fate::kills : Fate::happens;
    });
    world.session().call(20, nullptr);
}

std::vector<Scenario> creatingScenarios() {
    const std::vector<std::vector<SegmentRequest>> indexes = {{{0, 2}}, {{2, 1, duplicates | modifiable}}};
    return {
        creating("CreateFixed", createRequest(4, 0, indexes)),
        creating("CreateVariable", createRequest(4, variableLength, indexes)),
        creating("CreateKeyOnly", createRequest(4, keyOnly, indexes)),
        creating("CreateSystemData", createRequest(4, systemData, indexes)),
        creating("CreatePreallocated", createRequest(4, preallocation, indexes)),
        {.name = "CreateReplacing",
         .prepare = prepareVariableFile,
         .begin = nothing,
         .work = {create(createRequest(4, 0, indexes), replaces)}},
        {.name = "Delete", .prepare = prepareFile, .begin = nothing, .work = {erase}},
        {.name = "DeleteAfterDeath",
         .prepare = changeAndDie,
         .begin = nothing,
         .work = {erase},
         .prepareDies = true},
        {.name = "DeleteEncryptedAfterDeath",
         .prepare = changeEncryptedAndDie,
         .begin = nothing,
         .work = {erase},
         .prepareDies = true},
        {.name = "Rename", .prepare = prepareFile, .begin = nothing, .work = {rename}},
        {.name = "RenameAfterDeath",
         .prepare = changeAndDie,
         .begin = nothing,
         .work = {rename},
         .prepareDies = true},
        {.name = "RenameEncryptedAfterDeath",
         .prepare = changeEncryptedAndDie,
         .begin = nothing,
         .work = {rename},
         .prepareDies = true},
    };
}

std::vector<Scenario> openingScenarios() {
    return {
        {.name = "Open", .prepare = prepareFile, .begin = nothing, .work = {openStep(0), read}},
        {.name = "OpenReadOnly",
         .prepare = prepareFile,
         .begin = nothing,
         .work = {openStep(readOnly), read}},
        {.name = "OpenVerifying", .prepare = prepareFile, .begin = nothing, .work = {openStep(verify), read}},
        {.name = "OpenExclusively",
         .prepare = prepareFile,
         .begin = nothing,
         .work = {openStep(exclusive), insert, close}},
        {.name = "OpenAccelerated",
         .prepare = prepareFile,
         .begin = nothing,
         .work = {openStep(accelerated), insert, close}},
        {.name = "OpenAfterDeath",
         .prepare = changeAndDie,
         .begin = nothing,
         .work = {openStep(0), readLast},
         .prepareDies = true},
        {.name = "OpenEncryptedAfterDeath",
         .prepare = changeEncryptedAndDie,
         .begin = nothing,
         .work = {openStep(0), readLast},
         .prepareDies = true},
        {.name = "OpenAndChangeAfterDeath",
         .prepare = changeAndDie,
         .begin = nothing,
         .work = {openStep(0), insert},
         .prepareDies = true},
        {.name = "OpenWithPendingPart",
         .prepare = decideAndDie,
         .begin = nothing,
         .work = {openStep(0), readLast},
         .prepareDies = true},
        {.name = "OpenCoordinator",
         .prepare = decideAndDie,
         .begin = nothing,
         .work = {{.run = [](World &world) { return world.open("other"); }}, readLast},
         .prepareDies = true},
        {.name = "CloseTheLast",
         .prepare = changeAndDie,
         .begin = openIt,
         .work = {insert, {.run = close.run, .isDurable = true}}},
        {.name = "CloseTheLastAccelerated",
         .prepare = prepareFile,
         .begin = [](World &world) { ASSERT_EQ(world.open("file", accelerated), 0); },
         .work = {insert, {.run = close.run, .isDurable = true}},
         .isUnsafeUntilEnd = true},
        {.name = "CloseReplaced", .prepare = prepareFile, .begin = openAndReplaceIt, .work = {close}},
    };
}

}  // namespace

std::vector<Scenario> fileScenarios() {
    std::vector<Scenario> all = creatingScenarios();
    for (Scenario &scenario : openingScenarios())
        all.push_back(std::move(scenario));
    return all;
}

}  // namespace vantrel::test
