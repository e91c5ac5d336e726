#include "embedded/cipher/cryptography.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <climits>
#include <memory>
#include <new>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// A sealing is a nonce, the encrypted bytes and a tag.
constexpr size_t nonceSize = 12;
constexpr size_t tagSize = 16;
static_assert(nonceSize + tagSize == sealOverhead);

constexpr uint64_t blockSizeFactor = 8;
constexpr uint64_t lanes = 1;

struct FreeContext {
    void operator()(EVP_CIPHER_CTX *context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

// The library fails where memory runs out, and nowhere else with arguments that are right.
void check(bool isDone) {
    if (!isDone)
        throw std::bad_alloc();
}

// Of the failures that the library has noted.
bool memoryRanOut() {
    bool isFound = false;
    while (unsigned long error = ERR_get_error())
        isFound |= ERR_GET_REASON(error) == ERR_R_MALLOC_FAILURE;
    return isFound;
}

int lengthOf(ByteView bytes) {
    require(bytes.size() <= INT_MAX, VANTREL_STATUS_DATA_LENGTH_ERROR);
    return static_cast<int>(bytes.size());
}

Context makeContext(KeyBytes key, const uint8_t *nonce, bool encrypts) {
    Context context(EVP_CIPHER_CTX_new());
    check(context != nullptr && EVP_CipherInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(),
                                                  nonce, encrypts ? 1 : 0) == 1);
    return context;
}

}  // namespace

void fillRandom(std::span<uint8_t> bytes) {
    ERR_clear_error();
    if (RAND_priv_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1)
        return;
    check(!memoryRanOut());
    throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

Key deriveKey(ByteView name, ByteView salt, uint8_t cost) {
    uint64_t rounds = uint64_t{1} << cost;
    uint64_t memory = 128 * blockSizeFactor * (rounds + lanes + 2);
    Key key;
    check(EVP_PBE_scrypt(name.data(), name.size(), unsignedBytes(salt), salt.size(), rounds, blockSizeFactor,
                         lanes, memory, key.bytes.data(), key.bytes.size()) == 1);
    return key;
}

Key authenticationCode(KeyBytes key, ByteView bytes) {
    Key code;
    check(HMAC(EVP_sha256(), key.data(), keySize, unsignedBytes(bytes), bytes.size(), code.bytes.data(),
               nullptr) != nullptr);
    return code;
}

Digest digestOf(ByteView bytes) {
    Digest digest;
    check(EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) == 1);
    return digest;
}

bool areEqual(ByteView one, ByteView other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

Bytes seal(KeyBytes key, ByteView plain, ByteView context) {
    Bytes sealed(plain.size() + sealOverhead, '\0');
    auto *nonce = reinterpret_cast<uint8_t *>(sealed.data());
    uint8_t *encrypted = nonce + nonceSize;
    uint8_t *tag = encrypted + plain.size();
    fillRandom({nonce, nonceSize});
    Context cipher = makeContext(key, nonce, true);
    int length = 0;
    check(EVP_CipherUpdate(cipher.get(), nullptr, &length, unsignedBytes(context), lengthOf(context)) == 1 &&
          EVP_CipherUpdate(cipher.get(), encrypted, &length, unsignedBytes(plain), lengthOf(plain)) == 1 &&
          EVP_CipherFinal_ex(cipher.get(), tag, &length) == 1 &&
          EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_GET_TAG, tagSize, tag) == 1);
    return sealed;
}

bool unseal(KeyBytes key, ByteView sealed, ByteView context, std::span<uint8_t> plain) {
    if (sealed.size() != plain.size() + sealOverhead)
        return false;
    ByteView encrypted = sealed.substr(nonceSize, plain.size());
    Bytes tag(sealed.substr(nonceSize + plain.size()));
    Context cipher = makeContext(key, unsignedBytes(sealed), false);
    int length = 0;
    check(EVP_CipherUpdate(cipher.get(), nullptr, &length, unsignedBytes(context), lengthOf(context)) == 1 &&
          EVP_CipherUpdate(cipher.get(), plain.data(), &length, unsignedBytes(encrypted),
                           lengthOf(encrypted)) == 1 &&
          EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) == 1);
    uint8_t unused[tagSize];
    if (EVP_CipherFinal_ex(cipher.get(), unused, &length) == 1)
        return true;
    OPENSSL_cleanse(plain.data(), plain.size());
    return false;
}

}  // namespace vantrel::embedded
