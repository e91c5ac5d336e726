#ifndef VANTREL_EMBEDDED_STORAGE_PENDING_COMMIT_H
#define VANTREL_EMBEDDED_STORAGE_PENDING_COMMIT_H

#include <string>

#include "embedded/storage/storage.h"

// Finishes commits over several files whose writer died, or could not finish them itself. The caller's
// connections to the files are in no transaction.

namespace vantrel::embedded {

// Before a snapshot of a file begins: gives it its part of a commit that was decided. It waits for nobody
// who works on the file.
void settleForReading(const std::string &path);

// Before a file is changed: waits until no commit is pending, else throws status 85.
void settleForWriting(const std::string &path, Waiting waiting);

// Gives all files their parts that this one keeps for them, and drops these. False where some are still
// needed, since their writer lives; the first failure is thrown when all others are settled. Of an encrypted
// file without a key nothing can be told, and true is returned.
bool settleParticipants(const std::string &path);

// Before a file is replaced, renamed or removed: status 85 where it is still needed.
void requireSettled(const std::string &path);

}  // namespace vantrel::embedded

#endif
