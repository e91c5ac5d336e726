#include "store.h"

#include <limits.h>
#include <string.h>

#include "report.h"

#define FIELD(name) offsetof(PackageFields, name), sizeof(((PackageFields *)NULL)->name)

typedef struct {
    size_t offset, length;
    VantrelDataType type;
    bool isDescending;
} Segment;

typedef struct {
    Segment segments[2]; /* the second may be empty */
    VantrelDuplicateMode duplicates;
    VantrelACSMode collation;
} Index;

static const Index indexes[INDEX_COUNT] = {
    [BY_NAME] = {{{FIELD(name), VANTREL_DATA_TYPE_ZSTRING, false},
                  {FIELD(version), VANTREL_DATA_TYPE_ZSTRING, false}},
                 VANTREL_DUPLICATE_MODE_NOT_ALLOWED,
                 VANTREL_ACS_MODE_NONE},
    [BY_SECTION] = {{{FIELD(section), VANTREL_DATA_TYPE_ZSTRING, false}},
                    VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING,
                    VANTREL_ACS_MODE_NONE},
    [BY_INSTALLED_SIZE] = {{{FIELD(installedSize), VANTREL_DATA_TYPE_UNSIGNED_BINARY, true}},
                           VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING,
                           VANTREL_ACS_MODE_NONE},
    [BY_MAINTAINER] = {{{FIELD(maintainer), VANTREL_DATA_TYPE_ZSTRING, false}},
                       VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING,
                       VANTREL_ACS_MODE_CASE_INSENSITIVE},
};

const char *const indexNames[INDEX_COUNT] = {
    [BY_NAME] = "name and version",
    [BY_SECTION] = "section",
    [BY_INSTALLED_SIZE] = "installed size",
    [BY_MAINTAINER] = "maintainer",
};

static VantrelStatus addSegment(VantrelIndexAttributes *attributes, const Segment *description) {
    VantrelKeySegment *segment;
    VantrelStatus status = VantrelKeySegmentAllocate(&segment);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    status = VantrelKeySegmentSetField(segment, (int32_t)description->offset, (int32_t)description->length,
                                       description->type);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelKeySegmentSetDescendingSortOrder(segment, description->isDescending);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelIndexAttributesAddKeySegment(attributes, segment);
    VantrelKeySegmentFree(segment);
    return status;
}

static VantrelStatus describeIndex(VantrelIndexAttributes *attributes, const Index *index) {
    VantrelStatus status = VantrelIndexAttributesSetDuplicateMode(attributes, index->duplicates);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelIndexAttributesSetACSMode(attributes, index->collation);
    for (size_t i = 0; i < 2 && status == VANTREL_STATUS_NO_ERROR; i++)
        if (index->segments[i].length > 0)
            status = addSegment(attributes, &index->segments[i]);
    return status;
}

static VantrelStatus describeFile(VantrelFileAttributes *attributes) {
    VantrelStatus status = VantrelFileAttributesSetFixedRecordLength(attributes, sizeof(PackageFields));
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelFileAttributesSetVariableLengthRecordsMode(attributes,
                                                                   VANTREL_VARIABLE_LENGTH_RECORDS_MODE_YES);
    return status;
}

static VantrelStatus createFile(Store *store, VantrelCreateMode mode) {
    VantrelFileAttributes *attributes = NULL;
    VantrelIndexAttributes *index = NULL;
    VantrelStatus status = VantrelFileAttributesAllocate(&attributes);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = describeFile(attributes);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelIndexAttributesAllocate(&index);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = describeIndex(index, &indexes[BY_NAME]);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = VantrelClientFileCreate(store->client, attributes, index, store->path, mode,
                                         VANTREL_LOCATION_MODE_DEFAULT);
    VantrelIndexAttributesFree(index);
    VantrelFileAttributesFree(attributes);
    return status;
}

static VantrelStatus openFile(Store *store, VantrelOpenMode mode) {
    return VantrelClientFileOpen(store->client, &store->file, store->path, NULL, mode,
                                 VANTREL_OPEN_VARIANT_DEFAULT);
}

