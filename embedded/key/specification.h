#ifndef VANTREL_EMBEDDED_KEY_SPECIFICATION_H
#define VANTREL_EMBEDDED_KEY_SPECIFICATION_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "embedded/key/collation.h"
#include "embedded/key/definition.h"

// Between the bytes of requests and replies and the definitions of files and indexes. A request that cannot
// be accepted is a thrown StatusError; the order of the checks is in docs/keys.md.

namespace vantrel::embedded {

constexpr size_t maximumIndexCount = 119;
constexpr size_t maximumSegmentCount = 420;  // in a file
constexpr size_t maximumKeyLength = 1024;
constexpr size_t maximumReplyLength = 65535;

// Bits of FileDefinition::fileFlags.
namespace fileFlag {
constexpr uint16_t variableLength = 0x0001;
constexpr uint16_t blankTruncation = 0x0002;
constexpr uint16_t preallocation = 0x0004;
constexpr uint16_t recordCompression = 0x0008;
constexpr uint16_t keyOnly = 0x0010;
constexpr uint16_t balancedIndexes = 0x0020;
constexpr uint16_t freeSpaceThreshold = 0x00C0;
constexpr uint16_t duplicatePointers = 0x0100;
constexpr uint16_t systemData = 0x0200;
constexpr uint16_t variableTails = 0x0800;
constexpr uint16_t noSystemData = 0x1000;  // with systemData
constexpr uint16_t pageCompression = 0x2000;
constexpr uint16_t systemDataVersion2 = 0x4000;  // with systemData
}  // namespace fileFlag

struct FileDefinition {
    uint16_t recordLength = 0;  // of the fixed part
    uint16_t pageSize = 4096;
    uint16_t fileFlags = 0;
    uint16_t versionCode = 0;
    uint8_t duplicatePointers = 0;
    uint8_t pageCompression = 0;
    uint16_t preallocatedPages = 0;
    std::vector<IndexDefinition> indexes;  // ascending by number
    // Over the times of the records, if the file keeps them: no reply counts or shows them.
    std::vector<IndexDefinition> systemIndexes;
    CollationList collations;  // registered in the file; they outlive the indexes that brought them
};

// An index that is to be added to a file.
struct IndexRequest {
    IndexDefinition index;        // the number is 0; the caller gives it one
    CollationPointer registered;  // to be appended to the file's collations, or null
};

// Understands a create request: 22, 24, 28, 26, 6 (only a statistics reply numbers its indexes), 27, 29, 45,
// 49, 48, 136. Indexes of an ordinary request are numbered from 0.
FileDefinition parseCreateRequest(ByteView request);

// The system indexes that an ordinary request asks for: the creation time where its flags do, or say nothing
// and no unique index exists, and the update time with version 2.
std::vector<IndexDefinition> systemIndexesFor(const FileDefinition &file);
// Those of the file that a marked reply tells of.
std::vector<IndexDefinition> systemIndexesIn(uint8_t bits);

// Understands the request for one more index of a file; the statuses are those above.
IndexRequest parseIndexRequest(ByteView request, const FileDefinition &file);

size_t segmentCountOf(const FileDefinition &file);

// The length of the file's statistics reply.
size_t replyLength(const FileDefinition &file);

// The definition as a statistics reply, which is also a create request for an equal file. There is one unique
// count for each index, in order; missing ones are 0. At most maximumReplyLength bytes.
Bytes statisticsReply(const FileDefinition &file, uint64_t recordCount, uint16_t unusedPages,
                      std::span<const uint64_t> uniqueCounts);

}  // namespace vantrel::embedded

#endif
