#include "support/failing_allocation.h"

#include <climits>
#include <cstddef>

// The linker sends the test program's references to calloc and realloc here (--wrap).

namespace {
int remaining = INT_MAX;

bool fails() {
    if (remaining == INT_MAX)
        return false;
    return remaining-- <= 0;
}
}  // namespace

extern "C" {
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);

void *__wrap_calloc(size_t count, size_t size) {
    return fails() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *block, size_t size) {
    return fails() ? nullptr : __real_realloc(block, size);
}
}

namespace vantrel::test {

FailingAllocation::FailingAllocation(int successes) {
    remaining = successes;
}

FailingAllocation::~FailingAllocation() {
    remaining = INT_MAX;
}

}  // namespace vantrel::test
