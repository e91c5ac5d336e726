#include <stdio.h>
#include <string.h>

#include "interrupt.h"
#include "questions.h"
#include "reading.h"
#include "report.h"

static bool update(Store *store, const PackageRecord *record, int32_t length) {
    return VantrelFileRecordUpdate(store->file, record, (uint32_t)length) == VANTREL_STATUS_NO_ERROR ||
           complainOfFile(store, "cannot update a record of");
}

/* Moves a package to another section and back. */
static bool showUpdate(Store *store, const char *name) {
    static const char section[] = "demonstration";
    double start = now();
    if (!readFromName(store, name))
        return readingWorks();
    printf("\nThe package %s moves to section %s and back\n", lastRecord.fields.name, section);
    static PackageRecord original;
    original = lastRecord;
    int32_t length = lastLength;
    if (!showSection(store, "before", section) || !readFromName(store, name))
        return false;
    storeText(lastRecord.fields.section, sizeof lastRecord.fields.section, section);
    if (!update(store, &lastRecord, length) || !showSection(store, "after the update", section) ||
        !readFromName(store, name) || !update(store, &original, length) ||
        !showSection(store, "after the update back", section))
        return false;
    printTime(start, 2, "updates");
    return true;
}

static bool showPresence(Store *store, const char *when, const PackageFields *fields) {
    NameKey key = nameKey(fields->name, fields->version);
    bool found = readByKey(store, VANTREL_COMPARISON_EQUAL, BY_NAME, &key, sizeof key);
    if (readingWorks())
        printf("  %-24s %s\n", when,
               found ? "found" : VantrelStatusCodeToString(VantrelFileGetLastStatusCode(store->file)));
    return readingWorks();
}

/* Deletes a package and inserts it again. */
static bool showDelete(Store *store, const char *name) {
    double start = now();
    if (!readFromName(store, name))
        return readingWorks();
    static PackageRecord original;
    original = lastRecord;
    size_t length = (size_t)lastLength;
    printf("\nThe package %s is deleted and inserted again\n", original.fields.name);
    if (VantrelFileRecordDelete(store->file) != VANTREL_STATUS_NO_ERROR)
        return complainOfFile(store, "cannot delete a record of");
    if (!showPresence(store, "after the delete", &original.fields))
        return false;
    if (VantrelFileRecordCreate(store->file, &original, (uint32_t)length) != VANTREL_STATUS_NO_ERROR)
        return complainOfFile(store, "cannot insert a record into");
    if (!showPresence(store, "after the insert", &original.fields))
        return false;
    printTime(start, 2, "changes");
    return true;
}

static bool deleteSection(Store *store, const char *section, size_t *deleted) {
    for (bool found = readSection(store, section); found && strcmp(lastRecord.fields.section, section) == 0;
         found = readNext(store)) {
        if (VantrelFileRecordDelete(store->file) != VANTREL_STATUS_NO_ERROR)
            return complainOfFile(store, "cannot delete a record of");
        ++*deleted;
    }
    return readingWorks();
}

static bool showAbort(Store *store, const char *section) {
    size_t deleted = 0;
    double start = now();
    printf("\nA transaction deletes all packages of section %s and is aborted\n", section);
    if (!showSection(store, "before", section) || !beginTransaction(store))
        return false;
    if (!deleteSection(store, section, &deleted) || !showSection(store, "inside the transaction", section))
        return false;
    if (!abortTransaction(store) || !showSection(store, "after the abort", section))
        return false;
    printTime(start, deleted, "deletes");
    return true;
}

bool showChanges(Store *store) {
    return showUpdate(store, "bash") && showDelete(store, "bash") && showAbort(store, "editors") &&
           !wasInterrupted();
}
