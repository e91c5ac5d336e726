#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "embedded/emulation.h"
#include "embedded/fault/run.h"

// Each piece of work is done again and again, while one event after the other fails in it.

namespace {

using namespace vantrel::test;

// With VANTREL_FAULTS=all every event fails once; otherwise so many of each kind, spread evenly.
bool triesAll() {
    const char *wanted = getenv("VANTREL_FAULTS");
    return wanted != nullptr && strcmp(wanted, "all") == 0;
}

uint64_t triedOf(FaultKind kind) {
    if (triesAll())
        return Injection::never;
    if (isEmulated())
        return 1;
    switch (kind) {
        case FaultKind::callFails:
            return 4;
        case FaultKind::allocationFails:
            return 6;
        case FaultKind::memoryIsUsedUp:
            return 3;
        default:
            return 2;
    }
}

std::vector<uint64_t> numbersToTry(uint64_t count, uint64_t most) {
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
        // An emulator takes its time: a third of the kinds for each piece of work, not the same ones.
        if (isEmulated() && (number + strlen(GetParam().name)) % 3 != 0)
            continue;
        uint64_t count = run.count(kind);
        std::vector<uint64_t> events = numbersToTry(count, triedOf(kind));
        int failed = 0;
        for (uint64_t event : events) {
            std::string problems = run.check(kind, event);
            failed += problems.empty() ? 0 : 1;
            if (!problems.empty() && ++shown <= mostShown)
                wrong += std::string(nameOf(kind)) + ' ' + std::to_string(event) + ": " + problems + '\n';
        }
        printf("%s: %zu of %llu injected, %d wrong\n", nameOf(kind), events.size(),
               static_cast<unsigned long long>(count), failed);
    }
    EXPECT_TRUE(wrong.empty()) << wrong;
}

// Synced bytes and names survive, of the others some.
TEST_P(FaultTest, PowerLossLeavesWhatIsDurable) {
    bool isDurable = std::any_of(GetParam().work.begin(), GetParam().work.end(),
                                 [](const Step &step) { return step.isDurable; });
    if (!isDurable || GetParam().isInBackground)
        return;
    ScenarioRun run(GetParam());
    if (HasFailure())
        return;
    std::string wrong = run.checkPowerLoss(triesAll() ? 1 : rounds(5, 100));
    printf("%zu images of the disk\n", run.images());
    EXPECT_TRUE(run.images() > 2 && wrong.empty()) << wrong;
}

INSTANTIATE_TEST_SUITE_P(, FaultTest, testing::ValuesIn(scenarios()), nameOfScenario);

}  // namespace
