#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_CHUNK_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_CHUNK_FIXTURE_H

#include <cstring>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

constexpr uint32_t overwriteCode = 0x80000001, insertCode = 0x80000009, deleteCode = 0x80000010,
                   appendCode = 0xA0000001, truncateCode = 0x80000004, continuesBit = 0x40000000;

// A file with one record, "abcd", that is the current one, and what chunks do to it.
class ChunkFixture : public testing::Test {
  protected:
    // Records of a fixed part of four bytes, of which the first is the key and the second a modifiable one.
    void open(uint16_t fileFlags = variableLength) {
        ASSERT_EQ(
            session.create(path, createRequest(4, fileFlags, {{{0, 1}}, {{1, 1, modifiable | duplicates}}})),
            0);
        ASSERT_EQ(session.open(&block, path), 0);
        ASSERT_EQ(session.call(2, &block, "abcd", "", -1).status, 0);
    }

    static std::string pointer(const void *address) {
        std::string bytes(sizeof address, '\0');
        memcpy(bytes.data(), &address, sizeof address);
        return bytes;
    }
    int32_t change(uint32_t code, uint32_t offset, const std::string &bytes) {
        return session
            .call(53, &block,
                  u32(code) + u32(1) + u32(offset) + u32(static_cast<uint32_t>(bytes.size())) +
                      pointer(bytes.data()),
                  "", -1)
            .status;
    }
    int32_t remove(uint32_t code, uint32_t offset, uint32_t length) {
        return session
            .call(53, &block, u32(code) + u32(1) + u32(offset) + u32(length) + pointer(nullptr), "", -1)
            .status;
    }
    int32_t truncate(uint32_t code, uint32_t offset) {
        return session.call(53, &block, u32(code) + u32(offset), "", -1).status;
    }
    std::string read(uint32_t offset, uint32_t length, uint32_t code = overwriteCode, uint64_t address = 1) {
        std::string target(length, '\xEE');
        std::string request =
            u64(address) + u32(code) + u32(1) + u32(offset) + u32(length) + pointer(target.data());
        uint32_t delivered = static_cast<uint32_t>(request.size());
        uint8_t client[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
        int32_t status = VNTLEXID(23, block.data(), request.data(), &delivered, nullptr, 0, -2, client);
        if (status != 0)
            return std::to_string(status);
        EXPECT_EQ(target.substr(delivered), std::string(length - delivered, '\xEE'));
        return target.substr(0, delivered);
    }
    std::string whole() { return read(0, 1000000); }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

}  // namespace vantrel::test

#endif
