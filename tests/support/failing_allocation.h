#ifndef VANTREL_TESTS_SUPPORT_FAILING_ALLOCATION_H
#define VANTREL_TESTS_SUPPORT_FAILING_ALLOCATION_H

namespace vantrel::test {

// While one exists, the calloc or realloc call of the library that comes after `successes` others fails, and
// all later ones too. Allocations through operator new are not affected.
class FailingAllocation {
  public:
    explicit FailingAllocation(int successes = 0);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;
};

}  // namespace vantrel::test

#endif
