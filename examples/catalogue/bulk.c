#include <stdio.h>
#include <string.h>

#include "interrupt.h"
#include "questions.h"
#include "reading.h"
#include "report.h"

#define FIELD(name) offsetof(PackageFields, name), sizeof(((PackageFields *)NULL)->name)

/* Three fields of a package, as one bulk read returns them: one behind the other. */
typedef struct {
    char name[sizeof(((PackageFields *)NULL)->name)];
    char version[sizeof(((PackageFields *)NULL)->version)];
    uint8_t installedSize[4];
} SizeRow;

/* What a bulk read needs, allocated and freed together. */
typedef struct {
    VantrelBulkRetrieveAttributes *attributes;
    VantrelBulkRetrieveResult *result;
} BulkRead;

typedef struct {
    size_t records;
    size_t requests;
} Amount;

static bool complainOfBulk(const Store *store, VantrelStatus status, const char *doing) {
    return complainOfStatus(store->path, status, "cannot %s in bulk in", doing);
}

/* The status with which a bulk operation has done all there was to do. */
static bool isEnd(VantrelStatus status) {
    return status == VANTREL_STATUS_END_OF_FILE || status == VANTREL_STATUS_OPTIMIZE_LIMIT_REACHED ||
           status == VANTREL_STATUS_KEY_VALUE_NOT_FOUND;
}

/* A filter on the section, joined by a connector to what follows; to be freed, null without memory. */
static VantrelFilter *sectionFilter(const char *section, VantrelConnector connector) {
    char constant[sizeof(((PackageFields *)NULL)->section)];
    VantrelFilter *filter;
    if (VantrelFilterAllocate(&filter) != VANTREL_STATUS_NO_ERROR)
        return NULL;
    storeText(constant, sizeof constant, section);
    VantrelFilterSetField(filter, FIELD(section), VANTREL_DATA_TYPE_ZSTRING);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
    if (connector != VANTREL_CONNECTOR_LAST)
        VantrelFilterSetConnector(filter, connector);
    if (VantrelFilterSetComparisonConstant(filter, constant, sizeof constant) == VANTREL_STATUS_NO_ERROR)
        return filter;
    VantrelFilterFree(filter);
    return NULL;
}

static VantrelFilter *sizeFilter(uint32_t size) {
    uint8_t constant[4];
    VantrelFilter *filter;
    if (VantrelFilterAllocate(&filter) != VANTREL_STATUS_NO_ERROR)
        return NULL;
    storeNumber(constant, size);
    VantrelFilterSetField(filter, FIELD(installedSize), VANTREL_DATA_TYPE_UNSIGNED_BINARY);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_GREATER);
    if (VantrelFilterSetComparisonConstant(filter, constant, sizeof constant) == VANTREL_STATUS_NO_ERROR)
        return filter;
    VantrelFilterFree(filter);
    return NULL;
}

/* Adds a filter, which is null without memory, and frees it. */
static bool addFilter(VantrelBulkRetrieveAttributes *attributes, VantrelFilter *filter) {
    bool isAdded = filter != NULL &&
                   VantrelBulkRetrieveAttributesAddFilter(attributes, filter) == VANTREL_STATUS_NO_ERROR;
    if (filter != NULL)
        VantrelFilterFree(filter);
    return isAdded;
}

static bool beginBulkRead(BulkRead *read) {
    *read = (BulkRead){NULL, NULL};
    return VantrelBulkRetrieveAttributesAllocate(&read->attributes) == VANTREL_STATUS_NO_ERROR &&
           VantrelBulkRetrieveResultAllocate(&read->result) == VANTREL_STATUS_NO_ERROR;
}

static void endBulkRead(BulkRead *read) {
    VantrelBulkRetrieveAttributesFree(read->attributes);
    VantrelBulkRetrieveResultFree(read->result);
}

/* One request: the first one starts at the section, the others go on. Whether it worked; *isLast tells
 * whether there is more. */
static bool readSome(Store *store, BulkRead *read, const char *section, Amount *amount, bool *isLast) {
    char key[sizeof(((PackageFields *)NULL)->section)];
    VantrelStatus status;
    storeText(key, sizeof key, section);
    if (amount->requests++ == 0)
        status = VantrelFileBulkRetrieveNextByComparison(store->file, VANTREL_COMPARISON_EQUAL, BY_SECTION,
                                                         key, sizeof key, read->attributes, read->result,
                                                         VANTREL_LOCK_MODE_NONE);
    else
        status =
            VantrelFileBulkRetrieveNext(store->file, read->attributes, read->result, VANTREL_LOCK_MODE_NONE);
    *isLast = isEnd(status);
    if (status != VANTREL_STATUS_NO_ERROR && !*isLast)
        return complainOfBulk(store, status, "read");
    return !wasInterrupted();
}

