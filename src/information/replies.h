#ifndef VANTREL_INFORMATION_REPLIES_H
#define VANTREL_INFORMATION_REPLIES_H

#include <cstdint>

#include "definition/file_specification.h"
#include "information/file_information.h"

// The layouts of the replies kept in a file information record, up to their fixed end.

namespace vantrel {

struct DuplicateConflictReply {
    uint8_t cursorPosition[8];
    uint8_t index[2];
};
static_assert(sizeof(DuplicateConflictReply) == sizeof(VantrelFileInformation::duplicateConflict));

struct FileUsageReply {
    uint8_t identifier[4];
    uint8_t handleCount[4];
    uint8_t openTimestamp[4];
    uint8_t usageCount[4];
    uint8_t flags[2];
    uint8_t reserved[2];
};
static_assert(sizeof(FileUsageReply) == sizeof(VantrelFileInformation::fileUsage));

struct GatewayReply {
    uint8_t majorVersion[2];
    uint8_t minorVersion[2];
    uint8_t patchLevel[2];
    uint8_t platform[2];
    uint8_t name[64];
};
static_assert(sizeof(GatewayReply) == sizeof(VantrelFileInformation::gateway));

struct LockOwnerReply {
    uint8_t reserved[12];
    uint8_t serviceAgentIdentifier[2];
    uint8_t clientIdentifier[2];
    uint8_t flags[2];
    uint8_t reservedBehindFlags[2];
    uint8_t timeInTransaction[4];
    uint8_t index[4];
    uint8_t transactionLevel[4];
    uint8_t reservedBeforeName[8];
    uint8_t name[64];
};
static_assert(sizeof(LockOwnerReply) == sizeof(VantrelFileInformation::lockOwner));

struct ReferentialIntegrityReply {
    uint8_t fileName[255];
    uint8_t operationCode[4];
    uint8_t cursorPosition[8];
};
static_assert(sizeof(ReferentialIntegrityReply) == sizeof(VantrelFileInformation::referentialIntegrity));

// Followed by five names back to back, as long as the lengths say.
struct SecurityReply {
    uint8_t handleFlags[2];
    uint8_t reserved[2];
    uint8_t currentDatabaseFlags[2];
    uint8_t reservedBeforePermissions[2];
    uint8_t permissions[4];
    uint8_t nameLengths[5][2];
};
static_assert(sizeof(SecurityReply) == 22);

// Followed by the entries, each a four-byte length and as many bytes of file name.
struct SegmentFilesReply {
    uint8_t segmentCount[4];
    uint8_t entryCount[4];
};
static_assert(sizeof(SegmentFilesReply) == 8);

struct SystemDataReply {
    uint8_t systemData;
    uint8_t systemIndex;
    uint8_t loggable;
    uint8_t logIndex;
    uint8_t systemIndexSize[2];
    uint8_t systemIndexVersion[2];
};
static_assert(sizeof(SystemDataReply) == sizeof(VantrelFileInformation::systemData));

struct StatisticsKey {
    uint8_t isSegmented;
};

// Where each reply lies in the record.
template <class Reply>
inline constexpr auto areaOf = nullptr;
template <>
inline constexpr auto areaOf<FileSpecification> = &VantrelFileInformation::statistics;
template <>
inline constexpr auto areaOf<DuplicateConflictReply> = &VantrelFileInformation::duplicateConflict;
template <>
inline constexpr auto areaOf<FileUsageReply> = &VantrelFileInformation::fileUsage;
template <>
inline constexpr auto areaOf<GatewayReply> = &VantrelFileInformation::gateway;
template <>
inline constexpr auto areaOf<LockOwnerReply> = &VantrelFileInformation::lockOwner;
template <>
inline constexpr auto areaOf<ReferentialIntegrityReply> = &VantrelFileInformation::referentialIntegrity;
template <>
inline constexpr auto areaOf<SecurityReply> = &VantrelFileInformation::security;
template <>
inline constexpr auto areaOf<SegmentFilesReply> = &VantrelFileInformation::segmentFiles;
template <>
inline constexpr auto areaOf<SystemDataReply> = &VantrelFileInformation::systemData;
template <>
inline constexpr auto areaOf<StatisticsKey> = &VantrelFileInformation::statisticsKey;

}  // namespace vantrel

#endif
