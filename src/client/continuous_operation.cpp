#include "client/request.h"
#include "engine/wide_text.h"

using namespace vantrel;

namespace {

constexpr int32_t beginKeyNumber = 0;
constexpr int32_t endKeyNumber = 1;

// Unlike all other paths of a client, these go in the data buffer.
VantrelStatus changeContinuousOperation(VantrelClient *client, const char *paths, int32_t keyNumber) {
    if (paths == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return sendRequest(
        client, {.operation = operationContinuousOperation, .dataText = paths, .keyNumber = keyNumber});
}

}  // namespace

VantrelStatus VantrelClientContinuousOperationBegin(VantrelClient *client, const char *paths) {
    return changeContinuousOperation(client, paths, beginKeyNumber);
}

VantrelStatus VantrelClientContinuousOperationBeginW(VantrelClient *client, const wchar_t *paths) {
    return withNarrowText(client, paths, [client](const char *narrowPaths) {
        return VantrelClientContinuousOperationBegin(client, narrowPaths);
    });
}

VantrelStatus VantrelClientContinuousOperationEnd(VantrelClient *client, const char *paths) {
    return changeContinuousOperation(client, paths, endKeyNumber);
}

VantrelStatus VantrelClientContinuousOperationEndW(VantrelClient *client, const wchar_t *paths) {
    return withNarrowText(client, paths, [client](const char *narrowPaths) {
        return VantrelClientContinuousOperationEnd(client, narrowPaths);
    });
}
