#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "vantrel.h"

namespace {

using ToString = const char *(*)(int32_t);

// Values count from 0.
void expectTexts(ToString toString, const std::vector<std::string> &texts) {
    auto count = static_cast<int32_t>(texts.size());
    for (int32_t value = 0; value < count; ++value)
        EXPECT_EQ(toString(value), texts[static_cast<size_t>(value)]) << value;
    for (int32_t value : {INT_MIN, -2, -1, count, count + 1, 256, 65536, INT_MAX})
        EXPECT_STREQ(toString(value), "Unknown") << value;
}

TEST(EnumerationText, VersionType) {
    expectTexts(VantrelVersionTypeToString,
                {"None", "Vantrel Engine", "Workgroup Engine", "DOS Workstation", "Client Requester",
                 "Windows Server Engine", "UNIX", "Client engine"});
}

TEST(EnumerationText, FileVersion) {
    expectTexts(VantrelFileVersionToString,
                {"6.0", "6.1", "7.0", "8.0", "9.0", "9.5", "Default", "13.0", "16.0"});
}

TEST(EnumerationText, PageSize) {
    expectTexts(VantrelPageSizeToString,
                {"512", "1024", "1536", "2048", "3072", "3584", "4096", "8192", "16384", "Default"});
}

TEST(EnumerationText, FreeSpaceThreshold) {
    expectTexts(VantrelFreeSpaceThresholdToString, {"10%", "20%", "30%", "Default"});
}

TEST(EnumerationText, SystemDataMode) {
    expectTexts(VantrelSystemDataModeToString, {"Yes", "No", "Default", "Version 2"});
}

TEST(EnumerationText, ACSMode) {
    expectTexts(VantrelACSModeToString, {"None", "Named", "Numbered", "Case Insensitive", "Default"});
}

TEST(EnumerationText, NullKeyMode) {
    expectTexts(VantrelNullKeyModeToString, {"All Segments", "Any Segments", "None"});
}

TEST(EnumerationText, DuplicateMode) {
    expectTexts(VantrelDuplicateModeToString, {"Not Allowed", "Allowed, Nonrepeating", "Allowed, Repeating"});
}

TEST(EnumerationText, PageLockType) {
    expectTexts(VantrelPageLockTypeToString, {"None", "Data page", "Index page", "Variable page"});
}

TEST(EnumerationText, LockMode) {
    expectTexts(VantrelLockModeToString,
                {"None", "Single, wait", "Single, no wait", "Multiple, wait", "Multiple, no wait"});
}

TEST(EnumerationText, OwnerMode) {
    expectTexts(VantrelOwnerModeToString,
                {"None", "No encryption, no read allowed", "No encryption, read allowed",
                 "Encryption, no read allowed", "Encryption, read allowed"});
}

TEST(EnumerationText, EncryptionType) {
    expectTexts(VantrelEncryptionTypeToString,
                {"None", "Traditional Vantrel encryption", "128-bit encryption", "AES-192 encryption",
                 "AES-256 encryption"});
}

TEST(EnumerationText, RecordCompressionMode) {
    expectTexts(VantrelRecordCompressionModeToString, {"None", "Blank truncation", "Run length encoding"});
}

TEST(EnumerationText, VariableLengthRecordsMode) {
    expectTexts(VantrelVariableLengthRecordsModeToString, {"None", "Yes", "Yes, variable allocation tails"});
}

TEST(EnumerationText, SystemField) {
    expectTexts(VantrelSystemFieldToString, {"Create time", "Update time"});
}

TEST(EnumerationText, DataType) {
    expectTexts(VantrelDataTypeToString, {"Char",          "ZString",
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
                                          "NumericSTB"});
}

}  // namespace
