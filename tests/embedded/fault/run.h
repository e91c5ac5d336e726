#ifndef VANTREL_TESTS_EMBEDDED_FAULT_RUN_H
#define VANTREL_TESTS_EMBEDDED_FAULT_RUN_H

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/fault/holdings.h"
#include "embedded/fault/injection.h"
#include "embedded/fault/scenario.h"

namespace vantrel::test {

// Works through a scenario as often as wanted, with a failure each time, and compares what is left with what
// the same work leaves where nothing fails.
class ScenarioRun {
  public:
    explicit ScenarioRun(const Scenario &scenario);

    // How many events of a kind the work has that could fail.
    uint64_t count(FaultKind kind) const { return counts_[static_cast<size_t>(kind)]; }
    // What is wrong after the failure of one event; empty where nothing is.
    std::string check(FaultKind kind, uint64_t number);
    // What is wrong where power is lost during the work, at every so many calls of the system, or behind it.
    std::string checkPowerLoss(size_t stride);
    size_t images() const { return images_; }

  private:
    class Worker;
    // What a process finds that opens the files, and the names that it leaves.
    struct Found {
        std::string contents;
        std::string names;
    };

    void takeReference();
    std::string workWithImages(const std::string &target, size_t stride) const;
    static Found findIn(const std::string &directory);
    Found findCopy();
    std::string checkAfterDeath(const Found &found, size_t step, bool mayHaveHappened) const;
    std::string checkAtLast(bool namesMayDiffer) const;

    const Scenario &scenario_;
    TemporaryDirectory prepared_, files_, crashed_;
    // After so many steps: what another session sees, and what is found after the death of the process.
    std::vector<std::string> seen_;
    std::vector<Found> foundAfterDeath_;
    // The names and what the process holds once all is closed.
    std::string leftOver_;
    Holdings held_;
    Injection::Counts counts_{};
    size_t images_ = 0;
};

}  // namespace vantrel::test

#endif
