// Hands every function that reads the engine's replies the replies of a hostile engine. The first byte of the
// input chooses the functions, the rest is what they and the engine are given.
#include <clocale>
#include <cstdlib>
#include <memory>

#include "hostile_engine.h"
#include "information_getters.h"
#include "vantrel.h"

namespace vantrel::fuzz {

namespace {

constexpr int32_t textSizes[] = {0, 1, 64, 255, 70000, -1};
constexpr int32_t recordSizes[] = {0, 1, 100, 65535};

void require(bool condition) {
    if (!condition)
        abort();
}

template <class Handle, VantrelStatus (*freeHandle)(Handle *)>
struct Freed {
    void operator()(Handle *handle) const { freeHandle(handle); }
};

// A handle that is freed at the end of the scope.
template <class Handle, VantrelStatus (*allocate)(Handle **), VantrelStatus (*freeHandle)(Handle *)>
std::unique_ptr<Handle, Freed<Handle, freeHandle>> make() {
    Handle *handle;
    require(allocate(&handle) == VANTREL_STATUS_NO_ERROR);
    return std::unique_ptr<Handle, Freed<Handle, freeHandle>>(handle);
}

// Exactly as long as the library is told, so that the sanitizer sees each byte beyond.
template <class Element = char>
std::unique_ptr<Element[]> buffer(int32_t size) {
    return std::make_unique<Element[]>(static_cast<size_t>(std::max(size, 0)));
}

class Session {
  public:
    Session() {
        require(VantrelClientAllocate(&client, 1, 1) == VANTREL_STATUS_NO_ERROR);
        require(VantrelClientFileOpen(client, &file, "file", nullptr, VANTREL_OPEN_MODE_NORMAL,
                                      VANTREL_OPEN_VARIANT_DEFAULT) == VANTREL_STATUS_NO_ERROR);
    }

