#ifndef VANTREL_EMBEDDED_CIPHER_PAGE_CIPHER_H
#define VANTREL_EMBEDDED_CIPHER_PAGE_CIPHER_H

#include <openssl/evp.h>

#include <cstdint>
#include <memory>
#include <span>

namespace vantrel::embedded {

// What a file encrypts as a whole each time it is written.
enum class UnitKind : uint8_t { page, logHeader, frameHeader, framePage };

// Encrypts the units of a file, each by its kind and number, to as many bytes as it has: at least 16. To be
// used by one thread at a time.
class PageCipher {
  public:
    static constexpr size_t keySize = 64;

    explicit PageCipher(std::span<const uint8_t, keySize> key);

    // False where the cipher library fails.
    bool encrypt(UnitKind kind, uint64_t number, std::span<const uint8_t> plain, uint8_t *target) noexcept;
    bool decrypt(UnitKind kind, uint64_t number, std::span<uint8_t> unit) noexcept;

  private:
    struct Free {
        void operator()(EVP_CIPHER_CTX *context) const { EVP_CIPHER_CTX_free(context); }
    };
    using Context = std::unique_ptr<EVP_CIPHER_CTX, Free>;

    static Context makeContext(std::span<const uint8_t, keySize> key, bool encrypts);
    static bool run(EVP_CIPHER_CTX *context, UnitKind kind, uint64_t number, std::span<const uint8_t> source,
                    uint8_t *target) noexcept;

    Context encryption_, decryption_;
};

}  // namespace vantrel::embedded

#endif
