#ifndef VANTREL_EMBEDDED_OPERATION_CHANGE_H
#define VANTREL_EMBEDDED_OPERATION_CHANGE_H

#include "embedded/operation/record_change.h"
#include "embedded/operation/session.h"

// What the operations that change records share.

namespace vantrel::embedded {

// The request's position; a read-only one is thrown as status 46.
Position &writablePosition(Session &session, const Request &request);

// A fixed-length record has its file's length, a variable one at least the length of the fixed part.
bool recordFits(const FileDefinition &definition, size_t length);

// The record in the request; one that does not fit is thrown as status 22.
ByteView recordIn(const Request &request, const FileDefinition &definition);

// Remembers who has the key already, for the statistics, and returns status 5.
int32_t refuseDuplicate(Position &position, const DuplicateKey &duplicate);

// The current record as it is stored now, under the write transaction and locked for the change. A record
// that another session has locked is thrown as status 84, one that another session changed or deleted since
// it was read as 80.
StoredRecord currentRecord(ChangeScope &scope, Position &position);

// Outside a transaction a change releases the single lock.
void settleLocks(Session &session, Position &position, int64_t address);

}  // namespace vantrel::embedded

#endif
