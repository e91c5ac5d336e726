#include "engine/translation.h"

namespace vantrel {

namespace {

constexpr uint16_t noEngineType = 0xFFFF;

constexpr uint16_t engineTypes[] = {
    0,             // Char
    11,            // ZString
    1,             // Integer
    14,            // Unsigned Binary
    2,             // Float
    15,            // Autoincrement
    3,             // Date
    17,            // NumericSTS
    4,             // Time
    18,            // NumericSA
    5,             // Decimal
    19,            // Currency
    6,             // Money
    20,            // Timestamp
    7,             // Logical
    25,            // WString
    8,             // Numeric
    26,            // WZString
    9,             // BFloat
    27,            // GUID
    10,            // LString
    255,           // Null Indicator Segment
    noEngineType,  // Legacy String
    noEngineType,  // Legacy Binary
    32,            // AutoTimestamp
    21,            // CLOB
    34,            // Timestamp2
    16,            // Bit
    28,            // NumericSLB
    29,            // NumericSLS
    31,            // NumericSTB
};
constexpr uint32_t dataTypeCount = sizeof engineTypes / sizeof engineTypes[0];
static_assert(dataTypeCount == VANTREL_DATA_TYPE_NUMERIC_STB + 1);

}  // namespace

VantrelStatus setLockBias(uint32_t *operation, VantrelLockMode lockMode) {
    if (operation == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (lockMode < VANTREL_LOCK_MODE_NONE || lockMode > VANTREL_LOCK_MODE_MULTIPLE_NO_WAIT)
        return VANTREL_STATUS_INVALID_OPTION;
    *operation += 100 * static_cast<uint32_t>(lockMode);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus setDataType(uint16_t *engineType, VantrelDataType dataType) {
    if (engineType == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(dataType) >= dataTypeCount || engineTypes[dataType] == noEngineType)
        return VANTREL_STATUS_INVALID_OPTION;
    *engineType = engineTypes[dataType];
    return VANTREL_STATUS_NO_ERROR;
}

bool dataTypeOfEngineType(uint16_t engineType, VantrelDataType *dataType) {
    if (engineType == noEngineType)
        return false;
    for (uint32_t type = 0; type < dataTypeCount; ++type) {
        if (engineTypes[type] == engineType) {
            *dataType = static_cast<VantrelDataType>(type);
            return true;
        }
    }
    return false;
}

bool indexIsOutOfRange(VantrelIndex index) {
    bool isSystemIndex = index == VANTREL_INDEX_SYSTEM_VERSION_2 || index == VANTREL_INDEX_SYSTEM;
    return !isSystemIndex && (index < VANTREL_INDEX_NONE || index > VANTREL_INDEX_MAXIMUM);
}

}  // namespace vantrel
