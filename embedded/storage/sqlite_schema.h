#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_SCHEMA_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_SCHEMA_H

#include <cstdint>
#include <string>

#include "embedded/storage/sqlite_database.h"
#include "embedded/storage/storage.h"

// The tables of a file: `definition` (what was asked for at create), `state` (what is kept
// for the file as a whole), `record` (by address) and one `index_N` for each index (by encoded key and
// address).

namespace vantrel::embedded {

inline constexpr int64_t applicationId = 0x564E544C;
inline constexpr int64_t formatNumber = 1;

std::string indexTableName(uint8_t index);

void createTables(Database &database, const FileDefinition &definition);
void createIndexTableIn(Database &database, uint8_t index);

// Not a file of this format is thrown as status 30.
void checkFormat(Database &database);

FileDefinition loadDefinition(Database &database);
void saveDefinition(Database &database, const FileDefinition &definition);

// Counts of indexes are kept as 8 little-endian bytes each.
Bytes packCounts(const std::vector<uint64_t> &counts);
std::vector<uint64_t> unpackCounts(ByteView bytes);

}  // namespace vantrel::embedded

#endif
