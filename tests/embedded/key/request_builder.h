#ifndef VANTREL_TESTS_EMBEDDED_KEY_REQUEST_BUILDER_H
#define VANTREL_TESTS_EMBEDDED_KEY_REQUEST_BUILDER_H

#include <cstdint>

#include "embedded/key/specification.h"
#include "embedded/status_error.h"

// Requests, field by field, and what came of them.

struct FileFields {
    uint16_t recordLength = 100;
    uint16_t pageSize = 4096;
    uint16_t flags = 0;
    uint16_t indexCount = 0;
    uint16_t versionCode = 0;
    uint8_t duplicatePointers = 0;
    uint8_t pageCompression = 0;
    uint16_t pages = 0;
};

struct SegmentFields {
    uint16_t position = 1;
    uint16_t length = 4;
    uint16_t flags = 0x0100;
    uint16_t type = 0;
    uint8_t nullValue = 0;
    uint16_t index = 0;
    uint8_t collationNumber = 0;
};

// Fields that requests leave alone hold 0xEE.
vantrel::embedded::Bytes fileBytes(const FileFields &fields);
vantrel::embedded::Bytes segmentBytes(const SegmentFields &fields);

// A block with a table that sorts everything backwards from the byte given, and one with a name alone.
vantrel::embedded::Bytes tableBlock(vantrel::embedded::ByteView name, uint8_t from = 255);
vantrel::embedded::Bytes nameBlock(vantrel::embedded::ByteView name);

// The status that the call throws, or 0.
template <class Call>
int32_t statusOf(Call call) {
    try {
        call();
    } catch (const vantrel::embedded::StatusError &error) {
        return error.status;
    }
    return 0;
}

int32_t createStatus(vantrel::embedded::ByteView request);
int32_t indexStatus(vantrel::embedded::ByteView request, const vantrel::embedded::FileDefinition &file);

// A create request for one index in a file of the fields given; the index count is set.
vantrel::embedded::Bytes requestWith(const SegmentFields &segment, FileFields file = {});

// Every field of two definitions, collations by name, table and identity in the file.
void expectEqual(const vantrel::embedded::FileDefinition &actual,
                 const vantrel::embedded::FileDefinition &expected);

#endif
