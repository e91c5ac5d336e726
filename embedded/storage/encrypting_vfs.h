#ifndef VANTREL_EMBEDDED_STORAGE_ENCRYPTING_VFS_H
#define VANTREL_EMBEDDED_STORAGE_ENCRYPTING_VFS_H

#include "embedded/cipher/owner.h"

namespace vantrel::embedded {

// The name of a thin layer over SQLite's own access to files. It recognises encrypted databases and encrypts
// them and their logs; other databases it leaves to SQLite. It opens no temporary file.
const char *encryptingVfs();

// How the connections are to be made that this thread opens while it lives: encrypted databases are opened
// with the owner's name, or without one for reading. A file that the name does not open is SQLITE_AUTH.
class OpeningScope {
  public:
    explicit OpeningScope(ByteView ownerName);
    // A database that is made is encrypted for the owner.
    explicit OpeningScope(const NewOwner &owner);
    // For what the engine does by itself: databases open with the key of another connection of the process,
    // or with that for reading.
    enum class HeldKey { only };
    explicit OpeningScope(HeldKey);
    ~OpeningScope();
    OpeningScope(const OpeningScope &) = delete;
    OpeningScope &operator=(const OpeningScope &) = delete;

    const ByteView ownerName;
    const NewOwner *const newOwner;
    const bool usesHeldKey;
};

}  // namespace vantrel::embedded

#endif
