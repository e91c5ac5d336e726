#ifndef VANTREL_FUZZ_ENGINE_REQUESTS_H
#define VANTREL_FUZZ_ENGINE_REQUESTS_H

#include <string>
#include <vector>

#include "input.h"

namespace vantrel::fuzz {

// Little-endian numbers.
std::string littleEndian(uint64_t value, size_t length);

struct Segment {
    uint16_t offset, length, flags, type;
    uint8_t nullValue = 0;
};
std::string createRequest(uint16_t recordLength, uint16_t fileFlags, const std::vector<Segment> &segments,
                          uint16_t indexCount);

// The bytes of a user-defined collation that turns the order around.
std::string collationBlock();

// A request that the engine would understand had the input not changed some of its bytes. The operation comes
// without a lock bias.
std::string makeRequest(uint32_t operation, int32_t keyNumber, Input &input);

// Where the descriptor of a chunk lies in a request; nothing where the operation takes none.
size_t chunkOffset(uint32_t operation, int32_t keyNumber);
inline constexpr size_t noChunk = SIZE_MAX;

}  // namespace vantrel::fuzz

#endif
