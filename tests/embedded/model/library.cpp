#include "library.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace vantrel::test {

std::string newFilePath() {
    static int count = 0;
    std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm/" : testing::TempDir();
    return folder + "engine_model_" + std::to_string(getpid()) + "_" + std::to_string(++count) + ".vnt";
}

Library::Library(const std::string &path, const FileDefinition &file) : path_(path) {
    for (uint32_t i = 0; i < sessionCount; ++i)
        EXPECT_EQ(VantrelClientAllocate(&clients_[i], 1000, 1 + i), 0);
    EXPECT_EQ(createFile(clients_[0], path, file), 0);
}

Library::~Library() {
    for (uint32_t i = 0; i < handleCount; ++i) {
        if (files_[i] != nullptr)
            close(i);
    }
    for (VantrelClient *client : clients_)
        EXPECT_EQ(VantrelClientReset(client), 0);
    EXPECT_EQ(VantrelClientFileDelete(clients_[0], path_.c_str()), 0);
    for (VantrelClient *client : clients_)
        VantrelClientFree(client);
}

VantrelStatus Library::close(uint32_t handle) {
    VantrelStatus status = VantrelClientFileClose(clients_[handle / handlesPerSession], files_[handle]);
    files_[handle] = nullptr;
    return status;
}

Observed Library::apply(const Step &step, Address address) {
    Observed observed;
    switch (step.action) {
        case Action::insert:
            return insert(step);
        case Action::update:
            observed.status = VantrelFileRecordUpdate(file(step), step.record.data(),
                                                      static_cast<uint32_t>(step.record.size()));
            return observed;
        case Action::remove:
            observed.status = VantrelFileRecordDelete(file(step));
            return observed;
        case Action::getPosition:
            observed.value = VantrelFileGetCursorPosition(file(step));
            observed.status = VantrelFileGetLastStatusCode(file(step));
            return observed;
        case Action::information:
            return information(file(step));
        case Action::createIndex:
            observed.status = createIndex(file(step), step.index, step.indexDefinition);
            return observed;
        case Action::dropIndex:
            observed.status = VantrelFileIndexDrop(file(step), step.index);
            return observed;
        case Action::begin:
        case Action::end:
        case Action::abort:
        case Action::open:
        case Action::close:
            observed.status = control(step);
            return observed;
        default:
            return read(step, address);
    }
}

VantrelStatus Library::control(const Step &step) {
    switch (step.action) {
        case Action::begin:
            return VantrelClientTransactionBegin(client(step), step.transactionMode, VANTREL_LOCK_MODE_NONE);
        case Action::end:
            return VantrelClientTransactionEnd(client(step));
        case Action::abort:
            return VantrelClientTransactionAbort(client(step));
        case Action::open:
            return VantrelClientFileOpen(client(step), &files_[step.handle], path_.c_str(), nullptr,
                                         VANTREL_OPEN_MODE_NORMAL, VANTREL_OPEN_VARIANT_DEFAULT);
        default:
            return close(step.handle);
    }
}

Observed Library::insert(const Step &step) {
    Observed observed;
    Bytes record = step.record;
    observed.status =
        VantrelFileRecordCreate(file(step), record.data(), static_cast<uint32_t>(record.size()));
    if (observed.status == 0)
        observed.insertedAddress = VantrelFileGetCursorPosition(file(step));
    return observed;
}

Observed Library::read(const Step &step, Address address) {
    Observed observed;
    observed.key = step.key;
    observed.key.insert(observed.key.end(), guardLength, guardByte);
    observed.record.assign(static_cast<size_t>(step.recordSize) + guardLength, guardByte);
    uint8_t *key = step.hasKey ? observed.key.data() : nullptr;
    if (step.readsKeyAlone) {
        observed.status = readKeyAlone(step, key, static_cast<int32_t>(step.key.size()));
        return observed;
    }
    uint8_t *record = step.isKeyOnly ? nullptr : observed.record.data();
    int32_t size = step.isKeyOnly ? 0 : step.recordSize;
    observed.value = readRecord(step, address, key, record, size);
    observed.status = VantrelFileGetLastStatusCode(file(step));
    return observed;
}

VantrelStatus Library::readKeyAlone(const Step &step, uint8_t *key, int32_t keyLength) {
    switch (step.action) {
        case Action::first:
            return VantrelFileKeyRetrieveFirst(file(step), step.index, key, keyLength);
        case Action::last:
            return VantrelFileKeyRetrieveLast(file(step), step.index, key, keyLength);
        case Action::next:
            return VantrelFileKeyRetrieveNext(file(step), key, keyLength);
        case Action::previous:
            return VantrelFileKeyRetrievePrevious(file(step), key, keyLength);
        default:
            return VantrelFileKeyRetrieve(file(step), step.comparison, step.index, key, keyLength);
    }
}

int32_t Library::readRecord(const Step &step, Address address, uint8_t *key, uint8_t *record, int32_t size) {
    auto keyLength = static_cast<int32_t>(step.key.size());
    switch (step.action) {
        case Action::first:
            return VantrelFileRecordRetrieveFirst(file(step), step.index, key, keyLength, record, size,
                                                  VANTREL_LOCK_MODE_NONE);
        case Action::last:
            return VantrelFileRecordRetrieveLast(file(step), step.index, key, keyLength, record, size,
                                                 VANTREL_LOCK_MODE_NONE);
        case Action::next:
            return VantrelFileRecordRetrieveNext(file(step), key, keyLength, record, size,
                                                 VANTREL_LOCK_MODE_NONE);
        case Action::previous:
            return VantrelFileRecordRetrievePrevious(file(step), key, keyLength, record, size,
                                                     VANTREL_LOCK_MODE_NONE);
        case Action::retrieveByPosition:
            return VantrelFileRecordRetrieveByCursorPosition(file(step), step.index, address, key, keyLength,
                                                             record, size, VANTREL_LOCK_MODE_NONE);
        default:
            return VantrelFileRecordRetrieve(file(step), step.comparison, step.index, key, keyLength, record,
                                             size, VANTREL_LOCK_MODE_NONE);
    }
}

}  // namespace vantrel::test
