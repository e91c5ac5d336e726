#ifndef VANTREL_TESTS_EMBEDDED_FAULT_HOLDINGS_H
#define VANTREL_TESTS_EMBEDDED_FAULT_HOLDINGS_H

#include <filesystem>
#include <string>

#include "embedded/fault/allocations.h"

namespace vantrel::test {

inline int64_t entriesOf(const char *directory) {
    std::filesystem::directory_iterator entries(directory);
    return std::distance(begin(entries), end(entries));
}

// What a process holds; the engine's own thread, which comes and goes, is left out.
struct Holdings {
    int64_t descriptors = entriesOf("/proc/self/fd");
    int64_t sqliteBytes = liveAllocations().sqliteBytes;
    int64_t blocks = liveAllocations().blocks - entriesOf("/proc/self/task");

    Holdings since(const Holdings &before) const {
        Holdings grown = *this;
        grown.descriptors -= before.descriptors;
        grown.blocks -= before.blocks;
        grown.sqliteBytes -= before.sqliteBytes;
        return grown;
    }
    std::string text() const {
        return std::to_string(descriptors) + ' ' + std::to_string(blocks) + ' ' + std::to_string(sqliteBytes);
    }
    bool isWithin(const Holdings &most) const {
        return descriptors <= most.descriptors && blocks <= most.blocks && sqliteBytes <= most.sqliteBytes;
    }
};

}  // namespace vantrel::test

#endif
