#include "embedded/operation/engine_session.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace vantrel::test {

namespace {

std::string littleEndian(uint64_t value, size_t length) {
    std::string bytes;
    for (size_t byte = 0; byte < length; ++byte, value >>= 8)
        bytes.push_back(static_cast<char>(value));
    return bytes;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vantrel-XXXXXX").string();
    EXPECT_NE(mkdtemp(pattern.data()), nullptr);
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryDirectory::names() const {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

EngineSession::EngineSession(uint8_t number) {
    block_[12] = number;
}

EngineSession::~EngineSession() {
    EXPECT_EQ(call(28, nullptr).status, 0);
}

Reply EngineSession::call(uint32_t operation, PositionBlock *block, const std::string &data,
                          const std::string &key, int32_t keyNumber, uint32_t offered) {
    uint32_t length = offered == sameAsData ? static_cast<uint32_t>(data.size()) : offered;
    std::string dataBuffer = data;
    dataBuffer.resize(std::max<size_t>(length, data.size()));
    std::string keyBuffer = key;
    Reply reply;
    reply.status = VNTLEXID(operation, block == nullptr ? nullptr : block->data(),
                            dataBuffer.empty() ? nullptr : dataBuffer.data(), &length,
                            keyBuffer.empty() ? nullptr : keyBuffer.data(), static_cast<int32_t>(key.size()),
                            keyNumber, block_.data());
    EXPECT_LE(length, dataBuffer.size());
    reply.data = dataBuffer.substr(0, length);
    reply.key = keyBuffer;
    reply.buffer = dataBuffer;
    return reply;
}

int32_t EngineSession::open(PositionBlock *block, const std::string &path, int32_t mode) {
    return call(0, block, {}, path + '\0', mode).status;
}

int32_t EngineSession::create(const std::string &path, const std::string &request, int32_t keyNumber) {
    return call(14, nullptr, request, path + '\0', keyNumber).status;
}

std::string u16(uint16_t value) {
    return littleEndian(value, 2);
}

std::string u32(uint32_t value) {
    return littleEndian(value, 4);
}

std::string u64(uint64_t value) {
    return littleEndian(value, 8);
}

uint64_t number(const std::string &bytes, size_t offset, size_t length) {
    uint64_t value = 0;
    for (size_t byte = length; byte-- > 0;)
        value = value << 8 | static_cast<uint8_t>(bytes.at(offset + byte));
    return value;
}

std::string segmentBytes(const SegmentRequest &segment) {
    std::string bytes = u16(static_cast<uint16_t>(segment.offset + 1)) + u16(segment.length) +
                        u16(segment.flags) + std::string(10, '\0') + u16(segment.type);
    bytes.push_back(static_cast<char>(segment.nullValue));
    return bytes + std::string(5, '\0');
}

std::string createRequest(uint16_t recordLength, uint16_t fileFlags,
                          const std::vector<std::vector<SegmentRequest>> &indexes) {
    std::string request = u16(recordLength) + u16(4096) + u16(fileFlags) + std::string(10, '\0') +
                          u16(static_cast<uint16_t>(indexes.size())) + std::string(14, '\0');
    for (const auto &segments : indexes) {
        for (size_t segment = 0; segment < segments.size(); ++segment) {
            SegmentRequest specified = segments[segment];
            if (segment + 1 < segments.size())
                specified.flags |= continues;
            request += segmentBytes(specified);
        }
    }
    return request;
}

}  // namespace vantrel::test
