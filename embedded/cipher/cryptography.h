#ifndef VANTREL_EMBEDDED_CIPHER_CRYPTOGRAPHY_H
#define VANTREL_EMBEDDED_CIPHER_CRYPTOGRAPHY_H

#include <openssl/crypto.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "embedded/key/definition.h"

namespace vantrel::embedded {

// Bytes that are wiped when they go.
template <size_t length>
struct Secret {
    std::array<uint8_t, length> bytes{};

    Secret() = default;
    Secret(const Secret &) = default;
    Secret &operator=(const Secret &) = default;
    ~Secret() { OPENSSL_cleanse(bytes.data(), bytes.size()); }
};

inline constexpr size_t keySize = 32;
using Key = Secret<keySize>;
using KeyBytes = std::span<const uint8_t, keySize>;

void fillRandom(std::span<uint8_t> bytes);

// How slow deriving a key is: two to this power times a kilobyte of memory is filled and read.
inline constexpr uint8_t usualCost = 15;
inline constexpr uint8_t highestCost = 18;

// The key that a name stands for in one file; slow, so that names cannot be tried in numbers.
Key deriveKey(ByteView name, ByteView salt, uint8_t cost);

// A code that only holders of the key can compute.
Key authenticationCode(KeyBytes key, ByteView bytes);

using Digest = std::array<uint8_t, 32>;
Digest digestOf(ByteView bytes);

// In a time that depends on the lengths only.
bool areEqual(ByteView one, ByteView other);

// Sealed bytes can be read and made only with the key, and opened only in the context they were sealed for.
inline constexpr size_t sealOverhead = 28;
Bytes seal(KeyBytes key, ByteView plain, ByteView context);
// False where the bytes are not what was sealed; the target is as long as that was.
bool unseal(KeyBytes key, ByteView sealed, ByteView context, std::span<uint8_t> plain);

inline ByteView viewOf(std::span<const uint8_t> bytes) {
    return ByteView(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

inline const uint8_t *unsignedBytes(ByteView bytes) {
    return reinterpret_cast<const uint8_t *>(bytes.data());
}

}  // namespace vantrel::embedded

#endif
