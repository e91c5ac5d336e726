#include <vector>

#include "embedded/operation/change.h"
#include "embedded/operation/extended_reply.h"
#include "embedded/operation/key_only.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/read.h"
#include "embedded/operation/record_scan.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

ScanWay wayOf(uint16_t operation) {
    bool isPhysical = operation == codeStepNextExtended || operation == codeStepPreviousExtended ||
                      operation == codeDeleteStepNext || operation == codeDeleteStepPrevious;
    bool isForward = operation == codeGetNextExtended || operation == codeStepNextExtended ||
                     operation == codeDeleteNext || operation == codeDeleteStepNext;
    return {isPhysical, isForward ? Direction::forward : Direction::backward};
}

ExtendedRequest decode(const Request &request, Position &position, bool deletes) {
    ByteView buffer(reinterpret_cast<const char *>(request.data), request.offered);
    std::shared_ptr<const FileDefinition> definition = position.file->storage().definition();
    bool isPhysical = wayOf(request.operation).isPhysical;
    if (isPhysical)
        requirePhysicalOrder(*definition);
    return decodeExtendedRequest(buffer, definition->collations, {isPhysical, deletes});
}

// One extended read under way.
struct ExtendedRead {
    Session &session;
    Position &position;
    const Request &request;
    ExtendedRequest &extended;
    RecordScan scan;
    ExtendedReply reply;
    int64_t lastPassed = 0;

    int32_t findNext(StoredEntry *entry);
    int32_t run();
    void finish();
};

int32_t ExtendedRead::findNext(StoredEntry *entry) {
    return findAndLock(session, position, request, entry, [this](StoredEntry *found) -> int32_t {
        int32_t status = scan.findNext(found);
        if (status == VANTREL_STATUS_NO_ERROR && !reply.hasRoomFor(extended.extractor.longest()))
            return VANTREL_STATUS_SMALL_EXTENDED_GET_BUFFER_ERROR;
        return status;
    });
}

int32_t ExtendedRead::run() {
    StoredEntry entry;
    for (;;) {
        int32_t status = findNext(&entry);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        lastPassed = entry.record.address;
        if (extended.extractor.aggregates()) {
            extended.extractor.accumulate(scan.view());
            scan.examine(entry);
            continue;
        }
        size_t length = extended.extractor.extract(scan.view(), reply.nextBytes());
        scan.examine(entry);
        reply.add(lastPassed, length, length);
        if (reply.count() == extended.recordLimit)
            return VANTREL_STATUS_NO_ERROR;
    }
}

void ExtendedRead::finish() {
    if (extended.extractor.aggregates() && lastPassed != 0) {
        size_t length = extended.extractor.extractAggregates(reply.nextBytes());
        reply.add(lastPassed, length, length);
    }
    scan.movePosition();
}

// Returns the versions of the deleted records beside the reply.
int32_t deletePassing(RecordScan &scan, OpenFile &file, ChangeScope &scope, ExtendedReply &reply,
                      uint16_t recordLimit, std::vector<uint64_t> *versions) {
    RecordChange change(file.storage());
    StoredEntry entry;
    while (reply.count() < recordLimit) {
        int32_t status = scan.findNext(&entry);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        if (!reply.hasRoomFor(0))
            return VANTREL_STATUS_SMALL_EXTENDED_GET_BUFFER_ERROR;
        if (!scope.tryLock(entry.record.address))
            return VANTREL_STATUS_RECORD_IN_USE;
        scan.examineDeleted(entry);
        reply.add(entry.record.address, static_cast<size_t>(entry.record.length), 0);
        versions->push_back(entry.record.updateTime);
        scope.noteVersionBefore(entry.record.address, entry.record.updateTime);
        change.prepareDelete(entry.record);
        scope.beginChanges();
        change.apply();
    }
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

int32_t readExtended(Session &session, Request &request) {
    CountInFront count(request, sizeof(uint16_t));
    Position &position = session.position(request.positionBlock);
    ExtendedRequest extended = decode(request, position, false);
    ExtendedRead read{session,
                      position,
                      request,
                      extended,
                      RecordScan(position, request, extended, wayOf(request.operation)),
                      ExtendedReply(request)};
    int32_t status;
    try {
        status = read.run();
    } catch (const StatusError &error) {
        // What came before stays delivered.
        status = error.status;
    } catch (const std::bad_alloc &) {
        status = VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    }
    read.finish();
    count.set(read.reply.count());
    request.delivered = read.reply.length();
    return status;
}

int32_t deleteExtended(Session &session, Request &request) {
    CountInFront count(request, sizeof(uint16_t));
    Position &position = writablePosition(session, request);
    OpenFile &file = *position.file;
    ExtendedRequest extended = decode(request, position, true);
    ExtendedReply reply(request);

    ChangeScope scope(session, file);
    RecordScan scan(position, request, extended, wayOf(request.operation));
    std::vector<uint64_t> versions;
    int32_t status = deletePassing(scan, file, scope, reply, extended.recordLimit, &versions);
    scope.commit();

    for (uint32_t record = 0; record < reply.count(); ++record) {
        int64_t address = reply.deletedAddress(record);
        file.recordDeleted(position, address, versions[record], session.insideTransaction());
        settleLocks(session, position, address);
    }
    scan.movePosition();
    count.set(reply.count());
    request.delivered = reply.length();
    return status;
}

}  // namespace vantrel::embedded
