#include "embedded/cipher/page_cipher.h"

#include <new>

#include "engine/bytes.h"

namespace vantrel::embedded {

PageCipher::PageCipher(std::span<const uint8_t, keySize> key)
    : encryption_(makeContext(key, true)), decryption_(makeContext(key, false)) {}

PageCipher::Context PageCipher::makeContext(std::span<const uint8_t, keySize> key, bool encrypts) {
    Context context(EVP_CIPHER_CTX_new());
    if (context == nullptr || EVP_CipherInit_ex(context.get(), EVP_aes_256_xts(), nullptr, key.data(),
                                                nullptr, encrypts ? 1 : 0) != 1)
        throw std::bad_alloc();
    return context;
}

// The tweak is the number of the unit and its kind: equal bytes in different places look different.
bool PageCipher::run(EVP_CIPHER_CTX *context, UnitKind kind, uint64_t number, std::span<const uint8_t> source,
                     uint8_t *target) noexcept {
    uint8_t tweak[16] = {};
    storeU64(tweak, number);
    tweak[8] = static_cast<uint8_t>(kind);
    int length = 0;
    return EVP_CipherInit_ex(context, nullptr, nullptr, nullptr, tweak, -1) == 1 &&
           EVP_CipherUpdate(context, target, &length, source.data(), static_cast<int>(source.size())) == 1;
}

bool PageCipher::encrypt(UnitKind kind, uint64_t number, std::span<const uint8_t> plain,
                         uint8_t *target) noexcept {
    return run(encryption_.get(), kind, number, plain, target);
}

bool PageCipher::decrypt(UnitKind kind, uint64_t number, std::span<uint8_t> unit) noexcept {
    return run(decryption_.get(), kind, number, unit, unit.data());
}

}  // namespace vantrel::embedded
