#include "embedded/storage/encrypting_vfs.h"

#include <unistd.h>

#include <memory>
#include <mutex>
#include <new>

#include "embedded/status_error.h"
#include "embedded/storage/encrypted_file.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

using Role = EncryptedFile::Role;

thread_local const OpeningScope *currentScope = nullptr;

// There is none where the library cannot begin for want of memory; the next one who asks has it try again.
sqlite3_vfs *findBaseVfs() {
    sqlite3_vfs *found = sqlite3_vfs_find(nullptr);
    if (found == nullptr)
        throw std::bad_alloc();
    return found;
}

sqlite3_vfs *baseVfs() {
    static sqlite3_vfs *const base = findBaseVfs();
    return base;
}

// SQLite takes a file for reading where it cannot be opened for writing, and gives a log the rights of its
// database only then: one that may be written is opened again, and not left so for a failure of the moment.
int openReal(const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    for (bool isSecond : {false, true}) {
        int given = 0;
        int code = baseVfs()->xOpen(baseVfs(), name, file, flags, &given);
        if (flagsGiven != nullptr)
            *flagsGiven = given;
        bool isLess =
            code == SQLITE_OK && (flags & SQLITE_OPEN_READWRITE) != 0 && (given & SQLITE_OPEN_READONLY) != 0;
        if (!isLess || access(name, W_OK) != 0)
            return code;
        file->pMethods->xClose(file);
        file->pMethods = nullptr;
        if (isSecond)
            break;
    }
    return SQLITE_CANTOPEN;
}

int codeOf(const StatusError &error) {
    switch (error.status) {
        case VANTREL_STATUS_INVALID_OWNER:
            return SQLITE_AUTH;
        case VANTREL_STATUS_NOT_A_VANTREL_FILE:
            return SQLITE_NOTADB;
        default:
            return SQLITE_CORRUPT;
    }
}

int readFirst(sqlite3_file *file, Bytes &bytes) {
    int code = file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), 0);
    return code == SQLITE_IOERR_SHORT_READ ? SQLITE_OK : code;
}

// What the open connections of the process encrypt with. Files are told apart by their headers, no two of
// which are equal.
class HeldKeys {
  public:
    void add(const std::shared_ptr<Encryption> &encryption) {
        std::lock_guard lock(mutex_);
        std::erase_if(held_, [](const auto &held) { return held.expired(); });
        held_.push_back(encryption);
    }
    // Each connection has a cipher of its own, since threads may not share one.
    std::shared_ptr<Encryption> find(const EncryptionHeader &header) {
        std::lock_guard lock(mutex_);
        for (const std::weak_ptr<Encryption> &known : held_) {
            std::shared_ptr<Encryption> held = known.lock();
            if (held != nullptr && held->header.bytes() == header.bytes())
                return std::make_shared<Encryption>(
                    Encryption{header, held->key, held->key.pageCipher(), held->nameMark});
        }
        return nullptr;
    }

  private:
    std::mutex mutex_;
    std::vector<std::weak_ptr<Encryption>> held_;
};

// Never destroyed: connections may be opened while the process ends.
HeldKeys &heldKeys() {
    static auto *const keys = new HeldKeys;
    return *keys;
}

std::shared_ptr<Encryption> unlock(const EncryptionHeader &header, ByteView name) {
    if (std::optional<FileKey> key = header.unlock(name))
        return std::make_shared<Encryption>(Encryption{header, *key, key->pageCipher(), key->markOf(name)});
    std::optional<FileKey> key = header.unlockForReading();
    require(key.has_value(), VANTREL_STATUS_INVALID_OWNER);
    return std::make_shared<Encryption>(Encryption{header, *key, key->pageCipher(), std::nullopt});
}

// Each of these makes the encryption of a file whose real file is open.
int findEncryption(EncryptedFile &file, std::shared_ptr<Encryption> &encryption) {
    Bytes bytes(EncryptionHeader::size, '\0');
    int code = readFirst(file.realFile(), bytes);
    if (code != SQLITE_OK)
        return code;
    EncryptionHeader header(bytes);
    if (currentScope != nullptr && currentScope->usesHeldKey)
        encryption = heldKeys().find(header);
    if (encryption == nullptr)
        encryption = unlock(header, currentScope == nullptr ? ByteView() : currentScope->ownerName);
    heldKeys().add(encryption);
    return SQLITE_OK;
}

