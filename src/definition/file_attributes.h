#ifndef VANTREL_DEFINITION_FILE_ATTRIBUTES_H
#define VANTREL_DEFINITION_FILE_ATTRIBUTES_H

#include <cstdint>

#include "definition/file_specification.h"
#include "vantrel.h"

// A create request, sent as it lies here, without a last status.
struct VantrelFileAttributes {
    vantrel::FileSpecification specification;
    uint8_t indexDefinition[65503];
    uint8_t reserved[8];
};
static_assert(sizeof(VantrelFileAttributes) == 65543);

#endif
