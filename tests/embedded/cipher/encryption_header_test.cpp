#include "embedded/cipher/encryption_header.h"

#include <gtest/gtest.h>

#include "embedded/status_error.h"

namespace {

using namespace vantrel::embedded;

constexpr OwnerMode deniedMode{.isReadable = false, .isEncrypted = true};
constexpr OwnerMode readableMode{.isReadable = true, .isEncrypted = true};

int32_t statusOf(const Bytes &bytes) {
    try {
        EncryptionHeader header(bytes);
        return 0;
    } catch (const StatusError &error) {
        return error.status;
    }
}

TEST(EncryptionHeader, TheNameUnlocksTheKey) {
    FileKey key = FileKey::random();
    EncryptionHeader header(EncryptionHeader({"harbour", deniedMode}, key).bytes());
    std::optional<FileKey> unlocked = header.unlock("harbour");
    ASSERT_TRUE(unlocked.has_value());
    EXPECT_EQ(unlocked->openBytes(key.sealBytes("plain", ""), ""), "plain");
    EXPECT_FALSE(header.unlock("harbor").has_value());
    EXPECT_FALSE(header.unlock("").has_value());
    EXPECT_FALSE(header.unlockForReading().has_value());
    EXPECT_FALSE(header.mode().isReadable);
}

TEST(EncryptionHeader, AReadableFileIsUnlockedByAnybody) {
    FileKey key = FileKey::random();
    EncryptionHeader header(EncryptionHeader({"harbour", readableMode}, key).bytes());
    std::optional<FileKey> unlocked = header.unlockForReading();
    ASSERT_TRUE(unlocked.has_value());
    EXPECT_EQ(unlocked->openBytes(key.sealBytes("plain", ""), ""), "plain");
    EXPECT_FALSE(header.unlock("harbor").has_value());
    EXPECT_TRUE(header.mode().isReadable);
}

TEST(EncryptionHeader, HoldsNeitherNameNorKey) {
    FileKey key = FileKey::random();
    EncryptionHeader one({"harbour", readableMode}, key), other({"harbour", readableMode}, key);
    EXPECT_EQ(one.bytes().find("harbour"), Bytes::npos);
    EXPECT_EQ(one.bytes().size(), 8192u);
    EXPECT_NE(one.bytes().substr(28, 32), other.bytes().substr(28, 32));
    EXPECT_NE(one.bytes().substr(60, 124), other.bytes().substr(60, 124));
    EXPECT_EQ(one.bytes().substr(340), Bytes(8192 - 340, '\0'));
}

TEST(EncryptionHeader, DamageAndOtherFormatsAreTold) {
    const Bytes bytes = EncryptionHeader({"harbour", deniedMode}, FileKey::random()).bytes();
    EXPECT_EQ(statusOf(bytes), 0);
    for (size_t offset = 0; offset < 340; ++offset) {
        Bytes damaged = bytes;
        damaged[offset] = static_cast<char>(damaged[offset] ^ 2);
        EXPECT_EQ(statusOf(damaged), offset >= 16 && offset < 20 ? 30 : 2) << offset;
    }
    EXPECT_EQ(statusOf(bytes.substr(0, 8191)), 2);
    EXPECT_EQ(statusOf(""), 2);
}

}  // namespace
