#ifndef VANTREL_TESTS_EMBEDDED_FAULT_ALLOCATIONS_H
#define VANTREL_TESTS_EMBEDDED_FAULT_ALLOCATIONS_H

#include <cstdint>
#include <functional>

// This program's operator new, SQLite's allocator and the cipher library's.

namespace vantrel::test {

// Asked before each allocation that the thread which made this makes, or that the others make.
class AllocationWatch {
  public:
    // Whether it fails. Must not allocate.
    using Decision = bool (*)(void *context);
    enum class Threads { mine, others };

    AllocationWatch(Decision decide, void *context, Threads threads = Threads::mine);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch &) = delete;
    AllocationWatch &operator=(const AllocationWatch &) = delete;

    bool fails() const { return decide_(context_); }

  private:
    Decision decide_;
    void *context_;
    Threads threads_;
};

// What is allocated and not yet freed, by all threads.
struct LiveAllocations {
    int64_t blocks;       // of operator new
    int64_t sqliteBytes;  // without SQLite's own caches of memory
    bool operator==(const LiveAllocations &) const = default;
};
LiveAllocations liveAllocations();

// Makes the cipher library allocate what it keeps for ever, so that none of it can fail.
void warmUpCiphers();

}  // namespace vantrel::test

#endif
