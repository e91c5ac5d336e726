#include "information/getters.h"

using namespace vantrel;

int32_t VantrelFileInformationGetSystemData(VantrelFileInformation *information) {
    return getNumber(information, &SystemDataReply::systemData);
}

int32_t VantrelFileInformationGetSystemIndex(VantrelFileInformation *information) {
    return getNumber(information, &SystemDataReply::systemIndex);
}

int32_t VantrelFileInformationGetLoggable(VantrelFileInformation *information) {
    return getFlag(information, &SystemDataReply::loggable);
}

VantrelIndex VantrelFileInformationGetLogIndex(VantrelFileInformation *information) {
    return getNumber(information, &SystemDataReply::logIndex, noEnumerationValue);
}

int32_t VantrelFileInformationGetSystemIndexSize(VantrelFileInformation *information) {
    return getNumber(information, &SystemDataReply::systemIndexSize);
}

int32_t VantrelFileInformationGetSystemIndexVersion(VantrelFileInformation *information) {
    return getNumber(information, &SystemDataReply::systemIndexVersion);
}