static bool printRows(BulkRead *read, Amount *amount, size_t shown) {
    int32_t count = VantrelBulkRetrieveResultGetRecordCount(read->result);
    for (int32_t i = 1; i <= count; i++) {
        SizeRow row;
        if (VantrelBulkRetrieveResultGetRecord(read->result, i, &row, sizeof row) != sizeof row) {
            complain("a record of a bulk read has another length");
            return false;
        }
        if (amount->records++ < shown)
            printf("  %-40.40s %-26.26s %24u\n", row.name, row.version,
                   (unsigned)loadNumber(row.installedSize));
    }
    return true;
}

static bool printLarge(Store *store, BulkRead *read, const char *section, Amount *amount) {
    enum { SHOWN = 5 };
    bool isLast = false, works = true;
    while (works && !isLast)
        works = readSome(store, read, section, amount, &isLast) && printRows(read, amount, SHOWN);
    return works;
}

/* Names, versions and sizes of a section's large packages: the engine tests and cuts the records. */
static bool showBulkRead(Store *store, const char *section, uint32_t size) {
    BulkRead read;
    Amount amount = {0, 0};
    double start = now();
    printf("\nA bulk read of the packages of section %s above %u KiB, the first of them\n", section,
           (unsigned)size);
    bool works = beginBulkRead(&read) &&
                 addFilter(read.attributes, sectionFilter(section, VANTREL_CONNECTOR_AND)) &&
                 addFilter(read.attributes, sizeFilter(size));
    if (works) {
        VantrelBulkRetrieveAttributesAddField(read.attributes, FIELD(name));
        VantrelBulkRetrieveAttributesAddField(read.attributes, FIELD(version));
        VantrelBulkRetrieveAttributesAddField(read.attributes, FIELD(installedSize));
        works = printLarge(store, &read, section, &amount);
    } else {
        complain("no memory");
    }
    endBulkRead(&read);
    if (works)
        printTime(start, amount.records, "packages");
    return works;
}

/* Inserts what the payload holds, and leaves it empty. */
static bool insertPayload(Store *store, VantrelBulkCreatePayload **payload, Amount *amount) {
    VantrelBulkCreateResult *result;
    if (VantrelBulkCreateResultAllocate(&result) != VANTREL_STATUS_NO_ERROR)
        return complainOfBulk(store, VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE, "insert");
    VantrelStatus status = VantrelFileBulkCreate(store->file, *payload, result);
    if (status == VANTREL_STATUS_NO_ERROR) {
        amount->records += (size_t)VantrelBulkCreateResultGetRecordCount(result);
        amount->requests++;
        VantrelBulkCreatePayloadFree(*payload);
        *payload = NULL;
        status = VantrelBulkCreatePayloadAllocate(payload);
    }
    VantrelBulkCreateResultFree(result);
    return status == VANTREL_STATUS_NO_ERROR || complainOfBulk(store, status, "insert");
}

/* Adds a copy of a package under another name and section. */
static bool addCopy(Store *store, VantrelBulkCreatePayload **payload, const PackageFields *original,
                    const char *section, size_t number, Amount *amount) {
    PackageFields copy = *original;
    char name[sizeof copy.name];
    snprintf(name, sizeof name, "%s-%zu", section, number);
    storeText(copy.name, sizeof copy.name, name);
    storeText(copy.section, sizeof copy.section, section);
    VantrelStatus status = VantrelBulkCreatePayloadAddRecord(*payload, &copy, sizeof copy);
    if (status == VANTREL_STATUS_DATA_LENGTH_ERROR && insertPayload(store, payload, amount))
        status = VantrelBulkCreatePayloadAddRecord(*payload, &copy, sizeof copy);
    return status == VANTREL_STATUS_NO_ERROR || complainOfBulk(store, status, "insert");
}

