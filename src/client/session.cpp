#include "client/request.h"
#include "engine/wide_text.h"

using namespace vantrel;

namespace {

constexpr int32_t loginKeyNumber = 0;
constexpr int32_t logoutKeyNumber = 1;

VantrelStatus changeLogin(VantrelClient *client, const char *text, int32_t keyNumber) {
    if (text == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return sendRequest(client, {.operation = operationLogin, .keyText = text, .keyNumber = keyNumber});
}

}  // namespace

VantrelStatus VantrelClientReset(VantrelClient *client) {
    return sendRequest(client, {.operation = operationReset});
}

VantrelStatus VantrelClientStop(VantrelClient *client) {
    return sendRequest(client, {.operation = operationStop});
}

VantrelStatus VantrelClientLogin(VantrelClient *client, const char *text) {
    return changeLogin(client, text, loginKeyNumber);
}

VantrelStatus VantrelClientLoginW(VantrelClient *client, const wchar_t *text) {
    return withNarrowText(
        client, text, [client](const char *narrowText) { return VantrelClientLogin(client, narrowText); });
}

VantrelStatus VantrelClientLogout(VantrelClient *client, const char *text) {
    return changeLogin(client, text, logoutKeyNumber);
}

VantrelStatus VantrelClientLogoutW(VantrelClient *client, const wchar_t *text) {
    return withNarrowText(
        client, text, [client](const char *narrowText) { return VantrelClientLogout(client, narrowText); });
}
