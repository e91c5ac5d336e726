#include <chrono>
#include <thread>

#include "embedded/fault/early_checkpoints.h"
#include "embedded/fault/scenario.h"

// What concerns the session, and what its housekeeping does in the background.

namespace vantrel::test {

namespace {

Step onSession(uint32_t operation, const std::string &data, const std::string &key, int32_t keyNumber = 0) {
    return {.run = [=](World &world) {
        return world.session().call(operation, nullptr, data, key, keyNumber).status;
    }};
}

Step continuousOperation(int32_t keyNumber) {
    return {.run = [=](World &world) {
        return world.session().call(42, nullptr, world.path("file") + '\0', "", keyNumber).status;
    }};
}

const Step insert = {.run = [](World &world) { return world.insert("zz1r"); }};

// Of several pages.
Step insertLong(const std::string &key) {
    return {.run = [=](World &world) { return world.insert(key + "1r" + std::string(20000, 'l')); }};
}

const Step close = {.run = [](World &world) { return world.call(1).status; }, .isDurable = true};

void openCheckpointingEarly(World &world) {
    checkpointEarly();
    openIt(world);
}

void prepareEncryptedVariableFile(World &world) {
    prepareVariableFile(world);
    ASSERT_EQ(world.call(29, ownerName, ownerName, 2).status, 0);
}

// Until the background has synced what was changed.
const Step wait = {.run =
                       [](World &) {
                           std::this_thread::sleep_for(std::chrono::milliseconds(600));
                           return 0;
                       },
                   .isDurable = true};

}  // namespace

std::vector<Scenario> logScenarios() {
    return {
        {.name = "Checkpoint",
         .prepare = prepareVariableFile,
         .begin = openCheckpointingEarly,
         .work = {insertLong("zz"), insertLong("zy"), insertLong("zx"), close}},
        {.name = "CheckpointEncrypted",
         .prepare = prepareEncryptedVariableFile,
         .begin = openCheckpointingEarly,
         .work = {insertLong("zz"), insertLong("zy"), close}},
        {.name = "BackgroundSync",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {insert, wait},
         .isInBackground = true},
        {.name = "BackgroundSyncAfterCheckpoint",
         .prepare = prepareVariableFile,
         .begin = openCheckpointingEarly,
         .work = {insertLong("zz"), insertLong("zy"), wait},
         .isInBackground = true},
    };
}

std::vector<Scenario> sessionScenarios() {
    return {
        {.name = "Version",
         .prepare = nothing,
         .begin = nothing,
         .work = {onSession(26, std::string(15, '\0'), "")}},
        {.name = "Directory",
         .prepare = prepareFile,
         .begin = nothing,
         .work = {{.run =
                       [](World &world) {
                           return world.session().call(17, nullptr, "", world.path("") + '\0').status;
                       }},
                  onSession(18, "", std::string(200, '\0')),
                  {.run = [](World &world) { return world.session().open(world.block(), "file"); }}}},
        {.name = "Login",
         .prepare = nothing,
         .begin = nothing,
         .work = {onSession(78, "", std::string("vantrel://somebody@/things-of-a-longer-name?x=y") + '\0'),
                  onSession(78, "", std::string("vantrel:///") + '\0', 1)}},
        {.name = "ContinuousOperation",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {insert,
                  continuousOperation(0),
                  {.run = [](World &world) { return world.insert("yy1r"); }},
                  continuousOperation(1)}},
    };
}

}  // namespace vantrel::test