static bool copyRecords(Store *store, BulkRead *read, VantrelBulkCreatePayload **payload, const char *from,
                        const char *to, Amount *inserted) {
    Amount amount = {0, 0};
    bool isLast = false;
    while (!isLast) {
        if (!readSome(store, read, from, &amount, &isLast))
            return false;
        int32_t count = VantrelBulkRetrieveResultGetRecordCount(read->result);
        for (int32_t i = 1; i <= count; i++) {
            PackageFields fields;
            if (VantrelBulkRetrieveResultGetRecord(read->result, i, &fields, sizeof fields) != sizeof fields)
                return complainOfBulk(store, VantrelBulkRetrieveResultGetLastStatusCode(read->result),
                                      "read");
            if (!addCopy(store, payload, &fields, to, ++amount.records, inserted))
                return false;
        }
    }
    return insertPayload(store, payload, inserted);
}

static bool copySection(Store *store, const char *from, const char *to, Amount *inserted) {
    BulkRead read;
    VantrelBulkCreatePayload *payload = NULL;
    bool works = beginBulkRead(&read) &&
                 addFilter(read.attributes, sectionFilter(from, VANTREL_CONNECTOR_LAST)) &&
                 VantrelBulkCreatePayloadAllocate(&payload) == VANTREL_STATUS_NO_ERROR;
    if (works) {
        VantrelBulkRetrieveAttributesAddField(read.attributes, 0, sizeof(PackageFields));
        works = copyRecords(store, &read, &payload, from, to, inserted);
    } else {
        complain("no memory");
    }
    endBulkRead(&read);
    if (payload != NULL)
        VantrelBulkCreatePayloadFree(payload);
    return works;
}

static bool deleteRecords(Store *store, VantrelBulkDeleteAttributes *attributes,
                          VantrelBulkDeleteResult *result, Amount *deleted) {
    VantrelStatus status = VantrelFileBulkDeleteFirst(store->file, BY_SECTION, attributes, result);
    for (;;) {
        deleted->requests++;
        if (status == VANTREL_STATUS_NO_ERROR || isEnd(status))
            deleted->records += (size_t)VantrelBulkDeleteResultGetRecordCount(result);
        if (status != VANTREL_STATUS_NO_ERROR || wasInterrupted())
            return isEnd(status) || complainOfBulk(store, status, "delete");
        status = VantrelFileBulkDeleteNext(store->file, attributes, result);
    }
}

static bool deleteSection(Store *store, const char *section, Amount *deleted) {
    VantrelBulkDeleteAttributes *attributes = NULL;
    VantrelBulkDeleteResult *result = NULL;
    VantrelFilter *filter = sectionFilter(section, VANTREL_CONNECTOR_LAST);
    bool works = filter != NULL &&
                 VantrelBulkDeleteAttributesAllocate(&attributes) == VANTREL_STATUS_NO_ERROR &&
                 VantrelBulkDeleteResultAllocate(&result) == VANTREL_STATUS_NO_ERROR &&
                 VantrelBulkDeleteAttributesAddFilter(attributes, filter) == VANTREL_STATUS_NO_ERROR;
    if (works)
        works = deleteRecords(store, attributes, result, deleted);
    else
        complain("no memory");
    if (filter != NULL)
        VantrelFilterFree(filter);
    VantrelBulkDeleteAttributesFree(attributes);
    if (result != NULL)
        VantrelBulkDeleteResultFree(result);
    return works;
}

static void printAmount(const char *what, const Amount *amount) {
    printf("  %-24s %zu records in %zu requests\n", what, amount->records, amount->requests);
}

/* Copies the packages of a section, and deletes the copies. */
static bool showBulkChanges(Store *store, const char *section) {
    static const char copies[] = "demonstration";
    Amount inserted = {0, 0}, deleted = {0, 0};
    double start = now();
    printf("\nThe packages of section %s are copied in bulk, and the copies deleted in bulk\n", section);
    if (!showSection(store, "before", copies) || !copySection(store, section, copies, &inserted))
        return false;
    printAmount("inserted", &inserted);
    if (!showSection(store, "after the bulk insert", copies) || !deleteSection(store, copies, &deleted))
        return false;
    printAmount("deleted", &deleted);
    if (!showSection(store, "after the bulk delete", copies))
        return false;
    printTime(start, inserted.records + deleted.records, "changes");
    return true;
}

bool showBulk(Store *store) {
    return showBulkRead(store, "python", 1900) && showBulkChanges(store, "editors") && !wasInterrupted();
}
