#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "embedded/emulation.h"
#include "embedded/fault/run.h"

// Each piece of work is done again and again, while one event after the other fails in it.

namespace {

using namespace vantrel::test;

// With VANTREL_FAULTS=all every event fails once, with VANTREL_FAULTS=AllocationFails:25 a single one;
// otherwise so many of each kind, spread evenly.
std::string_view wantedFaults() {
    const char *wanted = getenv("VANTREL_FAULTS");
    return wanted == nullptr ? "" : wanted;
}

bool triesAll() {
    return wantedFaults() == "all";
}

uint64_t triedOf(FaultKind kind) {
    if (triesAll())
        return Injection::never;
    if (isEmulated())
        return 1;
    switch (kind) {
        case FaultKind::callFails:
        case FaultKind::diskIsFull:
            return 4;
        case FaultKind::allocationFails:
            return 6;
        case FaultKind::memoryIsUsedUp:
            return 3;
        default:
            return 2;
    }
}

// Where a single event is wanted, its number if it is of the kind.
std::vector<uint64_t> singleEvent(FaultKind kind) {
    std::string_view wanted = wantedFaults();
    size_t colon = wanted.find(':');
    if (wanted.substr(0, colon) != nameOf(kind))
        return {};
    return {strtoull(wanted.data() + colon + 1, nullptr, 10)};
}

std::vector<uint64_t> eventsToTry(FaultKind kind, uint64_t count) {
    if (wantedFaults().find(':') != std::string_view::npos)
        return singleEvent(kind);
    uint64_t most = triedOf(kind);
    if (most == 1 && count > 0)
        return {(count + 1) / 2};
    std::vector<uint64_t> numbers;
    for (uint64_t part = 0; part < std::min(count, most); ++part)
        numbers.push_back(1 + (most >= count ? part : part * (count - 1) / (most - 1)));
    return numbers;
}

std::string nameOfScenario(const testing::TestParamInfo<Scenario> &info) {
    return info.param.name;
}

// Of the whole run.
class Total : public testing::Environment {
  public:
    uint64_t faults = 0, images = 0;

    void TearDown() override {
        printf("%llu faults injected, %llu images of the disk\n", static_cast<unsigned long long>(faults),
               static_cast<unsigned long long>(images));
    }
};
auto *const total = static_cast<Total *>(testing::AddGlobalTestEnvironment(new Total));

class FaultTest : public testing::TestWithParam<Scenario> {};

TEST_P(FaultTest, AllOrNoneAndWorkGoesOn) {
    constexpr int mostShown = 5;
    ScenarioRun run(GetParam());
    if (HasFailure())
        return;
    std::string wrong;
    int shown = 0;
    for (size_t number = 0; number < faultKinds; ++number) {
        auto kind = static_cast<FaultKind>(number);
        // An emulator takes its time: a few of the kinds for each piece of work, not the same ones.
        if (isEmulated() && (number + strlen(GetParam().name)) % 6 != 0)
            continue;
        uint64_t count = run.count(kind);
        std::vector<uint64_t> events = eventsToTry(kind, count);
        int failed = 0;
        for (uint64_t event : events) {
            std::string problems = run.check(kind, event);
            failed += problems.empty() ? 0 : 1;
            if (!problems.empty() && ++shown <= mostShown)
                wrong += std::string(nameOf(kind)) + ' ' + std::to_string(event) + ": " + problems + '\n';
        }
        total->faults += events.size();
        printf("%s: %zu of %llu injected, %d wrong\n", nameOf(kind), events.size(),
               static_cast<unsigned long long>(count), failed);
    }
    EXPECT_TRUE(wrong.empty()) << wrong;
}

// Fails each of the first events of a kind in a scenario.
void failEach(FaultKind kind, std::string_view name, uint64_t most = Injection::never) {
    warmUpCiphers();
    auto isMeant = [&](const Scenario &scenario) { return scenario.name == name; };
    ScenarioRun run(*std::find_if(scenarios().begin(), scenarios().end(), isMeant));
    ASSERT_FALSE(testing::Test::HasFailure());
    uint64_t last = std::min(run.count(kind), most);
    ASSERT_GT(last, 0u);
    for (uint64_t event = 1; event <= last; ++event)
        EXPECT_EQ(run.check(kind, event), "") << event;
    total->faults += last;
}

TEST(EveryAllocationTest, OfTheLibrariesInTheFirstCall) {
    failEach(FaultKind::allocationFails, "CreateFixed", 40);
}

TEST(EveryAllocationTest, BetweenRecordsThatAreInsertedTogether) {
    failEach(FaultKind::allocationFails, "InsertExtended");
}

TEST(EveryAllocationTest, WhileATransactionBegins) {
    failEach(FaultKind::allocationFails, "SetReadableOwner", 150);
}

TEST(EveryAllocationTest, AsATransactionTakesItsFirstFile) {
    failEach(FaultKind::allocationFails, "TransactionOverTwoFiles", 150);
}

// Bytes that stand in the log from before may end a commit that could not be written to its end.
TEST(EveryCallTest, OfChangesThatOverwriteTheLog) {
    failEach(FaultKind::callFails, "Checkpoint");
}

// SQLite takes files for reading where they cannot be opened for writing.
TEST(EveryCallTest, OfAnOpening) {
    failEach(FaultKind::callFails, "OpenAndChangeAfterDeath");
}

// Synced bytes and names survive, of the others some.
TEST_P(FaultTest, PowerLossLeavesWhatIsDurable) {
    bool isDurable = std::any_of(GetParam().work.begin(), GetParam().work.end(),
                                 [](const Step &step) { return step.isDurable; });
    if (!isDurable)
        return;
    ScenarioRun run(GetParam());
    if (HasFailure())
        return;
    std::string wrong = run.checkPowerLoss(triesAll() ? 1 : rounds(5, 100));
    total->images += run.images();
    printf("%zu images of the disk\n", run.images());
    EXPECT_TRUE(run.images() > 2 && wrong.empty()) << wrong;
}

INSTANTIATE_TEST_SUITE_P(, FaultTest, testing::ValuesIn(scenarios()), nameOfScenario);

}  // namespace
