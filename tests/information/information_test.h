#ifndef VANTREL_TESTS_INFORMATION_INFORMATION_TEST_H
#define VANTREL_TESTS_INFORMATION_INFORMATION_TEST_H

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "engine/status.h"
#include "information/file_information.h"
#include "support/client_test.h"

namespace vantrel::test {

// Where the engine's replies begin in a file information record.
inline constexpr size_t statisticsArea = 0;
inline constexpr size_t replyLengthField = 65535;
inline constexpr size_t duplicateConflictArea = 65539;
inline constexpr size_t fileUsageArea = 65549;
inline constexpr size_t gatewayArea = 65569;
inline constexpr size_t lockOwnerArea = 65641;
inline constexpr size_t referentialIntegrityArea = 65745;
inline constexpr size_t securityArea = 66012;
inline constexpr size_t segmentFilesArea = 131547;
inline constexpr size_t systemDataArea = 197082;
inline constexpr size_t statisticsKeyArea = 197090;
inline constexpr size_t lastStatusField = 198114;

// What surrounds a field must not matter.
inline constexpr uint8_t backgrounds[] = {0x00, 0xFF};

template <class Value>
using Getter = Value (*)(VantrelFileInformation *);
using TextGetter = VantrelStatus (*)(VantrelFileInformation *, char *, int32_t);

struct NumberCase {
    const char *name;
    Getter<int32_t> get;
    size_t offset;
    int32_t nullValue = -1;
};

struct FlagCase {
    const char *name;
    Getter<int32_t> get;
    uint32_t mask;
};

// A caller's buffer of 0x5A bytes between others of which none may change.
class GuardedText {
  public:
    explicit GuardedText(size_t size) : size_(size), bytes_(size + 2 * guardSize, guard) {}

    char *get() { return bytes_.data() + guardSize; }
    std::string contents() const { return {bytes_.data() + guardSize, size_}; }
    void expectContents(const std::string &expected) const;
    void expectUntouched() const { expectContents(std::string(size_, guard)); }

    static constexpr char guard = 0x5A;

  private:
    static constexpr size_t guardSize = 300;
    size_t size_;
    std::vector<char> bytes_;
};

// A record whose last status is 7777.
class InformationTest : public testing::Test {
  protected:
    InformationTest();
    ~InformationTest() override;

    uint8_t *at(size_t offset) { return reinterpret_cast<uint8_t *>(information) + offset; }
    void put(size_t offset, const Bytes &bytes);
    void put(size_t offset, const std::string &text) { put(offset, bytesOf(text)); }
    VantrelStatus status() const { return lastStatus(information); }
    void resetStatus() { keepStatus(information, untouchedStatus); }

    // Sets every byte of every reply.
    void fill(uint8_t value);

    // The getter reads the bytes as the value and nothing else of the record, and clears the last status.
    template <class Value>
    void expectReads(Getter<Value> get, size_t offset, const Bytes &bytes, Value expected);

    // The same for all values of a one-byte or two-byte field; none stands for a refused value.
    using Expected = std::function<std::optional<int32_t>(uint16_t)>;
    void expectEveryByte(Getter<int32_t> get, size_t offset, const Expected &expected);
    void expectEveryWord(Getter<int32_t> get, size_t offset, const Expected &expected);

    // A two-byte field of which the bits under the mask are decoded.
    void expectEnumeration(Getter<int32_t> get, size_t offset, uint16_t mask,
                           const std::map<uint16_t, int32_t> &values);
    void expectFlag(Getter<int32_t> get, size_t offset, uint16_t mask);

    // A four-byte number, shown signed.
    void expectLong(Getter<int32_t> get, size_t offset);
    void expectLongLong(Getter<int64_t> get, size_t offset);

    // A text as wide as its field, in a buffer that must be as wide.
    void expectFixedText(TextGetter get, size_t offset, int32_t width);

    VantrelFileInformation *information = nullptr;

  private:
    void expectEveryValue(Getter<int32_t> get, size_t offset, size_t width, const Expected &expected);
    void expectAllBytes(uint8_t value, size_t exceptOffset, size_t exceptWidth);
    void expectTextRefusals(TextGetter get, int32_t width);
};

template <class Value>
void InformationTest::expectReads(Getter<Value> get, size_t offset, const Bytes &bytes, Value expected) {
    for (uint8_t background : backgrounds) {
        fill(background);
        put(offset, bytes);
        resetStatus();
        EXPECT_EQ(get(information), expected);
        EXPECT_EQ(status(), 0);
        expectAllBytes(background, offset, bytes.size());
    }
}

}  // namespace vantrel::test

#endif
