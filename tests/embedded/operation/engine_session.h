#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_ENGINE_SESSION_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_ENGINE_SESSION_H

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

namespace vantrel::test {

// A directory of its own for each test, removed with all it holds.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    const std::string &path() const { return path_; }
    std::string operator/(const std::string &name) const { return path_ + '/' + name; }
    // The names of what the directory holds, sorted.
    std::vector<std::string> names() const;

  private:
    std::string path_;
};

// What one call returned.
struct Reply {
    int32_t status;
    std::string data;    // the bytes returned
    std::string key;     // the key buffer afterwards
    std::string buffer;  // the data buffer afterwards
};

// Calls the engine as one client identifier block.
class EngineSession {
  public:
    explicit EngineSession(uint8_t number);
    ~EngineSession();
    EngineSession(const EngineSession &) = delete;
    EngineSession &operator=(const EngineSession &) = delete;

    using PositionBlock = std::array<uint8_t, 128>;

    // Hands over copies of data and key; the data buffer is as long as the data unless a length is given.
    Reply call(uint32_t operation, PositionBlock *block, const std::string &data = {},
               const std::string &key = {}, int32_t keyNumber = 0, uint32_t offered = sameAsData);
    int32_t open(PositionBlock *block, const std::string &path, int32_t mode = 0);
    int32_t create(const std::string &path, const std::string &request, int32_t keyNumber = 0);

    static constexpr uint32_t sameAsData = UINT32_MAX;

  private:
    std::array<uint8_t, 16> block_{};
};

// Little-endian numbers.
std::string u16(uint16_t value);
std::string u32(uint32_t value);
std::string u64(uint64_t value);
uint64_t number(const std::string &bytes, size_t offset, size_t length);

// Parts of a create request.
struct SegmentRequest {
    uint16_t offset;
    uint16_t length;
    uint16_t flags = 0;
    uint16_t type = 0;
    uint8_t nullValue = 0;
};
std::string segmentBytes(const SegmentRequest &segment);
std::string createRequest(uint16_t recordLength, uint16_t fileFlags,
                          const std::vector<std::vector<SegmentRequest>> &indexes);

constexpr uint16_t duplicates = 0x0001, modifiable = 0x0002, continues = 0x0010, descending = 0x0040,
                   extendedType = 0x0100, nullIfAll = 0x0008, nullIfAny = 0x0200, variableLength = 0x0001,
                   unsignedType = 14;

}  // namespace vantrel::test

#endif
