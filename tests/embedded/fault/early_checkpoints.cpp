#include "embedded/fault/early_checkpoints.h"

#include <dlfcn.h>
#include <sqlite3.h>

#include <cstring>

namespace {

constexpr int pagesInLog = 2;
bool isEarly = false;

}  // namespace

void vantrel::test::checkpointEarly() {
    isEarly = true;
}

// Stands in front of SQLite's function of this name, through which the engine sets how long a log grows.
extern "C" __attribute__((visibility("default"))) int sqlite3_exec(sqlite3 *database, const char *sql,
                                                                   sqlite3_callback callback, void *context,
                                                                   char **message) {
    using Function = int(sqlite3 *, const char *, sqlite3_callback, void *, char **);
    static auto *const real = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, "sqlite3_exec"));
    int code = real(database, sql, callback, context, message);
    if (isEarly && code == SQLITE_OK && strstr(sql, "wal_autocheckpoint") != nullptr)
        sqlite3_wal_autocheckpoint(database, pagesInLog);
    return code;
}
