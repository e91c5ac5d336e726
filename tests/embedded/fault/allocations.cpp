#include "embedded/fault/allocations.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "embedded/system_calls.h"

namespace vantrel::test {

namespace {

thread_local const AllocationWatch *watchOfThread = nullptr;
std::atomic<const AllocationWatch *> watchOfOthers{nullptr};
std::atomic<int64_t> liveBlocks{0};
sqlite3_mem_methods sqliteMethods;

bool fails() {
    if (isDecidingAboutCall())
        return false;
    if (watchOfThread != nullptr)
        return watchOfThread->fails();
    const AllocationWatch *others = watchOfOthers;
    return others != nullptr && gettid() != getpid() && others->fails();
}

void *allocateForSqlite(int size) {
    return fails() ? nullptr : sqliteMethods.xMalloc(size);
}

void *reallocateForSqlite(void *block, int size) {
    return fails() ? nullptr : sqliteMethods.xRealloc(block, size);
}

void *allocateForCiphers(size_t size, const char *, int) {
    return size == 0 || fails() ? nullptr : malloc(size);
}

void *reallocateForCiphers(void *block, size_t size, const char *, int) {
    if (size == 0) {
        free(block);
        return nullptr;
    }
    return fails() ? nullptr : realloc(block, size);
}

void freeForCiphers(void *block, const char *, int) {
    free(block);
}

// Before the first use of the libraries.
const bool isInstalled = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &sqliteMethods);
    static sqlite3_mem_methods failing = sqliteMethods;
    failing.xMalloc = allocateForSqlite;
    failing.xRealloc = reallocateForSqlite;
    bool isDone = sqlite3_config(SQLITE_CONFIG_MALLOC, &failing) == SQLITE_OK &&
                  CRYPTO_set_mem_functions(allocateForCiphers, reallocateForCiphers, freeForCiphers) == 1;
    if (!isDone)
        abort();
    return true;
}();

}  // namespace

AllocationWatch::AllocationWatch(Decision decide, void *context, Threads threads)
    : decide_(decide), context_(context), threads_(threads) {
    if (threads_ == Threads::mine)
        watchOfThread = this;
    else
        watchOfOthers = this;
}

AllocationWatch::~AllocationWatch() {
    if (threads_ == Threads::mine)
        watchOfThread = nullptr;
    else
        watchOfOthers = nullptr;
}

LiveAllocations liveAllocations() {
    return {liveBlocks, sqlite3_memory_used()};
}

void warmUpCiphers() {
    unsigned char bytes[64] = {}, digest[EVP_MAX_MD_SIZE];
    RAND_priv_bytes(bytes, sizeof bytes);
    EVP_Digest(bytes, sizeof bytes, digest, nullptr, EVP_sha256(), nullptr);
    PKCS5_PBKDF2_HMAC("warm", 4, bytes, 16, 1, EVP_sha256(), 32, digest);
    HMAC(EVP_sha256(), bytes, 32, bytes, 32, digest, nullptr);
    for (const EVP_CIPHER *cipher : {EVP_aes_256_gcm(), EVP_aes_256_xts()}) {
        EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
        EVP_CipherInit_ex(context, cipher, nullptr, bytes, bytes, 1);
        EVP_CIPHER_CTX_free(context);
    }
}

}  // namespace vantrel::test

namespace {

void *allocate(size_t size, size_t alignment) noexcept {
    if (vantrel::test::fails())
        return nullptr;
    size_t rounded = (size + alignment - 1) / alignment * alignment;
    void *block = alignment <= alignof(max_align_t)
                      ? malloc(size == 0 ? 1 : size)
                      : aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
    if (block != nullptr)
        ++vantrel::test::liveBlocks;
    return block;
}

void *allocateOrThrow(size_t size, size_t alignment = alignof(max_align_t)) {
    void *block = allocate(size, alignment);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void release(void *block) noexcept {
    if (block == nullptr)
        return;
    --vantrel::test::liveBlocks;
    free(block);
}

size_t sizeOf(std::align_val_t alignment) {
    return static_cast<size_t>(alignment);
}

}  // namespace

void *operator new(size_t size) {
    return allocateOrThrow(size);
}
void *operator new[](size_t size) {
    return allocateOrThrow(size);
}
void *operator new(size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, sizeOf(alignment));
}
void *operator new[](size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, sizeOf(alignment));
}
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    return allocate(size, alignof(max_align_t));
}
void *operator new[](size_t size, const std::nothrow_t &) noexcept {
    return allocate(size, alignof(max_align_t));
}
void *operator new(size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept {
    return allocate(size, sizeOf(alignment));
}
void *operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t &) noexcept {
    return allocate(size, sizeOf(alignment));
}
void operator delete(void *block) noexcept {
    release(block);
}
void operator delete[](void *block) noexcept {
    release(block);
}
void operator delete(void *block, size_t) noexcept {
    release(block);
}
void operator delete[](void *block, size_t) noexcept {
    release(block);
}
void operator delete(void *block, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void *block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void *block, size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void *block, size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void *block, const std::nothrow_t &) noexcept {
    release(block);
}
void operator delete[](void *block, const std::nothrow_t &) noexcept {
    release(block);
}
void operator delete(void *block, std::align_val_t, const std::nothrow_t &) noexcept {
    release(block);
}
void operator delete[](void *block, std::align_val_t, const std::nothrow_t &) noexcept {
    release(block);
}
