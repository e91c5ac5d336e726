#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_OWNER_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_OWNER_H

#include <optional>

#include "embedded/cipher/owner.h"
#include "embedded/storage/sqlite_database.h"

// The table `owner` of a file that is not encrypted, which is there while the file has an owner.

namespace vantrel::embedded {

struct StoredOwner {
    OwnerMode mode;
    NameVerifier verifier;
};

std::optional<StoredOwner> loadOwner(Database &database);
void saveOwner(Database &database, const StoredOwner &owner);
void dropOwner(Database &database);

}  // namespace vantrel::embedded

#endif
