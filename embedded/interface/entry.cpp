#include <new>

#include "embedded/interface/operation_code.h"
#include "embedded/interface/sessions.h"
#include "vantrel.h"

using namespace vantrel::embedded;

namespace {

constexpr uint16_t operationStop = 25;

int32_t execute(Request *request, const void *clientIdentifier) {
    std::shared_ptr<Session> session = findSession(clientIdentifier);
    if (request->operation == operationStop) {
        int32_t status = resetAllSessions();
        forgetIfUnused(session, clientIdentifier);
        return status;
    }
    int32_t status = vantrelCoreExecute(session.get(), request);
    if (request->leavesNothing)
        forgetIfUnused(session, clientIdentifier);
    return status;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int32_t VNTLEXID(uint32_t operation, void *positionBlock,
                                                                   void *data, uint32_t *dataLength,
                                                                   void *key, int32_t keyLength,
                                                                   int32_t keyNumber,
                                                                   void *clientIdentifier) {
    uint32_t offered = dataLength == nullptr || data == nullptr ? 0 : *dataLength;
    if (dataLength != nullptr)
        *dataLength = 0;
    std::optional<OperationCode> code = decodeOperation(operation, offered);
    if (!code)
        return VANTREL_STATUS_INVALID_FUNCTION;
    Request request{
        .operation = code->operation,
        .lock = code->lock,
        .keyOnly = code->keyOnly,
        .positionBlock = positionBlock,
        .data = static_cast<uint8_t *>(data),
        .offered = offered,
        .delivered = 0,
        .key = static_cast<uint8_t *>(key),
        .keyLength = key == nullptr || keyLength < 0 ? 0 : static_cast<uint32_t>(keyLength),
        .keyNumber = keyNumber,
        .leavesNothing = false,
    };
    int32_t status;
    try {
        status = execute(&request, clientIdentifier);
    } catch (const std::bad_alloc &) {
        status = VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    } catch (...) {
        status = VANTREL_STATUS_UNRECOVERABLE_ERROR;
    }
    if (dataLength != nullptr)
        *dataLength = request.delivered;
    return status;
}
