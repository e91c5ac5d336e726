#include <cstring>

#include "embedded/key/specification.h"
#include "embedded/key/specification_collations.h"
#include "embedded/key/specification_layout.h"

namespace vantrel::embedded {

namespace {

// The collations that no index defines any more.
CollationList looseCollations(const FileDefinition &file) {
    CollationList loose = file.collations;
    for (const IndexDefinition &index : file.indexes)
        if (!index.collationBlock.empty() && blockDefinesCollation(index.collationBlock))
            loose.at(collationNumberInReply(index) - size_t{1}) = nullptr;
    std::erase(loose, nullptr);
    return loose;
}

void writeFileSpecification(const FileDefinition &file, uint64_t recordCount, uint16_t unusedPages,
                            uint8_t *fields) {
    storeU16(fields + fileField::recordLength, file.recordLength);
    storeU16(fields + fileField::pageSize, file.pageSize);
    storeU16(fields + fileField::flags, file.fileFlags);
    storeU16(fields + fileField::keptPreallocation, file.preallocatedPages);
    storeU64(fields + fileField::recordCount, recordCount);
    storeU16(fields + fileField::indexCount, static_cast<uint16_t>(file.indexes.size()));
    storeU16(fields + fileField::versionCode, file.versionCode);
    fields[fileField::duplicatePointers] = file.duplicatePointers;
    fields[fileField::pageCompression] = file.pageCompression;
    storeU16(fields + fileField::pages, unusedPages);
    memcpy(fields + fileField::mark, replyMark.data(), replyMark.size());
    // Their blocks would not fit the reply if they were more than 255.
    fields[fileField::collationCount] = static_cast<uint8_t>(file.collations.size());
    for (const IndexDefinition &index : file.systemIndexes)
        fields[fileField::systemIndexes] |=
            index.source == KeySource::createTime ? systemIndexBit::createTime : systemIndexBit::updateTime;
}

void writeSegment(const KeySegment &segment, uint8_t indexNumber, uint64_t uniqueCount, uint8_t *fields) {
    memcpy(fields, segment.specification.data(), segmentSize);
    storeU64(fields + segmentField::uniqueCount, uniqueCount);
    storeU16(fields + segmentField::index, indexNumber);
}

}  // namespace

size_t segmentCountOf(const FileDefinition &file) {
    size_t count = 0;
    for (const IndexDefinition &index : file.indexes)
        count += index.segments.size();
    return count;
}

size_t replyLength(const FileDefinition &file) {
    size_t blocks = looseCollations(file).size();
    for (const IndexDefinition &index : file.indexes)
        blocks += index.collationBlock.empty() ? 0 : 1;
    return fileSpecificationSize + segmentCountOf(file) * segmentSize + blocks * collationBlockSize;
}

Bytes statisticsReply(const FileDefinition &file, uint64_t recordCount, uint16_t unusedPages,
                      std::span<const uint64_t> uniqueCounts) {
    Bytes reply(fileSpecificationSize + segmentCountOf(file) * segmentSize, '\0');
    uint8_t *fields = reinterpret_cast<uint8_t *>(reply.data());
    writeFileSpecification(file, recordCount, unusedPages, fields);
    fields += fileSpecificationSize;
    for (size_t at = 0; at < file.indexes.size(); ++at) {
        const IndexDefinition &index = file.indexes[at];
        for (const KeySegment &segment : index.segments) {
            writeSegment(segment, index.number, at < uniqueCounts.size() ? uniqueCounts[at] : 0, fields);
            fields += segmentSize;
        }
    }
    for (const IndexDefinition &index : file.indexes)
        reply.append(index.collationBlock);
    for (const CollationPointer &collation : looseCollations(file))
        reply.append(blockFromCollation(*collation));
    return reply;
}

}  // namespace vantrel::embedded
