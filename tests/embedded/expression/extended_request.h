#ifndef VANTREL_TESTS_EMBEDDED_EXPRESSION_EXTENDED_REQUEST_H
#define VANTREL_TESTS_EMBEDDED_EXPRESSION_EXTENDED_REQUEST_H

#include <cstdint>
#include <string>
#include <vector>

// Requests of extended operations, field by field.

namespace vantrel::test {

constexpr uint8_t equalTo = 1, greaterThan = 2, lessThan = 3, notEqualTo = 4, atLeast = 5, atMost = 6,
                  patternFlag = 7;
constexpr uint8_t blockFlag = 0x08, defaultCollationFlag = 0x20, fieldFlag = 0x40, caseFlag = 0x80;
constexpr uint8_t joinAnd = 1, joinOr = 2;

struct TermFields {
    uint8_t type = 14;
    uint16_t length = 1;
    uint16_t offset = 0;
    uint8_t flags = equalTo;
    std::string comparand;
    uint8_t connector = 0;
    std::string block;
};

struct EntryFields {
    uint16_t length;
    uint16_t offset;
};

struct RequestFields {
    std::string signature = "FI";
    uint16_t rejectLimit = 0;
    std::vector<TermFields> terms;
    uint16_t recordLimit = 100;
    std::vector<EntryFields> entries;

    std::string bytes() const;
};

std::string termBytes(const TermFields &term);

// The comparands of a pattern and of another field, and the blocks behind a term.
std::string patternComparand(uint8_t kind, const std::string &pattern);
std::string fieldComparand(uint16_t offset);
std::string shortNameBlock(const std::string &name);
std::string collationBlock(const std::string &name);
std::string codePageBlock(const std::string &name);

// The entries of an aggregate or function, whose code is two letters.
std::vector<EntryFields> aggregateEntries(uint16_t type, const char *code, EntryFields field);
std::vector<EntryFields> functionEntries(uint16_t type, const char *code, EntryFields field);
std::vector<EntryFields> functionEntries(uint16_t type, const char *code, EntryFields field, int16_t places);

}  // namespace vantrel::test

#endif
