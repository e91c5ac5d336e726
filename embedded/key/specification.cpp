#include "embedded/key/specification.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "embedded/key/encoding.h"
#include "embedded/key/specification_collations.h"
#include "embedded/key/specification_layout.h"
#include "embedded/status_error.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr std::array<uint16_t, 9> pageSizes = {512, 1024, 1536, 2048, 3072, 3584, 4096, 8192, 16384};
constexpr uint8_t highestIndexNumber = 118;

bool requestIsMarked(ByteView request) {
    return memcmp(request.data() + fileField::mark, replyMark.data(), replyMark.size()) == 0;
}

// Fields that count only together with their flag are dropped without it.
FileDefinition readFileSpecification(ByteView request) {
    require(request.size() >= fileSpecificationSize, VANTREL_STATUS_DATA_LENGTH_ERROR);
    const uint8_t *fields = bytesOf(request);
    FileDefinition file;
    file.recordLength = loadU16(fields + fileField::recordLength);
    file.pageSize = loadU16(fields + fileField::pageSize);
    file.fileFlags = loadU16(fields + fileField::flags);
    file.versionCode = loadU16(fields + fileField::versionCode);
    file.pageCompression = fields[fileField::pageCompression];
    if ((file.fileFlags & fileFlag::duplicatePointers) != 0)
        file.duplicatePointers = fields[fileField::duplicatePointers];
    const size_t pages = requestIsMarked(request) ? fileField::keptPreallocation : fileField::pages;
    if ((file.fileFlags & fileFlag::preallocation) != 0)
        file.preallocatedPages = loadU16(fields + pages);
    const bool knownPageSize =
        std::find(pageSizes.begin(), pageSizes.end(), file.pageSize) != pageSizes.end();
    require(knownPageSize, VANTREL_STATUS_PAGE_SIZE_ERROR);
    const bool variable = (file.fileFlags & fileFlag::variableLength) != 0;
    require(file.recordLength != 0 || variable, VANTREL_STATUS_INVALID_RECORD_LENGTH);
    return file;
}

// The segments of one index: only the flag in each of them tells whether another one follows.
struct Chain {
    size_t start;
    size_t segmentCount;
};

std::vector<Chain> findChains(ByteView request, size_t start, size_t indexCount, size_t segmentLimit) {
    std::vector<Chain> chains;
    size_t segmentCount = 0;
    while (chains.size() < indexCount) {
        Chain chain = {start, 0};
        bool continues = true;
        while (continues) {
            require(++segmentCount <= segmentLimit, VANTREL_STATUS_NUMBER_OF_INDEXES);
            require(start + segmentSize <= request.size(), chain.segmentCount == 0
                                                               ? VANTREL_STATUS_DATA_LENGTH_ERROR
                                                               : VANTREL_STATUS_INVALID_KEY_LENGTH);
            const uint16_t flags = loadU16(bytesOf(request) + start + segmentField::flags);
            continues = (flags & keyFlag::continues) != 0;
            start += segmentSize;
            ++chain.segmentCount;
        }
        chains.push_back(chain);
    }
    return chains;
}

size_t endOf(const std::vector<Chain> &chains, size_t start) {
    return chains.empty() ? start : chains.back().start + chains.back().segmentCount * segmentSize;
}

KeyType typeFrom(const uint8_t *fields, uint16_t flags) {
    if ((flags & keyFlag::extendedType) != 0)
        return static_cast<KeyType>(loadU16(fields + segmentField::type));
    return (flags & keyFlag::binary) != 0 ? KeyType::legacyBinary : KeyType::legacyString;
}

// The codes of the legacy types are the engine's own; no request may use them.
bool typeMayStand(const KeySegment &segment) {
    const bool legacy = segment.type == KeyType::legacyString || segment.type == KeyType::legacyBinary;
    const bool extended = (flagsOf(segment) & keyFlag::extendedType) != 0;
    return typeIsKnown(segment.type) && legacy != extended;
}

bool flagsAreConsistent(uint16_t flags) {
    constexpr uint16_t bothNullModes = keyFlag::nullIfAll | keyFlag::nullIfAny;
    const bool repeatsWithoutDuplicates =
        (flags & keyFlag::repeatingDuplicates) != 0 && (flags & keyFlag::duplicates) == 0;
    if (repeatsWithoutDuplicates || (flags & bothNullModes) == bothNullModes)
        return false;
    switch (flags & collationMode::bits) {
        case collationMode::none:
        case collationMode::byDefault:
        case collationMode::caseInsensitive:
        case collationMode::numbered:
        case collationMode::named:
            return true;
        default:
            return false;
    }
}

KeySegment readSegment(const uint8_t *fields) {
    const uint16_t flags = loadU16(fields + segmentField::flags);
    KeySegment segment;
    segment.offset = static_cast<uint16_t>(loadU16(fields + segmentField::position) - 1);
    segment.length = loadU16(fields + segmentField::length);
    segment.type = typeFrom(fields, flags);
    segment.descending = (flags & keyFlag::descending) != 0;
    segment.nullValue = fields[segmentField::nullValue];
    segment.nullIfAll = (flags & keyFlag::nullIfAll) != 0;
    segment.nullIfAny = (flags & keyFlag::nullIfAny) != 0;
    memcpy(segment.specification.data(), fields, segmentSize);
    storeU64(segment.specification.data() + segmentField::uniqueCount, 0);
    storeU16(segment.specification.data() + segmentField::index, 0);
    return segment;
}

