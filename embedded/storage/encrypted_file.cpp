#include "embedded/storage/encrypted_file.h"

#include <algorithm>
#include <cstring>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// A log begins with a header; each of its frames has one in front of its page.
constexpr int64_t logHeaderSize = 32;
constexpr int64_t frameHeaderSize = 24;
constexpr int64_t frameSize = frameHeaderSize + int64_t{EncryptedFile::pageSize};

EncryptedFile &encrypted(sqlite3_file *file) {
    return *static_cast<EncryptedFile *>(file);
}

sqlite3_file *real(sqlite3_file *file) {
    return encrypted(file).realFile();
}

int closeFile(sqlite3_file *file) {
    sqlite3_file *closed = real(file);
    int code = closed->pMethods->xClose(closed);
    encrypted(file).~EncryptedFile();
    return code;
}

int readFile(sqlite3_file *file, void *target, int length, sqlite3_int64 offset) {
    return encrypted(file).read(static_cast<uint8_t *>(target), length, offset);
}

int writeFile(sqlite3_file *file, const void *source, int length, sqlite3_int64 offset) {
    return encrypted(file).write(static_cast<const uint8_t *>(source), length, offset);
}

int truncateFile(sqlite3_file *file, sqlite3_int64 size) {
    return real(file)->pMethods->xTruncate(real(file), size + encrypted(file).shift());
}

int syncFile(sqlite3_file *file, int flags) {
    return real(file)->pMethods->xSync(real(file), flags);
}

int sizeOfFile(sqlite3_file *file, sqlite3_int64 *size) {
    int code = real(file)->pMethods->xFileSize(real(file), size);
    *size = std::max<sqlite3_int64>(*size - encrypted(file).shift(), 0);
    return code;
}

int lockFile(sqlite3_file *file, int level) {
    return real(file)->pMethods->xLock(real(file), level);
}

int unlockFile(sqlite3_file *file, int level) {
    return real(file)->pMethods->xUnlock(real(file), level);
}

int checkReservedLock(sqlite3_file *file, int *isLocked) {
    return real(file)->pMethods->xCheckReservedLock(real(file), isLocked);
}

int controlFile(sqlite3_file *file, int operation, void *argument) {
    if (operation == SQLITE_FCNTL_SIZE_HINT) {
        sqlite3_int64 size = *static_cast<sqlite3_int64 *>(argument) + encrypted(file).shift();
        return real(file)->pMethods->xFileControl(real(file), operation, &size);
    }
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
}

int sectorSize(sqlite3_file *file) {
    return real(file)->pMethods->xSectorSize(real(file));
}

int deviceCharacteristics(sqlite3_file *file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
}

int mapShared(sqlite3_file *file, int region, int size, int extends, void volatile **mapped) {
    return real(file)->pMethods->xShmMap(real(file), region, size, extends, mapped);
}

int lockShared(sqlite3_file *file, int first, int count, int flags) {
    return real(file)->pMethods->xShmLock(real(file), first, count, flags);
}

void shareBarrier(sqlite3_file *file) {
    real(file)->pMethods->xShmBarrier(real(file));
}

int unmapShared(sqlite3_file *file, int removes) {
    return real(file)->pMethods->xShmUnmap(real(file), removes);
}

// Version 2: nothing is mapped into memory but the index of the log.
constexpr sqlite3_io_methods methods{2,
                                     closeFile,
                                     readFile,
                                     writeFile,
                                     truncateFile,
                                     syncFile,
                                     sizeOfFile,
                                     lockFile,
                                     unlockFile,
                                     checkReservedLock,
                                     controlFile,
                                     sectorSize,
                                     deviceCharacteristics,
                                     mapShared,
                                     lockShared,
                                     shareBarrier,
                                     unmapShared,
                                     nullptr,
                                     nullptr};

// Whatever SQLite puts in front of what follows an object keeps this alignment.
constexpr size_t realFileOffset = (sizeof(EncryptedFile) + 7) / 8 * 8;

}  // namespace

