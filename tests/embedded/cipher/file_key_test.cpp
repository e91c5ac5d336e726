#include "embedded/cipher/file_key.h"

#include <gtest/gtest.h>

#include "embedded/cipher/owner.h"
#include "embedded/status_error.h"

namespace {

using namespace vantrel::embedded;

TEST(FileKey, SealedBytesComeBackInTheirContextOnly) {
    FileKey key = FileKey::random(), other = FileKey::random();
    for (const Bytes &plain : {Bytes(), Bytes("x"), Bytes(100000, 'p')}) {
        Bytes sealed = key.sealBytes(plain, "context");
        EXPECT_EQ(sealed.size(), plain.size() + 28);
        EXPECT_EQ(key.openBytes(sealed, "context"), plain);
        EXPECT_EQ(key.openBytes(sealed, "contexts"), std::nullopt);
        EXPECT_EQ(other.openBytes(sealed, "context"), std::nullopt);
    }
    EXPECT_EQ(key.openBytes("", "context"), std::nullopt);
    EXPECT_EQ(key.openBytes(Bytes(28, 'x'), "context"), std::nullopt);
}

TEST(FileKey, AChangedSealingIsRefusedWhereverItIsChanged) {
    FileKey key = FileKey::random();
    Bytes sealed = key.sealBytes("plain", "");
    for (char &byte : sealed) {
        byte = static_cast<char>(byte ^ 1);
        EXPECT_EQ(key.openBytes(sealed, ""), std::nullopt);
        byte = static_cast<char>(byte ^ 1);
    }
    EXPECT_EQ(key.openBytes(sealed, ""), "plain");
    sealed.pop_back();
    EXPECT_EQ(key.openBytes(sealed, ""), std::nullopt);
}

TEST(FileKey, SealingTwiceDiffers) {
    FileKey key = FileKey::random();
    EXPECT_NE(key.sealBytes("plain", ""), key.sealBytes("plain", ""));
}

TEST(NameVerifier, AcceptsItsNameOnly) {
    NameVerifier verifier = NameVerifier::parse(NameVerifier::of("harbour").bytes());
    EXPECT_TRUE(verifier.accepts("harbour"));
    for (const char *name : {"", "harbou", "harbours", "Harbour", "a name that is longer than it may be"})
        EXPECT_FALSE(verifier.accepts(name)) << name;
    EXPECT_NE(verifier.bytes(), NameVerifier::of("harbour").bytes());
}

TEST(NameVerifier, IllFormedBytesAreDamage) {
    Bytes bytes = NameVerifier::of("harbour").bytes();
    for (const Bytes &damaged : {Bytes(), bytes.substr(1), bytes + 'x', '\x7F' + bytes.substr(1)}) {
        try {
            NameVerifier::parse(damaged);
            ADD_FAILURE();
        } catch (const StatusError &error) {
            EXPECT_EQ(error.status, 2);
        }
    }
}

// Test vector of the function's definition: N = 16384, r = 8, p = 1.
TEST(Cryptography, DerivesTheKeysOfScrypt) {
    const uint8_t expected[32] = {0x70, 0x23, 0xBD, 0xCB, 0x3A, 0xFD, 0x73, 0x48, 0x46, 0x1C, 0x06,
                                  0xCD, 0x81, 0xFD, 0x38, 0xEB, 0xFD, 0xA8, 0xFB, 0xBA, 0x90, 0x4F,
                                  0x8E, 0x3E, 0xA9, 0xB5, 0x43, 0xF6, 0x54, 0x5D, 0xA1, 0xF2};
    EXPECT_EQ(viewOf(deriveKey("pleaseletmein", "SodiumChloride", 14).bytes), viewOf(expected));
}

}  // namespace