// Position 0 has become offset 65535, which lies outside of any record.
void checkSegment(const KeySegment &segment, uint32_t keyLengthBefore, uint16_t recordLength) {
    require(segment.offset + segment.length <= recordLength, VANTREL_STATUS_INVALID_KEY_POSITION);
    const uint32_t keyLength = keyLengthBefore + segment.length;
    require(segment.length != 0 && keyLength <= maximumKeyLength, VANTREL_STATUS_INVALID_KEY_LENGTH);
    require(flagsAreConsistent(flagsOf(segment)), VANTREL_STATUS_INCONSISTENT_KEY_FLAGS);
    require(typeMayStand(segment), VANTREL_STATUS_KEY_TYPE_ERROR);
    require(segmentLengthIsLegal(segment.type, segment.length), VANTREL_STATUS_INVALID_KEY_LENGTH);
}

IndexDefinition readIndex(ByteView request, const Chain &chain, uint16_t recordLength) {
    constexpr uint16_t flagsOfIndex =
        keyFlag::duplicates | keyFlag::modifiable | keyFlag::repeatingDuplicates;
    IndexDefinition index;
    const uint8_t *fields = bytesOf(request) + chain.start;
    const uint16_t firstFlags = loadU16(fields + segmentField::flags);
    index.unique = (firstFlags & keyFlag::duplicates) == 0;
    index.modifiable = (firstFlags & keyFlag::modifiable) != 0;
    for (size_t at = 0; at < chain.segmentCount; ++at, fields += segmentSize) {
        KeySegment segment = readSegment(fields);
        checkSegment(segment, index.keyLength, recordLength);
        const bool agrees = ((flagsOf(segment) ^ firstFlags) & flagsOfIndex) == 0;
        require(agrees, VANTREL_STATUS_INCONSISTENT_KEY_FLAGS);
        index.keyLength += segment.length;
        index.segments.push_back(std::move(segment));
    }
    return index;
}

// Only in a marked reply; other requests may carry left-over numbers.
uint8_t readIndexNumber(ByteView request, const Chain &chain, const std::vector<IndexDefinition> &before) {
    const uint16_t number = loadU16(bytesOf(request) + chain.start + segmentField::index);
    const bool ascending = before.empty() || number > before.back().number;
    require(number <= highestIndexNumber && ascending, VANTREL_STATUS_INVALID_INDEX_NUMBER);
    return static_cast<uint8_t>(number);
}

}  // namespace

FileDefinition parseCreateRequest(ByteView request) {
    FileDefinition file = readFileSpecification(request);
    const size_t indexCount = loadU16(bytesOf(request) + fileField::indexCount);
    require(indexCount <= maximumIndexCount, VANTREL_STATUS_NUMBER_OF_INDEXES);
    const auto chains = findChains(request, fileSpecificationSize, indexCount, maximumSegmentCount);
    const bool marked = requestIsMarked(request);
    for (const Chain &chain : chains) {
        const uint8_t number = marked ? readIndexNumber(request, chain, file.indexes)
                                      : static_cast<uint8_t>(file.indexes.size());
        file.indexes.push_back(readIndex(request, chain, file.recordLength));
        file.indexes.back().number = number;
    }
    const size_t behindBlocks = takeBlocks(request, endOf(chains, fileSpecificationSize), file.indexes);
    if (marked)
        restoreCollations(request, behindBlocks, file);
    else
        for (IndexDefinition &index : file.indexes)
            resolveCollations(index, file.collations);
    file.systemIndexes =
        marked ? systemIndexesIn(bytesOf(request)[fileField::systemIndexes]) : systemIndexesFor(file);
    require(replyLength(file) <= maximumReplyLength, VANTREL_STATUS_NUMBER_OF_INDEXES);
    return file;
}

IndexRequest parseIndexRequest(ByteView request, const FileDefinition &file) {
    require(file.indexes.size() < maximumIndexCount, VANTREL_STATUS_NUMBER_OF_INDEXES);
    const auto chains = findChains(request, 0, 1, maximumSegmentCount - segmentCountOf(file));
    std::vector<IndexDefinition> indexes = {readIndex(request, chains.front(), file.recordLength)};
    takeBlocks(request, endOf(chains, 0), indexes);
    FileDefinition grown = file;
    resolveCollations(indexes.front(), grown.collations);
    grown.indexes.push_back(indexes.front());
    require(replyLength(grown) <= maximumReplyLength, VANTREL_STATUS_NUMBER_OF_INDEXES);
    const bool registers = grown.collations.size() > file.collations.size();
    return {std::move(indexes.front()), registers ? grown.collations.back() : nullptr};
}

}  // namespace vantrel::embedded
