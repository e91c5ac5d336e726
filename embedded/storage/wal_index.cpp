#include "embedded/storage/wal_index.h"

#include <sys/mman.h>

#include <cstring>
#include <new>

namespace vantrel::embedded {

namespace {

constexpr int regionSize = 32768;

int mapRegion(sqlite3_file *mainFile, int region, void volatile **mapped) {
    if (mainFile == nullptr || mainFile->pMethods->iVersion < 2)
        return SQLITE_CANTOPEN;
    return mainFile->pMethods->xShmMap(mainFile, region, regionSize, 0, mapped);
}

void *mapRegion(sqlite3_file *mainFile, int region) {
    void volatile *mapped = nullptr;
    return mapRegion(mainFile, region, &mapped) == SQLITE_OK ? const_cast<void *>(mapped) : nullptr;
}

uint64_t load(const uint64_t *word) {
    return __atomic_load_n(word, __ATOMIC_ACQUIRE);
}

// Numbers are in the byte order of the machine.
uint32_t firstHalf(uint64_t word) {
    uint32_t half;
    __builtin_memcpy(&half, &word, sizeof half);
    return half;
}

// Of the last valid frame, at byte 16.
uint32_t lastFrameOf(const WalIndex::Header &header) {
    return firstHalf(header[2]);
}

// Behind two copies of the header: the last frame that is in the database too.
constexpr size_t wordOfBackfill = 12;

}  // namespace

WalIndex::Header WalIndex::read(sqlite3_file *mainFile) {
    Header header{};
    shared_ = static_cast<const uint64_t *>(mapRegion(mainFile, 0));
    if (shared_ == nullptr)
        return header;
    for (size_t word = 0; word < header.size(); ++word)
        header[word] = load(shared_ + word);
    return header;
}

bool WalIndex::equals(const Header &header) const {
    if (shared_ == nullptr)
        return false;
    uint64_t difference = 0;
    for (size_t word = 0; word < header.size(); ++word)
        difference |= load(shared_ + word) ^ header[word];
    return difference == 0;
}

bool WalIndex::logIsEmpty(sqlite3_file *mainFile) {
    Header header = read(mainFile);
    return shared_ != nullptr && lastFrameOf(header) == 0;
}

bool WalIndex::isReadOnly(sqlite3_file *mainFile) {
    void volatile *mapped = nullptr;
    return (mapRegion(mainFile, 0, &mapped) & 0xFF) == SQLITE_READONLY;
}

uint32_t WalIndex::pagesOnlyInLog(sqlite3_file *mainFile) {
    uint32_t lastFrame = lastFrameOf(read(mainFile));
    if (shared_ == nullptr)
        return 0;
    uint32_t inDatabase = firstHalf(load(shared_ + wordOfBackfill));
    return lastFrame > inDatabase ? lastFrame - inDatabase : 0;
}

void WalIndex::makePrivate(sqlite3_file *mainFile) {
    for (int region = 0;; ++region) {
        auto *mapped = static_cast<uint8_t *>(mapRegion(mainFile, region));
        if (mapped == nullptr)
            return;
        void *copy = mmap(nullptr, regionSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (copy == MAP_FAILED)
            throw std::bad_alloc();
        memcpy(copy, mapped, regionSize);
        if (mremap(copy, regionSize, regionSize, MREMAP_MAYMOVE | MREMAP_FIXED, mapped) == MAP_FAILED) {
            munmap(copy, regionSize);
            throw std::bad_alloc();
        }
    }
}

}  // namespace vantrel::embedded
