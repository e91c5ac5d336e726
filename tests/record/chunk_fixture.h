#ifndef VANTREL_TESTS_RECORD_CHUNK_FIXTURE_H
#define VANTREL_TESTS_RECORD_CHUNK_FIXTURE_H

#include "record/record_fixture.h"

namespace vantrel::test {

inline constexpr size_t addressSize = sizeof(void *);
inline constexpr int32_t chunkPiece = 257024;

// One chunk as the engine is told of it.
struct Chunk {
    uint32_t subfunction;
    int32_t offset;
    int32_t length;
    const void *data;
};

inline Bytes littleEndian(uint64_t value, size_t size) {
    Bytes bytes;
    for (size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return bytes;
}

inline Bytes descriptorOf(const Chunk &chunk) {
    Bytes bytes;
    for (uint64_t word :
         {uint64_t{chunk.subfunction}, uint64_t{1}, uint64_t{static_cast<uint32_t>(chunk.offset)},
          uint64_t{static_cast<uint32_t>(chunk.length)}}) {
        Bytes field = littleEndian(word, 4);
        bytes.insert(bytes.end(), field.begin(), field.end());
    }
    Bytes address = littleEndian(reinterpret_cast<uintptr_t>(chunk.data), addressSize);
    bytes.insert(bytes.end(), address.begin(), address.end());
    return bytes;
}

class ChunkTest : public RecordTest {
  protected:
    // The chunk that goes with a change.
    void expectChange(const EngineCall &call, const Chunk &chunk) {
        expectCall(call, 53, 3);
        EXPECT_EQ(call.dataBytes, descriptorOf(chunk));
        EXPECT_EQ(call.dataLength, addressSize == 8 ? 24u : 20u);
        expectKeyBuffer(call, 5);
        expectCachedKey(3, 5);
    }

    // The chunk that goes with a read of the record at a position.
    void expectRead(const EngineCall &call, uint32_t operation, int64_t position, const Chunk &chunk) {
        expectCall(call, operation, -2);
        Bytes expected = littleEndian(static_cast<uint64_t>(position), 8);
        Bytes descriptor = descriptorOf(chunk);
        expected.insert(expected.end(), descriptor.begin(), descriptor.end());
        EXPECT_EQ(call.dataBytes, expected);
        EXPECT_EQ(call.dataLength, addressSize == 8 ? 32u : 28u);
        expectNoKey(call);
        expectCachedKey(3, 5);
    }

    void replyPosition(uint8_t position) { engine.reply({.data = {position, 0, 0, 0, 0, 0, 0, 0}}); }

    Bytes data = Bytes(700000);
    uint8_t *bytes = data.data();
};

}  // namespace vantrel::test

#endif
