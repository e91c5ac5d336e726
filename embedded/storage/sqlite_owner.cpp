#include "embedded/storage/sqlite_owner.h"

#include "vantrel.h"

namespace vantrel::embedded {

std::optional<StoredOwner> loadOwner(Database &database) {
    if (database.integer("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'owner'") == 0)
        return std::nullopt;
    Statement select = database.prepare("SELECT readable, verifier FROM owner WHERE id = 1");
    if (!select.step())
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    OwnerMode mode{.isReadable = select.integer(0) != 0, .isEncrypted = false};
    return StoredOwner{mode, NameVerifier::parse(select.bytes(1))};
}

void saveOwner(Database &database, const StoredOwner &owner) {
    database.execute(
        "CREATE TABLE owner(id INTEGER PRIMARY KEY CHECK(id = 1), readable INTEGER NOT NULL, "
        "verifier BLOB NOT NULL)");
    Statement insert = database.prepare("INSERT INTO owner VALUES(1, ?1, ?2)");
    insert.bind(1, int64_t{owner.mode.isReadable}).bind(2, ByteView(owner.verifier.bytes())).run();
}

void dropOwner(Database &database) {
    database.execute("DROP TABLE owner");
}

}  // namespace vantrel::embedded
