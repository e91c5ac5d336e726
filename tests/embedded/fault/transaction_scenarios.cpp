#include "embedded/fault/scenario.h"

// Transactions over one file and several.

namespace vantrel::test {

namespace {

constexpr uint32_t exclusive = 19, concurrent = 1019;
constexpr int32_t normal = 0, accelerated = -1;

Step onSession(uint32_t operation, bool isDurable = false) {
    return {.run = [=](World &world) { return world.session().call(operation, nullptr).status; },
            .isDurable = isDurable};
}

const Step end = onSession(20, true), abort = onSession(21);

Step insert(size_t position) {
    return {.run = [=](World &world) { return world.insert("zz1r", position); }};
}

Step change(size_t position, uint32_t operation, const std::string &key, const std::string &record = {}) {
    return {.run = [=](World &world) {
        int32_t found = world.find(key, 0, 0, position);
        return found != 0 ? found
                          : world.session().call(operation, world.block(position), record, "", -1).status;
    }};
}

constexpr const char *names[] = {"file", "second", "third"};

std::function<void(World &)> prepareFiles(size_t count, bool areEncrypted = false) {
    return [=](World &world) {
        for (size_t file = 0; file < count; ++file) {
            makeFile(world, names[file]);
            ASSERT_EQ(world.open(names[file], normal, file), 0);
            fill(world, 12, {}, file);
            if (areEncrypted) {
                ASSERT_EQ(world.session().call(29, world.block(file), ownerName, ownerName, 2).status, 0);
            }
        }
    };
}

std::function<void(World &)> openFiles(size_t count, int32_t mode = normal) {
    return [=](World &world) {
        for (size_t file = 0; file < count; ++file)
            ASSERT_EQ(world.open(names[file], mode, file), 0);
    };
}

// Changes records of each file, in an order in which the first is not the first changed.
std::vector<Step> changesOf(size_t files) {
    std::vector<Step> steps;
    for (size_t turn = 0; turn < files; ++turn) {
        size_t file = (turn + 1) % files;
        steps.push_back(insert(file));
        steps.push_back(change(file, 3, "ab", "yy2x"));
        steps.push_back(change(file, 4, "ac"));
    }
    return steps;
}

std::vector<Step> transaction(uint32_t begin, size_t files, const Step &last) {
    std::vector<Step> steps = changesOf(files);
    steps.insert(steps.begin(), onSession(begin));
    steps.push_back(last);
    return steps;
}

Scenario over(size_t files, const char *name, uint32_t begin, const Step &last = end) {
    return {.name = name,
            .prepare = prepareFiles(files),
            .begin = openFiles(files),
            .work = transaction(begin, files, last),
            .isTransaction = true};
}

}  // namespace

std::vector<Scenario> transactionScenarios() {
    return {
        over(1, "ExclusiveTransaction", exclusive),
        over(1, "ConcurrentTransaction", concurrent),
        over(1, "AbortedTransaction", concurrent, abort),
        over(2, "TransactionOverTwoFiles", concurrent),
        over(3, "TransactionOverThreeFiles", exclusive),
        over(2, "AbortedTransactionOverTwoFiles", concurrent, abort),
        {.name = "AcceleratedTransaction",
         .prepare = prepareFiles(2),
         .begin = openFiles(2, accelerated),
         .work = transaction(concurrent, 2, onSession(20)),
         .isTransaction = true},
        {.name = "EncryptedTransaction",
         .prepare = prepareFiles(2, true),
         .begin = openFiles(2),
         .work = transaction(concurrent, 2, end),
         .isTransaction = true},
        {.name = "ResetTransaction",
         .prepare = prepareFiles(2),
         .begin = openFiles(2),
         .work = transaction(concurrent, 2, onSession(28)),
         .isTransaction = true},
    };
}

}  // namespace vantrel::test
