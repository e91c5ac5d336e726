#ifndef VANTREL_TESTS_RECORD_RECORD_FIXTURE_H
#define VANTREL_TESTS_RECORD_RECORD_FIXTURE_H

#include <algorithm>
#include <climits>
#include <cstring>

#include "support/client_test.h"

namespace vantrel::test {

// A caller's buffer with guard bytes around it.
class GuardedBuffer {
  public:
    explicit GuardedBuffer(Bytes content) : size_(content.size()), bytes_(size_ + 2 * guardSize, 0xEE) {
        std::copy(content.begin(), content.end(), bytes_.begin() + guardSize);
    }

    uint8_t *get() { return bytes_.data() + guardSize; }
    Bytes content() const { return Bytes(bytes_.begin() + guardSize, bytes_.end() - guardSize); }
    bool guardsHold() const {
        return std::all_of(bytes_.begin(), bytes_.begin() + guardSize, isGuard) &&
               std::all_of(bytes_.end() - guardSize, bytes_.end(), isGuard);
    }

  private:
    static constexpr int guardSize = 64;
    static bool isGuard(uint8_t byte) { return byte == 0xEE; }

    size_t size_;
    Bytes bytes_;
};

// The first bytes and then as many of the filler that all are `size`.
inline Bytes padded(Bytes first, size_t size, uint8_t filler) {
    first.resize(size, filler);
    return first;
}

// A file whose key buffer is filled with 0x4B and whose cached key is number 3 with 5 bytes.
class RecordTest : public FileTest {
  protected:
    RecordTest() {
        memset(file->keyBuffer, 0x4B, sizeof file->keyBuffer);
        cacheKey(3, 5);
    }

    Bytes keyBuffer(size_t size = keyBufferSize) const {
        return Bytes(file->keyBuffer, file->keyBuffer + size);
    }

    // The status was kept, and nothing else happened.
    void expectRefused(VantrelStatus status) {
        EXPECT_EQ(fileStatus(), status);
        EXPECT_TRUE(engine.calls().empty());
        expectCachedKey(3, 5);
        EXPECT_EQ(keyBuffer(), Bytes(1024, 0x4B));
        EXPECT_EQ(lastStatus(client), untouchedStatus);
        keepStatus(file, untouchedStatus);
    }

    void expectCall(const EngineCall &call, uint32_t operation, int32_t keyNumber) const {
        EXPECT_EQ(call.operation, operation);
        EXPECT_EQ(call.positionBlock, file);
        EXPECT_EQ(call.keyNumber, keyNumber);
        EXPECT_EQ(call.clientIdentifier, client);
    }

    void expectData(const EngineCall &call, const void *data, uint32_t dataLength) const {
        EXPECT_EQ(call.data, data);
        EXPECT_EQ(call.dataLength, dataLength);
    }

    // The file's own key buffer goes to the engine, with that many bytes of it.
    void expectKeyBuffer(const EngineCall &call, int32_t keyLength) const {
        EXPECT_EQ(call.key, file->keyBuffer);
        EXPECT_EQ(call.keyLength, keyLength);
    }

    void expectNoKey(const EngineCall &call) const {
        EXPECT_EQ(call.key, nullptr);
        EXPECT_EQ(call.keyLength, 0);
    }
};

}  // namespace vantrel::test

#endif
