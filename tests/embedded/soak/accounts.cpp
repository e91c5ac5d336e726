#include "accounts.h"

#include "engine/bytes.h"

namespace vantrel::test {

namespace {

constexpr uint32_t balanceOffset = 4, changesOffset = 12, recordLength = 16;

void store(const Account &account, uint8_t *record) {
    storeU32(record, account.number);
    storeU64(record + balanceOffset, static_cast<uint64_t>(account.balance));
    storeU32(record + changesOffset, account.changes);
}

Account load(const uint8_t *record) {
    return {loadU32(record), static_cast<int64_t>(loadU64(record + balanceOffset)),
            loadU32(record + changesOffset)};
}

VantrelStatus createFile(VantrelClient *client, const std::string &path) {
    VantrelFileAttributes *attributes = nullptr;
    VantrelIndexAttributes *index = nullptr;
    VantrelKeySegment *segment = nullptr;
    VantrelFileAttributesAllocate(&attributes);
    VantrelIndexAttributesAllocate(&index);
    VantrelKeySegmentAllocate(&segment);
    VantrelFileAttributesSetFixedRecordLength(attributes, recordLength);
    VantrelKeySegmentSetField(segment, 0, balanceOffset, VANTREL_DATA_TYPE_UNSIGNED_BINARY);
    VantrelIndexAttributesAddKeySegment(index, segment);
    VantrelStatus status =
        VantrelClientFileCreate(client, attributes, index, path.c_str(), VANTREL_CREATE_MODE_NO_OVERWRITE,
                                VANTREL_LOCATION_MODE_DEFAULT);
    VantrelKeySegmentFree(segment);
    VantrelIndexAttributesFree(index);
    VantrelFileAttributesFree(attributes);
    return status;
}

VantrelStatus fill(VantrelClient *client, const std::string &path) {
    Accounts accounts(client, path);
    VantrelStatus status = accounts.status();
    for (uint32_t number = 0; number < accountsPerFile && status == VANTREL_STATUS_NO_ERROR; ++number)
        status = accounts.insert({number, initialBalance, 0});
    return status;
}

}  // namespace

VantrelStatus createAccounts(const std::string &path) {
    VantrelClient *client;
    VantrelStatus status = VantrelClientAllocate(&client, 0, 0);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    status = createFile(client, path);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = fill(client, path);
    VantrelClientReset(client);
    VantrelClientFree(client);
    return status;
}

Accounts::Accounts(VantrelClient *client, const std::string &path, VantrelOpenMode mode)
    : client_(client),
      status_(
          VantrelClientFileOpen(client, &file_, path.c_str(), nullptr, mode, VANTREL_OPEN_VARIANT_DEFAULT)) {}

Accounts::~Accounts() {
    if (file_ != nullptr)
        VantrelClientFileClose(client_, file_);
}

VantrelStatus Accounts::read(uint32_t number, VantrelLockMode lock, Account *account) {
    uint8_t key[balanceOffset], record[recordLength];
    storeU32(key, number);
    if (VantrelFileRecordRetrieve(file_, VANTREL_COMPARISON_EQUAL, 0, key, sizeof key, record, sizeof record,
                                  lock) == recordLength)
        *account = load(record);
    return VantrelFileGetLastStatusCode(file_);
}

VantrelStatus Accounts::readNext(Account *account) {
    uint8_t record[recordLength];
    if (VantrelFileRecordRetrieveNext(file_, nullptr, 0, record, sizeof record, VANTREL_LOCK_MODE_NONE) ==
        recordLength)
        *account = load(record);
    return VantrelFileGetLastStatusCode(file_);
}

VantrelStatus Accounts::write(const Account &account) {
    uint8_t record[recordLength];
    store(account, record);
    return VantrelFileRecordUpdate(file_, record, recordLength);
}

VantrelStatus Accounts::insert(const Account &account) {
    uint8_t record[recordLength];
    store(account, record);
    return VantrelFileRecordCreate(file_, record, recordLength);
}

VantrelStatus Accounts::erase() {
    return VantrelFileRecordDelete(file_);
}

void Accounts::unlock() {
    VantrelFileRecordUnlock(file_, VANTREL_UNLOCK_MODE_SINGLE);
    VantrelFileRecordUnlock(file_, VANTREL_UNLOCK_MODE_ALL_MULTIPLE);
}

VantrelStatus Accounts::total(int64_t *sum) {
    VantrelBulkRetrieveAttributes *attributes = nullptr;
    VantrelBulkRetrieveResult *result = nullptr;
    VantrelBulkRetrieveAttributesAllocate(&attributes);
    VantrelBulkRetrieveResultAllocate(&result);
    VantrelBulkRetrieveAttributesAddField(attributes, 0, recordLength);
    VantrelStatus status =
        VantrelFileBulkRetrieveFirst(file_, VANTREL_INDEX_NONE, attributes, result, VANTREL_LOCK_MODE_NONE);
    *sum = 0;
    int32_t count = VantrelBulkRetrieveResultGetRecordCount(result);
    for (int32_t number = 1; number <= count; ++number) {
        uint8_t record[recordLength];
        VantrelBulkRetrieveResultGetRecord(result, number, record, sizeof record);
        *sum += load(record).balance;
    }
    VantrelBulkRetrieveResultFree(result);
    VantrelBulkRetrieveAttributesFree(attributes);
    return status == VANTREL_STATUS_END_OF_FILE ? VANTREL_STATUS_NO_ERROR : status;
}

}  // namespace vantrel::test
