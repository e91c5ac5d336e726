#ifndef VANTREL_TESTS_EMBEDDED_FAULT_INJECTION_H
#define VANTREL_TESTS_EMBEDDED_FAULT_INJECTION_H

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "embedded/fault/allocations.h"
#include "embedded/system_calls.h"

namespace vantrel::test {

enum class FaultKind {
    callFails,        // one system call, with an input/output error
    writeTears,       // one write, half done, with an input/output error
    diskFails,        // from one system call on, all
    diskIsFull,       // from one write on, which is cut, all that takes room
    allocationFails,  // one allocation
    memoryIsUsedUp,   // from one allocation on, all
    processDies,      // before one system call, or in the middle of it where it writes
};
constexpr size_t faultKinds = 7;
const char *nameOf(FaultKind kind);

// Makes the n-th event of a kind fail, counted from 1, of those that happen in the engine's calls while this
// lives; or, in the background, of those that happen in the engine's own thread.
class Injection {
  public:
    enum class Place { calls, background };
    static constexpr uint64_t never = std::numeric_limits<uint64_t>::max();

    Injection(FaultKind kind, uint64_t number, std::string directory, Place place = Place::calls);
    ~Injection();
    Injection(const Injection &) = delete;
    Injection &operator=(const Injection &) = delete;

    // How many events there were that could fail, by kind.
    using Counts = std::array<uint64_t, faultKinds>;
    const Counts &counted() const { return counted_; }

    Fate decide(const SystemCall &call);
    bool failsAllocation();
    const std::string &directory() const { return directory_; }

  private:
    bool isHit() const;

    FaultKind kind_;
    uint64_t number_;
    std::string directory_;
    Counts counted_{};
    std::optional<SystemCallWatch> calls_;
    std::optional<AllocationWatch> allocations_;
};

}  // namespace vantrel::test

#endif
