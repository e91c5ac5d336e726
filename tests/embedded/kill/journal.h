#ifndef VANTREL_TESTS_EMBEDDED_KILL_JOURNAL_H
#define VANTREL_TESTS_EMBEDDED_KILL_JOURNAL_H

#include <atomic>
#include <cstdint>

namespace vantrel::test {

enum class CallKind : uint8_t {
    open,
    close,
    begin,
    end,
    abort,
    insert,
    insertMany,
    update,
    erase,
    chunk,
    eraseGroup,
    createIndex,
    dropIndex,
    percentage,
    lock,
    count
};

// What a process asked of the engine, and how it was answered.
struct Call {
    CallKind kind = CallKind::open;
    uint8_t file = 0;
    uint32_t number = 0;  // of the record, of the first of many, or of the index
    uint32_t count = 0;   // of many records
    uint32_t group = 0;   // of the record written, or of those to erase
    uint32_t length = 0;  // of the record, or of the chunk
    uint32_t seed = 0;    // of the bytes written
    uint32_t chunkCode = 0;
    uint32_t offset = 0;     // of the chunk
    uint64_t valueRead = 0;  // stands for the record's bytes as they were read before; 0 where it was missing
    int32_t status = 0;
};

inline constexpr uint32_t mostCalls = 400;

// Lies in memory that outlives the process that writes it.
struct Journal {
    std::atomic<uint32_t> asked, answered;
    Call calls[mostCalls];
};

}  // namespace vantrel::test

#endif