/* Replaces the file in the way if it is one that an earlier run can have made. */
static VantrelStatus replaceFile(Store *store) {
    VantrelStatus status = openFile(store, VANTREL_OPEN_MODE_READ_ONLY);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    VantrelClientFileClose(store->client, store->file);
    store->file = NULL;
    return createFile(store, VANTREL_CREATE_MODE_OVERWRITE);
}

bool createStore(Store *store, const char *path) {
    *store = (Store){.path = path};
    VantrelStatus status = VantrelClientAllocate(&store->client, 0, 0);
    if (status != VANTREL_STATUS_NO_ERROR)
        return complainOfStatus(path, status, "cannot begin");
    status = createFile(store, VANTREL_CREATE_MODE_NO_OVERWRITE);
    if (status == VANTREL_STATUS_FILE_ALREADY_EXISTS)
        status = replaceFile(store);
    if (status != VANTREL_STATUS_NO_ERROR)
        return complainOfStatus(path, status, "cannot make");
    store->exists = true;
    status = openFile(store, VANTREL_OPEN_MODE_NORMAL);
    if (status != VANTREL_STATUS_NO_ERROR)
        return complainOfStatus(path, status, "cannot open");
    return true;
}

bool addIndexes(Store *store) {
    for (size_t i = BY_NAME + 1; i < INDEX_COUNT; i++) {
        VantrelIndexAttributes *attributes;
        VantrelStatus status = VantrelIndexAttributesAllocate(&attributes);
        if (status == VANTREL_STATUS_NO_ERROR)
            status = describeIndex(attributes, &indexes[i]);
        if (status == VANTREL_STATUS_NO_ERROR)
            status = VantrelFileIndexCreate(store->file, attributes);
        VantrelIndexAttributesFree(attributes);
        if (status != VANTREL_STATUS_NO_ERROR)
            return complainOfStatus(store->path, status, "cannot add the index on %s to", indexNames[i]);
    }
    return true;
}

void endStore(Store *store, bool isKept) {
    if (store->client == NULL)
        return;
    /* Ends a transaction under way, and closes the file where closing it below fails. */
    VantrelClientTransactionAbort(store->client);
    if (store->file != NULL)
        VantrelClientFileClose(store->client, store->file);
    VantrelClientReset(store->client);
    if (store->exists && !isKept) {
        VantrelStatus status = VantrelClientFileDelete(store->client, store->path);
        if (status != VANTREL_STATUS_NO_ERROR)
            complainOfStatus(store->path, status, "cannot delete");
    }
    VantrelClientFree(store->client);
    *store = (Store){.path = store->path};
}

static bool checkTransaction(const Store *store, VantrelStatus status, const char *doing) {
    return status == VANTREL_STATUS_NO_ERROR || complainOfStatus(store->path, status, "%s", doing);
}

bool beginTransaction(Store *store) {
    return checkTransaction(store,
                            VantrelClientTransactionBegin(store->client, VANTREL_TRANSACTION_MODE_CONCURRENT,
                                                          VANTREL_LOCK_MODE_NONE),
                            "cannot begin a transaction on");
}

bool endTransaction(Store *store) {
    return checkTransaction(store, VantrelClientTransactionEnd(store->client),
                            "cannot end the transaction on");
}

bool abortTransaction(Store *store) {
    return checkTransaction(store, VantrelClientTransactionAbort(store->client),
                            "cannot abort the transaction on");
}

VantrelStatus insertPackage(Store *store, const PackageFields *fields, const char *text, size_t length) {
    static PackageRecord record;
    size_t first = length < sizeof record.text ? length : sizeof record.text;
    record.fields = *fields;
    memcpy(record.text, text, first);
    VantrelStatus status = VantrelFileRecordCreate(store->file, &record, (uint32_t)(sizeof *fields + first));
    if (status != VANTREL_STATUS_NO_ERROR || first == length)
        return status;
    return VantrelFileRecordAppendChunk(store->file, text + first, (int32_t)(length - first));
}

bool complainOfFile(const Store *store, const char *doing) {
    return complainOfStatus(store->path, VantrelFileGetLastStatusCode(store->file), "%s", doing);
}
