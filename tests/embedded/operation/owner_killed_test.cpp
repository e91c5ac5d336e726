#include <sys/mman.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <random>

#include "embedded/emulation.h"
#include "embedded/operation/encryption_fixture.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

struct Owner {
    std::string name;
    int32_t mode;
};

// Processes that give a file one owner after another, and are killed at any moment.
class OwnerKilledTest : public EncryptionTest {
  protected:
    using State = std::optional<Owner>;

    // By name and mode, each followed by a clearing: from a mode without encryption to one with, and back.
    static State stateAfter(const State &first, unsigned round, uint32_t changes) {
        static constexpr const char *names[] = {"harbour", "h", "mooring"};
        static constexpr int32_t modes[] = {denied, deniedEncrypted, readable, readableEncrypted};
        if (changes == 0)
            return first;
        if (changes % 2 == 1)
            return std::nullopt;
        unsigned choice = round + changes / 2;
        return Owner{names[choice % 3], modes[choice % 4]};
    }

    // Counts the changes begun and finished where its parent sees them. Returns only after a failure.
    int changeOwners(const State &first, unsigned round) {
        EngineSession mine{3};
        EngineSession::PositionBlock at{};
        if (openWith(mine, &at, path, first ? first->name : "") != 0)
            return 1;
        for (;;) {
            State next = stateAfter(first, round, ++counts->begun);
            int32_t status = next ? setOwner(mine, &at, next->mode, next->name) : clearOwner(mine, &at);
            if (status != 0)
                return 2;
            ++counts->finished;
        }
    }

    // Whether the file is in the state, as all openings show.
    bool isIn(const State &state) {
        for (const std::string &name : {std::string(), state ? state->name : "harbour"}) {
            bool isOwners = !state || state->name == name;
            bool isReadable = isOwners || (state->mode & 1) != 0;
            if (openWith(session, &block, path, name) != (isReadable ? 0 : 51)) {
                session.call(28, nullptr);
                return false;
            }
            int32_t inserted = isReadable ? insert(record(900)) : 0;
            if (isReadable && inserted == 0) {
                EXPECT_EQ(session.call(4, &block).status, 0);
            }
            session.call(28, nullptr);
            if (isReadable && inserted != (isOwners ? 0 : 46))
                return false;
        }
        bool isEncrypted = state && isEncryptedMode(state->mode);
        return (contentOf(path).find(std::string(100, 'r')) == std::string::npos) == isEncrypted;
    }

    void isWhole(const State &state) {
        ASSERT_EQ(openWith(session, &block, path, state ? state->name : "", -3), 0);
        EXPECT_EQ(records(), all);
        close();
        EXPECT_EQ(directory.names(), std::vector<std::string>{"file"});
    }

    struct Counts {
        std::atomic<uint32_t> begun{0}, finished{0};
    };
    Counts *counts =
        new (mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Counts;
    std::vector<std::string> all;
};

TEST_F(OwnerKilledTest, TheFileHasTheOwnerBeforeOrAfterTheChange) {
    ASSERT_EQ(createPlain(path), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    for (uint32_t number = 0; number < 300; ++number) {
        all.push_back(record(number, std::string(1500, 'r')));
        ASSERT_EQ(insert(all.back()), 0);
    }
    close();
    constexpr unsigned seed = 77;
    std::mt19937 random(seed);
    State state;
    int encrypted = 0, plain = 0;
    for (unsigned round = 0; round < rounds(16u, 4u) && !HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
        counts->begun = counts->finished = 0;
        pid_t child = forkWhileQuiet([&] { return changeOwners(state, round); });
        ASSERT_GE(child, 0);
        bool isSoonAfterASet = random() % 2 == 0;
        const std::atomic<uint32_t> &count = isSoonAfterASet ? counts->finished : counts->begun;
        auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        auto changes = isSoonAfterASet ? 2 + random() % 2 * 2 : 1 + random() % 4;
        while (count < changes && std::chrono::steady_clock::now() < patience)
            usleep(100);
        // From a microsecond to a millisecond, or to an eighth of a second.
        usleep(1u << random() % (isSoonAfterASet ? 11 : 18));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << WEXITSTATUS(status);

        State before = stateAfter(state, round, counts->finished);
        State after = stateAfter(state, round, counts->begun);
        bool isBefore = isIn(before);
        ASSERT_TRUE(isBefore || isIn(after));
        state = isBefore ? before : after;
        isWhole(state);
        ++(state && isEncryptedMode(state->mode) ? encrypted : plain);
    }
    EXPECT_GT(plain, 0);
    EXPECT_GT(encrypted, 0);
}

}  // namespace