int makeEncryption(EncryptedFile &file, std::shared_ptr<Encryption> &encryption) {
    const NewOwner &owner = *currentScope->newOwner;
    FileKey key = FileKey::random();
    EncryptionHeader header(owner, key);
    sqlite3_file *real = file.realFile();
    int code =
        real->pMethods->xWrite(real, header.bytes().data(), static_cast<int>(header.bytes().size()), 0);
    encryption =
        std::make_shared<Encryption>(Encryption{header, key, key.pageCipher(), key.markOf(owner.name)});
    return code;
}

// Opens the real file behind an encrypting one. The function gives the encryption.
template <class Function>
int openEncrypted(const char *name, sqlite3_file *target, int flags, int *flagsGiven, Role role,
                  Function &&encryptionOf) {
    auto *file = new (target) EncryptedFile(role);
    sqlite3_file *real = file->realFile();
    real->pMethods = nullptr;
    int code = openReal(name, real, flags, flagsGiven);
    std::shared_ptr<Encryption> encryption;
    try {
        if (code == SQLITE_OK)
            code = encryptionOf(*file, encryption);
    } catch (const StatusError &error) {
        code = codeOf(error);
    } catch (...) {
        code = SQLITE_NOMEM;
    }
    if (code == SQLITE_OK) {
        file->use(std::move(encryption));
        return SQLITE_OK;
    }
    if (real->pMethods != nullptr)
        real->pMethods->xClose(real);
    file->~EncryptedFile();
    target->pMethods = nullptr;
    return code;
}

int openDatabase(const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    if ((flags & SQLITE_OPEN_CREATE) != 0 && currentScope != nullptr && currentScope->newOwner != nullptr)
        return openEncrypted(name, file, flags, flagsGiven, Role::database, makeEncryption);
    int code = openReal(name, file, flags, flagsGiven);
    if (code != SQLITE_OK)
        return code;
    Bytes magic(EncryptionHeader::magicSize, '\0');
    code = readFirst(file, magic);
    if (code == SQLITE_OK && !EncryptionHeader::isMagic(magic))
        return SQLITE_OK;
    file->pMethods->xClose(file);
    file->pMethods = nullptr;
    return code != SQLITE_OK ? code
                             : openEncrypted(name, file, flags, flagsGiven, Role::database, findEncryption);
}

int openLog(const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    EncryptedFile *database = EncryptedFile::from(sqlite3_database_file_object(name));
    if (database == nullptr)
        return openReal(name, file, flags, flagsGiven);
    return openEncrypted(name, file, flags, flagsGiven, Role::log,
                         [database](EncryptedFile &, std::shared_ptr<Encryption> &encryption) {
                             encryption = database->encryption();
                             return SQLITE_OK;
                         });
}

int openJournal(const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    if (EncryptedFile::from(sqlite3_database_file_object(name)) != nullptr)
        return SQLITE_CANTOPEN;
    return openReal(name, file, flags, flagsGiven);
}

int openFile(sqlite3_vfs *, const char *name, sqlite3_file *file, int flags, int *flagsGiven) {
    file->pMethods = nullptr;
    try {
        if ((flags & SQLITE_OPEN_MAIN_DB) != 0)
            return openDatabase(name, file, flags, flagsGiven);
        if ((flags & SQLITE_OPEN_WAL) != 0)
            return openLog(name, file, flags, flagsGiven);
        if ((flags & SQLITE_OPEN_MAIN_JOURNAL) != 0)
            return openJournal(name, file, flags, flagsGiven);
        return SQLITE_CANTOPEN;
    } catch (...) {
        return SQLITE_NOMEM;
    }
}

// A copy of SQLite's own, but for opening. It is never taken back: connections and a thread that runs in the
// background use it until the process ends.
const char *registerVfs() {
    constexpr const char *name = "vantrel";
    auto vfs = std::make_unique<sqlite3_vfs>(*baseVfs());
    vfs->zName = name;
    vfs->pNext = nullptr;
    vfs->szOsFile = EncryptedFile::memoryNeeded();
    vfs->xOpen = openFile;
    if (sqlite3_vfs_register(vfs.get(), 0) != SQLITE_OK)
        throw std::bad_alloc();
    return vfs.release()->zName;
}

}  // namespace

const char *encryptingVfs() {
    static const char *const name = registerVfs();
    return name;
}

OpeningScope::OpeningScope(ByteView ownersName)
    : ownerName(ownersName), newOwner(nullptr), usesHeldKey(false) {
    currentScope = this;
}

OpeningScope::OpeningScope(const NewOwner &owner) : newOwner(&owner), usesHeldKey(false) {
    currentScope = this;
}

OpeningScope::OpeningScope(HeldKey) : newOwner(nullptr), usesHeldKey(true) {
    currentScope = this;
}

OpeningScope::~OpeningScope() {
    currentScope = nullptr;
}

}  // namespace vantrel::embedded
