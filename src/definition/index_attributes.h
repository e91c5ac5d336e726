#ifndef VANTREL_DEFINITION_INDEX_ATTRIBUTES_H
#define VANTREL_DEFINITION_INDEX_ATTRIBUTES_H

#include <cstdint>

#include "definition/key_segment.h"
#include "vantrel.h"

namespace vantrel {

inline constexpr int32_t segmentMaximum = 420;
inline constexpr uint32_t acsBlockSize = 265;

}  // namespace vantrel

struct VantrelIndexAttributes {
    vantrel::KeySpecification segments[vantrel::segmentMaximum];
    uint8_t segmentCount[4];
    uint8_t indexGiven[2];
    uint8_t index[4];
    uint8_t duplicateMode[4];
    uint8_t modifiable[2];
    uint8_t acsBlock[vantrel::acsBlockSize];  // sent behind the segments where its first byte is not zero
    uint8_t acsMode[4];
    uint8_t acsNumber[4];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelIndexAttributes) == 10373);

namespace vantrel {

// Writes the index into a request: stamps the index-wide settings onto the stored segments, copies these and
// the ACS block to the output, adds their size to the data length, and turns the key number into the index
// number wanted, if any. A data length above the capacity, or more segments than the table has, give
// VANTREL_STATUS_DATA_LENGTH_ERROR.
//
// The engine expects each segment to be counted twice in the data length. writeIndexDefinition counts them
// once and leaves the other time to its caller; fileIndexCreateHelper counts both.
VantrelStatus writeIndexDefinition(VantrelIndexAttributes *attributes, uint8_t *output, uint32_t capacity,
                                   uint32_t *dataLength, int32_t *keyNumber);
VantrelStatus fileIndexCreateHelper(VantrelIndexAttributes *attributes, uint8_t *output, uint32_t capacity,
                                    uint32_t *dataLength, int32_t *keyNumber);

}  // namespace vantrel

#endif
