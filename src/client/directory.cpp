#include <algorithm>
#include <cstdlib>

#include "client/request.h"
#include "engine/wide_text.h"

using namespace vantrel;

namespace {

// Drives are counted from 1 by the engine, and its 0 is the current one.
constexpr int32_t keyNumberOfDrive(uint32_t drive) {
    return drive == VANTREL_DRIVE_CURRENT ? 0 : static_cast<int32_t>(drive) + 1;
}

// False where the text and its terminator need more than `size` characters. A text that cannot be converted
// in whole gives its beginning.
bool widenText(const char *text, wchar_t *buffer, size_t size) {
    buffer[size - 1] = L'\0';
    if (mbstowcs(buffer, text, size) == static_cast<size_t>(-1)) {
        // What was converted has no terminator yet.
        std::fill_n(buffer, size, L'\0');
        mbstowcs(buffer, text, size);
    }
    return buffer[size - 1] == L'\0';
}

}  // namespace

VantrelStatus VantrelClientSetCurrentDirectory(VantrelClient *client, const char *path) {
    if (path == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return sendRequest(client, {.operation = operationSetDirectory, .keyText = path});
}

VantrelStatus VantrelClientSetCurrentDirectoryW(VantrelClient *client, const wchar_t *path) {
    return withNarrowText(client, path, [client](const char *narrowPath) {
        return VantrelClientSetCurrentDirectory(client, narrowPath);
    });
}

VantrelStatus VantrelClientGetCurrentDirectory(VantrelClient *client, uint32_t drive, char *buffer,
                                               int32_t bufferLength) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (buffer == nullptr)
        return keepStatus(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (drive > VANTREL_DRIVE_CURRENT)
        return keepStatus(client, VANTREL_STATUS_INVALID_OPTION);
    return keepStatus(client, callVantrel(operationGetDirectory, nullptr, nullptr, nullptr, buffer,
                                          bufferLength, keyNumberOfDrive(drive), client));
}

VantrelStatus VantrelClientGetCurrentDirectoryW(VantrelClient *client, uint32_t drive, wchar_t *buffer,
                                                int32_t bufferLength) {
    if (bufferLength <= 0)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_OPTION);
    // One byte more than the engine is offered, so that the text is terminated whatever it writes.
    char directory[narrowTextSize + 1] = {};
    VantrelStatus status = VantrelClientGetCurrentDirectory(client, drive, directory, narrowTextSize);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    if (buffer == nullptr)
        return keepStatus(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    bool fits = widenText(directory, buffer, static_cast<size_t>(bufferLength));
    return keepStatus(client, fits ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_INVALID_OPTION);
}
