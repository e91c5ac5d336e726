#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_FREEZE_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_FREEZE_H

#include "embedded/storage/sqlite_database.h"
#include "embedded/storage/storage.h"
#include "embedded/storage/wal_index.h"

namespace vantrel::embedded {

// Everything committed is moved from the log into the database, and a read transaction that began on the
// empty log then keeps every checkpoint, and so every change of the database's bytes, out.
class SqliteFreeze final : public Freeze {
  public:
    explicit SqliteFreeze(const std::string &path);

    void end() override;
    void abandon() override;

  private:
    bool hold();

    Database database_;
    WalIndex walIndex_;
};

}  // namespace vantrel::embedded

#endif
