#ifndef VANTREL_CLIENT_VERSION_H
#define VANTREL_CLIENT_VERSION_H

#include <cstdint>

#include "vantrel.h"

namespace vantrel {

// What the engine tells of one component.
struct VersionEntry {
    uint8_t versionNumber[2];
    uint8_t revisionNumber[2];
    uint8_t typeCharacter;
};

}  // namespace vantrel

// The engine is offered the whole record and fills the entries.
struct VantrelVersion {
    vantrel::VersionEntry client;
    vantrel::VersionEntry local;
    vantrel::VersionEntry remote;
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelVersion) == 19);

#endif
