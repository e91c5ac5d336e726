#include "embedded/expression/extended_request.h"

#include <algorithm>

namespace vantrel::test {

namespace {

std::string word(size_t value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

std::string byte(uint8_t value) {
    return std::string(1, static_cast<char>(value));
}

std::string padded(const std::string &name, size_t size) {
    std::string field(size, '\0');
    field.replace(0, std::min(size, name.size()), name, 0, size);
    return field;
}

EntryFields operationEntry(uint16_t type, const char *code) {
    return {type, static_cast<uint16_t>(static_cast<uint8_t>(code[0]) | static_cast<uint8_t>(code[1]) << 8)};
}

}  // namespace

std::string termBytes(const TermFields &term) {
    return byte(term.type) + word(term.length) + word(term.offset) + byte(term.flags) + byte(term.connector) +
           term.comparand + term.block;
}

std::string RequestFields::bytes() const {
    std::string body = signature + word(rejectLimit) + word(terms.size());
    for (const TermFields &term : terms)
        body += termBytes(term);
    body += word(recordLimit) + word(entries.size());
    for (const EntryFields &entry : entries)
        body += word(entry.length) + word(entry.offset);
    return word(body.size() + 2) + body;
}

std::string patternComparand(uint8_t kind, const std::string &pattern) {
    return byte(kind) + word(pattern.size() + 1) + pattern + '\0';
}

std::string fieldComparand(uint16_t offset) {
    return word(offset);
}

std::string shortNameBlock(const std::string &name) {
    return byte(0xAC) + padded(name, 8);
}

std::string collationBlock(const std::string &name) {
    return byte(0xAE) + padded(name, 16);
}

std::string codePageBlock(const std::string &name) {
    return byte(0xAB) + padded(name, 16);
}

std::vector<EntryFields> aggregateEntries(uint16_t type, const char *code, EntryFields field) {
    return {{0xFF00, 0xFFF9}, operationEntry(type, code), field};
}

std::vector<EntryFields> functionEntries(uint16_t type, const char *code, EntryFields field) {
    return {{0xFF00, 0xFFFA}, operationEntry(type, code), field};
}

std::vector<EntryFields> functionEntries(uint16_t type, const char *code, EntryFields field, int16_t places) {
    std::vector<EntryFields> entries = functionEntries(type, code, field);
    entries.push_back({0, static_cast<uint16_t>(places)});
    return entries;
}

}  // namespace vantrel::test