    ~Session() {
        VantrelClientFileClose(client, file);
        VantrelClientFree(client);
    }

    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    VantrelClient *client;
    VantrelFile *file;
};

void readTexts(VantrelFileInformation *information, Input &input) {
    for (int32_t size : textSizes) {
        auto text = buffer(size);
        for (auto getText : textGetters)
            getText(information, text.get(), size);
        for (int32_t number : {0, 1, 2, 3, 100, -1})
            VantrelFileInformationGetSegmentFileName(information, number, text.get(), size);
        VantrelFileInformationGetSegmentFileName(information, input.number<int32_t>(), text.get(), size);
    }
}

void readSegment(VantrelKeySegment *segment) {
    constexpr int32_t (*getters[])(VantrelKeySegment *) = {
        VantrelKeySegmentGetOffset,        VantrelKeySegmentGetLength,
        VantrelKeySegmentGetDataType,      VantrelKeySegmentGetNullKeyMode,
        VantrelKeySegmentGetNullValue,     VantrelKeySegmentGetDescendingSortOrder,
        VantrelKeySegmentGetDuplicateMode, VantrelKeySegmentGetModifiable,
        VantrelKeySegmentGetACSMode,       VantrelKeySegmentGetACSNumber,
        VantrelKeySegmentGetKeyContinues,  VantrelKeySegmentGetIndex};
    for (auto getter : getters)
        getter(segment);
    VantrelKeySegmentGetUniqueValueCount(segment);
}

void readInformation(Session &session, Input &input) {
    auto information =
        make<VantrelFileInformation, VantrelFileInformationAllocate, VantrelFileInformationFree>();
    auto segment = make<VantrelKeySegment, VantrelKeySegmentAllocate, VantrelKeySegmentFree>();
    VantrelFileGetInformation(session.file, information.get());
    for (auto getter : valueGetters)
        getter(information.get());
    for (auto getter : longValueGetters)
        getter(information.get());
    for (int32_t number : {0, 1, 2, 119, 420, 4094, 4095, 65535, input.number<int32_t>()}) {
        if (VantrelFileInformationGetKeySegment(information.get(), segment.get(), number) == 0)
            readSegment(segment.get());
    }
    readTexts(information.get(), input);
    VantrelClientFileCreateUsingFileInformation(session.client, information.get(), "other",
                                                VANTREL_CREATE_MODE_OVERWRITE, VANTREL_LOCATION_MODE_DEFAULT);
}

void readRetrievedRecord(VantrelBulkRetrieveResult *result, int32_t index, int32_t size) {
    auto record = buffer(size);
    int32_t length = VantrelBulkRetrieveResultGetRecordLength(result, index);
    int32_t copied = VantrelBulkRetrieveResultGetRecord(result, index, record.get(), size);
    require(copied == -1 || (copied == length && copied <= size));
    VantrelBulkRetrieveResultGetRecordCursorPosition(result, index);
}

// In the input's order, after the first and last ones.
void readRetrieved(VantrelBulkRetrieveResult *result, Input &input) {
    int32_t count = VantrelBulkRetrieveResultGetRecordCount(result);
    for (int32_t index : {1, 2, 3, 4, 5, count, count + 1, 0, -1})
        readRetrievedRecord(result, index, input.choose(recordSizes));
    for (int i = 0; i < 32 && !input.isEmpty(); ++i)
        readRetrievedRecord(result, input.number<uint16_t>(), input.choose(recordSizes));
}

void bulkRetrieve(Session &session, Input &input) {
    auto attributes = make<VantrelBulkRetrieveAttributes, VantrelBulkRetrieveAttributesAllocate,
                           VantrelBulkRetrieveAttributesFree>();
    auto result =
        make<VantrelBulkRetrieveResult, VantrelBulkRetrieveResultAllocate, VantrelBulkRetrieveResultFree>();
    VantrelBulkRetrieveAttributesSetMaximumRecordCount(attributes.get(), input.number<uint16_t>());
    VantrelBulkRetrieveAttributesAddField(attributes.get(), 0, input.number<uint16_t>());
    VantrelFileBulkRetrieveNext(session.file, attributes.get(), result.get(), VANTREL_LOCK_MODE_NONE);
    readRetrieved(result.get(), input);
    VantrelFileBulkRetrieveFirst(session.file, 0, attributes.get(), result.get(), VANTREL_LOCK_MODE_NONE);
    readRetrieved(result.get(), input);
}

void bulkDelete(Session &session, Input &input) {
    auto attributes = make<VantrelBulkDeleteAttributes, VantrelBulkDeleteAttributesAllocate,
                           VantrelBulkDeleteAttributesFree>();
    auto result =
        make<VantrelBulkDeleteResult, VantrelBulkDeleteResultAllocate, VantrelBulkDeleteResultFree>();
    VantrelBulkDeleteAttributesSetMaximumRecordCount(attributes.get(), input.number<uint16_t>());
    VantrelFileBulkDeleteNext(session.file, attributes.get(), result.get());
    int32_t count = VantrelBulkDeleteResultGetRecordCount(result.get());
    for (int32_t index : {1, 2, 25804, 25805, count, count + 1, 0, -1, input.number<int32_t>()})
        VantrelBulkDeleteResultGetRecordCursorPosition(result.get(), index);
}

void bulkCreate(Session &session, Input &input) {
    constexpr uint32_t largestRecord = 65535;
    auto payload =
        make<VantrelBulkCreatePayload, VantrelBulkCreatePayloadAllocate, VantrelBulkCreatePayloadFree>();
    auto result =
        make<VantrelBulkCreateResult, VantrelBulkCreateResultAllocate, VantrelBulkCreateResultFree>();
    auto record = buffer(largestRecord);
    for (int number = input.number<uint8_t>() % 8; number > 0; --number)
        VantrelBulkCreatePayloadAddRecord(payload.get(), record.get(), input.number<uint16_t>());
    VantrelFileBulkCreate(session.file, payload.get(), result.get());
    int32_t count = VantrelBulkCreateResultGetRecordCount(result.get());
    for (int32_t index : {1, 2, 32255, 32256, count, 0, -1, input.number<int32_t>()})
        VantrelBulkCreateResultGetRecordCursorPosition(result.get(), index);
}

void readVersion(Session &session, Input &) {
    auto version = make<VantrelVersion, VantrelVersionAllocate, VantrelVersionFree>();
    VantrelClientGetVersion(session.client, version.get(), session.file);
    constexpr int32_t (*getters[])(VantrelVersion *) = {
        VantrelVersionGetClientVersionNumber, VantrelVersionGetClientRevisionNumber,
        VantrelVersionGetClientVersionType,   VantrelVersionGetLocalVersionNumber,
        VantrelVersionGetLocalRevisionNumber, VantrelVersionGetLocalVersionType,
        VantrelVersionGetRemoteVersionNumber, VantrelVersionGetRemoteRevisionNumber,
        VantrelVersionGetRemoteVersionType};
    for (auto getter : getters)
        require(getter(version.get()) >= -7);
}

void readDirectory(Session &session, Input &input) {
    int32_t size = input.choose(textSizes);
    auto text = buffer<wchar_t>(size);
    VantrelStatus status =
        VantrelClientGetCurrentDirectoryW(session.client, VANTREL_DRIVE_CURRENT, text.get(), size);
    require(status != VANTREL_STATUS_NO_ERROR || text[static_cast<size_t>(size) - 1] == L'\0');
    auto narrow = buffer(size);
    VantrelClientGetCurrentDirectory(session.client, 0, narrow.get(), size);
}

void readRecords(Session &session, Input &input) {
    int32_t size = input.choose(recordSizes);
    auto record = buffer(size);
    char key[16] = {};
    constexpr int32_t keyLength = sizeof key;
    int32_t counts[] = {
        VantrelFileRecordRetrieveByCursorPosition(session.file, 0, 1, key, keyLength, record.get(), size, 0),
        VantrelFileRecordRetrieveByPercentage(session.file, 0, 5000, key, keyLength, record.get(), size, 0),
        VantrelFileRecordRetrieveByFraction(session.file, 0, 1, 2, key, keyLength, record.get(), size, 0),
        VantrelFileRecordRetrieveChunk(session.file, 0, size, record.get(), size, 0),
        VantrelFileRecordRetrieveChunk(session.file, -1, size, record.get(), size, 0)};
    for (int32_t count : counts)
        require(count >= -1 && count <= size);
    VantrelFileGetPercentage(session.file, 0, key, sizeof key, -1);
    VantrelFileGetNumerator(session.file, -1, nullptr, 0, 1, input.number<uint32_t>());
    VantrelFileGetRecordCreateTime(session.file);
    VantrelFileGetRecordUpdateTime(session.file);
}

constexpr void (*subjects[])(Session &, Input &) = {readInformation, bulkRetrieve,  bulkDelete, bulkCreate,
                                                    readVersion,     readDirectory, readRecords};

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    setlocale(LC_ALL, "C.UTF-8");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace vantrel::fuzz;
    Input input(bytes, size);
    answerWith(&input);
    auto subject = input.choose(subjects);
    Session session;
    subject(session, input);
    return 0;
}