EncryptedFile *EncryptedFile::from(sqlite3_file *file) {
    return file != nullptr && file->pMethods == &methods ? static_cast<EncryptedFile *>(file) : nullptr;
}

int EncryptedFile::memoryNeeded() {
    return static_cast<int>(realFileOffset) + sqlite3_vfs_find(nullptr)->szOsFile;
}

EncryptedFile::EncryptedFile(Role role) : sqlite3_file{nullptr}, role_(role) {}

sqlite3_file *EncryptedFile::realFile() {
    return static_cast<sqlite3_file *>(static_cast<void *>(reinterpret_cast<char *>(this) + realFileOffset));
}

void EncryptedFile::use(std::shared_ptr<Encryption> encryption) {
    encryption_ = std::move(encryption);
    pMethods = &methods;
}

Access EncryptedFile::access(ByteView name) const {
    const Encryption &known = *encryption_;
    bool isOwner = known.nameMark && isOwnerName(name) &&
                   areEqual(viewOf(known.nameMark->bytes), viewOf(known.key.markOf(name).bytes));
    if (isOwner || (!known.nameMark && known.header.unlock(name)))
        return Access::full;
    require(known.header.mode().isReadable, VANTREL_STATUS_INVALID_OWNER);
    return Access::reading;
}

EncryptedFile::Unit EncryptedFile::unitAt(int64_t offset) const {
    if (role_ == Role::database) {
        int64_t page = offset / int64_t{pageSize};
        return {UnitKind::page, static_cast<uint64_t>(page), page * int64_t{pageSize}, pageSize};
    }
    if (offset < logHeaderSize)
        return {UnitKind::logHeader, 0, 0, logHeaderSize};
    int64_t frame = (offset - logHeaderSize) / frameSize;
    int64_t start = logHeaderSize + frame * frameSize;
    auto number = static_cast<uint64_t>(frame);
    if (offset < start + frameHeaderSize)
        return {UnitKind::frameHeader, number, start, frameHeaderSize};
    return {UnitKind::framePage, number, start + frameHeaderSize, pageSize};
}

// A unit that the file ends in counts as missing: it was never written whole.
int EncryptedFile::read(uint8_t *target, int64_t length, int64_t offset) noexcept {
    while (length > 0) {
        Unit unit = unitAt(offset);
        auto skipped = static_cast<size_t>(offset - unit.start);
        size_t part = std::min(static_cast<size_t>(length), unit.length - skipped);
        uint8_t *bytes = part == unit.length ? target : unit_.data();
        int code = realFile()->pMethods->xRead(realFile(), bytes, static_cast<int>(unit.length),
                                               unit.start + shift());
        if (code != SQLITE_OK) {
            memset(target, 0, static_cast<size_t>(length));
            return code;
        }
        if (!encryption_->cipher.decrypt(unit.kind, unit.number, {bytes, unit.length}))
            return SQLITE_IOERR_READ;
        if (part != unit.length)
            memcpy(target, bytes + skipped, part);
        target += part;
        offset += static_cast<int64_t>(part);
        length -= static_cast<int64_t>(part);
    }
    return SQLITE_OK;
}

// SQLite writes whole pages and headers.
int EncryptedFile::write(const uint8_t *source, int64_t length, int64_t offset) noexcept {
    while (length > 0) {
        Unit unit = unitAt(offset);
        auto size = static_cast<int64_t>(unit.length);
        if (offset != unit.start || length < size ||
            !encryption_->cipher.encrypt(unit.kind, unit.number, {source, unit.length}, unit_.data()))
            return SQLITE_IOERR_WRITE;
        int code = realFile()->pMethods->xWrite(realFile(), unit_.data(), static_cast<int>(size),
                                                unit.start + shift());
        if (code != SQLITE_OK)
            return code;
        source += size;
        offset += size;
        length -= size;
    }
    return SQLITE_OK;
}

}  // namespace vantrel::embedded
