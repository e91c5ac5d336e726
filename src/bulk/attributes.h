#ifndef VANTREL_BULK_ATTRIBUTES_H
#define VANTREL_BULK_ATTRIBUTES_H

#include <cstdint>

#include "bulk/filter.h"
#include "vantrel.h"

namespace vantrel {

inline constexpr uint32_t filterLimit = 128;
inline constexpr uint32_t entryLimit = 8202;
inline constexpr uint32_t recordCountLimit = 25804;

// Where a bulk operation starts: two letters.
inline constexpr char startAtCurrentRecord[] = "UC";
inline constexpr char skipCurrentRecord[] = "EG";
inline constexpr char startAtFirst[] = "FI";
inline constexpr char startAtLast[] = "LA";

// What retrieving and deleting have in common.
struct BulkAttributes {
    uint8_t lastStatus[4];
    uint8_t signature[2];
    uint8_t maximumRejectCount[2];
    uint8_t filterCount[2];
    uint8_t maximumRecordCount[2];
    uint8_t entryCount[2];
    FilterSlot filters[filterLimit];
};
static_assert(sizeof(BulkAttributes) == 14 + filterLimit * sizeof(FilterSlot));

void setSignature(BulkAttributes *attributes, const char *signature);

}  // namespace vantrel

struct VantrelBulkDeleteAttributes : vantrel::BulkAttributes {};
static_assert(sizeof(VantrelBulkDeleteAttributes) == sizeof(vantrel::BulkAttributes));

struct VantrelBulkRetrieveAttributes : vantrel::BulkAttributes {
    // As the engine takes them: a length and an offset each.
    uint8_t entries[vantrel::entryLimit][4];
    uint8_t extractedLength[4];
};
static_assert(sizeof(VantrelBulkRetrieveAttributes) == sizeof(vantrel::BulkAttributes) + 32812);

#endif
