#include "embedded/key/specification_collations.h"

#include <algorithm>

#include "embedded/key/encoding.h"
#include "embedded/key/specification_layout.h"
#include "embedded/status_error.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// Reads the block at the position, which moves behind it.
Bytes takeBlock(ByteView request, size_t &at) {
    const ByteView block = request.substr(at, collationBlockSize);
    checkCollationBlock(block);
    at += collationBlockSize;
    return Bytes(block);
}

void registerCollation(const CollationPointer &collation, CollationList &registered) {
    const auto known = std::find_if(registered.begin(), registered.end(), [&](const auto &candidate) {
        return candidate->name == collation->name;
    });
    if (known == registered.end())
        registered.push_back(collation);
    else
        require((*known)->table == collation->table,
                VANTREL_STATUS_INVALID_ALTERNATE_COLLATING_SEQUENCE_DEFINITION);
}

CollationPointer collationOf(const KeySegment &segment, const CollationPointer &named,
                             const CollationList &registered) {
    switch (collationModeOf(segment)) {
        case collationMode::caseInsensitive:
            return caseInsensitiveCollation();
        case collationMode::numbered:
            return findCollation(registered, segment.specification[segmentField::collationNumber]);
        case collationMode::named:
            return named;
        default:
            return nullptr;
    }
}

// A segment that names its collation gets the number of it, by which a reply tells the file's own collations
// from built-in ones of the same name.
void setCollations(IndexDefinition &index, const CollationPointer &named, const CollationList &registered) {
    for (KeySegment &segment : index.segments) {
        const uint16_t mode = collationModeOf(segment);
        if (mode == collationMode::named)
            segment.specification[segmentField::collationNumber] =
                static_cast<uint8_t>(numberOfCollation(registered, named.get()));
        if (!typeIsText(segment.type))
            continue;
        segment.collation = collationOf(segment, named, registered);
        const bool found =
            segment.collation != nullptr || mode == collationMode::none || mode == collationMode::byDefault;
        require(found, VANTREL_STATUS_ALTERNATE_COLLATING_SEQUENCE_NOT_FOUND);
    }
}

// A marked reply numbers its collations: those of the indexes' own blocks, then the others in further blocks.
CollationList restoreRegistered(ByteView request, size_t at, const std::vector<IndexDefinition> &indexes) {
    constexpr int32_t malformed = VANTREL_STATUS_INVALID_ALTERNATE_COLLATING_SEQUENCE_DEFINITION;
    CollationList registered(bytesOf(request)[fileField::collationCount]);
    for (const IndexDefinition &index : indexes) {
        if (index.collationBlock.empty() || !blockDefinesCollation(index.collationBlock))
            continue;
        const size_t number = collationNumberInReply(index);
        require(number != 0 && number <= registered.size(), malformed);
        registered[number - 1] = collationFromBlock(index.collationBlock);
    }
    for (CollationPointer &collation : registered) {
        if (collation != nullptr)
            continue;
        const Bytes block = takeBlock(request, at);
        require(blockDefinesCollation(block), malformed);
        collation = collationFromBlock(block);
    }
    return registered;
}

void restoreCollation(IndexDefinition &index, const CollationList &registered) {
    CollationPointer named;
    if (!index.collationBlock.empty()) {
        const uint8_t number = collationNumberInReply(index);
        named = number == 0 ? findBuiltInCollation(nameInBlock(index.collationBlock))
                            : findCollation(registered, number);
    }
    setCollations(index, named, registered);
}

}  // namespace

const KeySegment *namedSegment(const IndexDefinition &index) {
    for (const KeySegment &segment : index.segments)
        if (collationModeOf(segment) == collationMode::named)
            return &segment;
    return nullptr;
}

uint8_t collationNumberInReply(const IndexDefinition &index) {
    return namedSegment(index)->specification[segmentField::collationNumber];
}

size_t takeBlocks(ByteView request, size_t at, std::vector<IndexDefinition> &indexes) {
    for (IndexDefinition &index : indexes)
        if (namedSegment(index) != nullptr)
            index.collationBlock = takeBlock(request, at);
    return at;
}

void resolveCollations(IndexDefinition &index, CollationList &registered) {
    CollationPointer named;
    if (!index.collationBlock.empty()) {
        if (blockDefinesCollation(index.collationBlock))
            registerCollation(collationFromBlock(index.collationBlock), registered);
        named = findCollation(registered, nameInBlock(index.collationBlock));
    }
    setCollations(index, named, registered);
}

void restoreCollations(ByteView request, size_t at, FileDefinition &file) {
    file.collations = restoreRegistered(request, at, file.indexes);
    for (IndexDefinition &index : file.indexes)
        restoreCollation(index, file.collations);
}

}  // namespace vantrel::embedded
