#include <cstdint>

#include "text/unknown.h"
#include "vantrel.h"

using namespace vantrel;

namespace {

// The texts lie in the tables themselves, each as wide as the longest, so that no table needs relocations.
template <uint32_t count, uint32_t width>
const char *textOf(const char (&texts)[count][width], int32_t value) {
    return static_cast<uint32_t>(value) < count ? texts[value] : unknownText;
}

constexpr char versionTypeTexts[][22] = {
    "None",
    "Vantrel Engine",
    "Workgroup Engine",
    "DOS Workstation",
    "Client Requester",
    "Windows Server Engine",
    "UNIX",
    "Client engine",
};
constexpr char fileVersionTexts[][8] = {"6.0", "6.1", "7.0", "8.0", "9.0", "9.5", "Default", "13.0", "16.0"};
constexpr char pageSizeTexts[][8] = {"512",  "1024", "1536", "2048",  "3072",
                                     "3584", "4096", "8192", "16384", "Default"};
constexpr char freeSpaceThresholdTexts[][8] = {"10%", "20%", "30%", "Default"};
constexpr char systemDataModeTexts[][10] = {"Yes", "No", "Default", "Version 2"};
constexpr char acsModeTexts[][17] = {"None", "Named", "Numbered", "Case Insensitive", "Default"};
constexpr char nullKeyModeTexts[][13] = {"All Segments", "Any Segments", "None"};
constexpr char duplicateModeTexts[][22] = {"Not Allowed", "Allowed, Nonrepeating", "Allowed, Repeating"};
constexpr char pageLockTypeTexts[][14] = {"None", "Data page", "Index page", "Variable page"};
constexpr char lockModeTexts[][18] = {"None", "Single, wait", "Single, no wait", "Multiple, wait",
                                      "Multiple, no wait"};
constexpr char ownerModeTexts[][31] = {"None", "No encryption, no read allowed",
                                       "No encryption, read allowed", "Encryption, no read allowed",
                                       "Encryption, read allowed"};
constexpr char encryptionTypeTexts[][31] = {"None", "Traditional Vantrel encryption", "128-bit encryption",
                                            "AES-192 encryption", "AES-256 encryption"};
constexpr char recordCompressionModeTexts[][20] = {"None", "Blank truncation", "Run length encoding"};
constexpr char variableLengthRecordsModeTexts[][31] = {"None", "Yes", "Yes, variable allocation tails"};
constexpr char systemFieldTexts[][12] = {"Create time", "Update time"};
constexpr char dataTypeTexts[][23] = {
    "Char",          "ZString",
    "Integer",       "Unsigned Binary",
    "Float",         "Autoincrement",
    "Date",          "NumericSTS",
    "Time",          "NumericSA",
    "Decimal",       "Currency",
    "Money",         "Timestamp",
    "Logical",       "WString",
    "Numeric",       "WZString",
    "BFloat",        "GUID",
    "LString",       "Null Indicator Segment",
    "Legacy String", "Legacy Binary",
    "AutoTimestamp", "CLOB",
    "Timestamp2",    "Bit",
    "NumericSLB",    "NumericSLS",
    "NumericSTB",
};

}  // namespace

const char *VantrelVersionTypeToString(VantrelVersionType versionType) {
    return textOf(versionTypeTexts, versionType);
}

const char *VantrelFileVersionToString(VantrelFileVersion fileVersion) {
    return textOf(fileVersionTexts, fileVersion);
}

const char *VantrelPageSizeToString(VantrelPageSize pageSize) {
    return textOf(pageSizeTexts, pageSize);
}

const char *VantrelFreeSpaceThresholdToString(VantrelFreeSpaceThreshold freeSpaceThreshold) {
    return textOf(freeSpaceThresholdTexts, freeSpaceThreshold);
}

const char *VantrelSystemDataModeToString(VantrelSystemDataMode systemDataMode) {
    return textOf(systemDataModeTexts, systemDataMode);
}

const char *VantrelACSModeToString(VantrelACSMode acsMode) {
    return textOf(acsModeTexts, acsMode);
}

const char *VantrelNullKeyModeToString(VantrelNullKeyMode nullKeyMode) {
    return textOf(nullKeyModeTexts, nullKeyMode);
}

const char *VantrelDuplicateModeToString(VantrelDuplicateMode duplicateMode) {
    return textOf(duplicateModeTexts, duplicateMode);
}

const char *VantrelPageLockTypeToString(VantrelPageLockType pageLockType) {
    return textOf(pageLockTypeTexts, pageLockType);
}

const char *VantrelLockModeToString(VantrelLockMode lockMode) {
    return textOf(lockModeTexts, lockMode);
}

const char *VantrelOwnerModeToString(VantrelOwnerMode ownerMode) {
    return textOf(ownerModeTexts, ownerMode);
}

const char *VantrelEncryptionTypeToString(VantrelEncryptionType encryptionType) {
    return textOf(encryptionTypeTexts, encryptionType);
}

const char *VantrelRecordCompressionModeToString(VantrelRecordCompressionMode recordCompressionMode) {
    return textOf(recordCompressionModeTexts, recordCompressionMode);
}

const char *VantrelVariableLengthRecordsModeToString(
    VantrelVariableLengthRecordsMode variableLengthRecordsMode) {
    return textOf(variableLengthRecordsModeTexts, variableLengthRecordsMode);
}

const char *VantrelSystemFieldToString(VantrelSystemField systemField) {
    return textOf(systemFieldTexts, systemField);
}

const char *VantrelDataTypeToString(VantrelDataType dataType) {
    return textOf(dataTypeTexts, dataType);
}
