#include "questions.h"

#include <stdio.h>
#include <string.h>

#include "interrupt.h"
#include "reading.h"
#include "report.h"

static bool askForName(Store *store, const char *name) {
    Table table = {.count = 0};
    NameKey key = nameKey(name, "");
    double start = now();
    bool found = readByKey(store, VANTREL_COMPARISON_GREATER_OR_EQUAL, BY_NAME, &key, sizeof key);
    for (; found && strcmp(lastRecord.fields.name, name) == 0; found = readNext(store))
        addRow(&table);
    double seconds = now() - start;
    printf("\nThe package named %s\n", name);
    printTable(&table);
    printSeconds(seconds, table.count, "packages");
    return readingWorks();
}

static bool askForLargest(Store *store, size_t count) {
    Table table = {.count = 0};
    double start = now();
    for (bool found = readFirst(store, BY_INSTALLED_SIZE); found; found = readNext(store)) {
        addRow(&table);
        if (table.count == count)
            break;
    }
    double seconds = now() - start;
    printf("\nThe %zu largest packages\n", count);
    printTable(&table);
    printSeconds(seconds, table.count, "packages");
    return readingWorks();
}

static bool askForSection(Store *store, const char *section) {
    Table table = {.count = 0};
    double start = now();
    bool found = readSection(store, section);
    for (; found && strcmp(lastRecord.fields.section, section) == 0; found = readNext(store)) {
        addRow(&table);
        if (table.count == TABLE_SIZE)
            break;
    }
    double seconds = now() - start;
    printf("\nThe first package of section %s and the next %d\n", section, TABLE_SIZE - 1);
    printTable(&table);
    printSeconds(seconds, table.count, "packages");
    return readingWorks();
}

/* Searching by maintainer ignores the case of letters. */
static bool askForMaintainer(Store *store, const char *maintainer) {
    char key[sizeof lastRecord.fields.maintainer];
    char found[sizeof key] = "";
    size_t count = 0;
    storeText(key, sizeof key, maintainer);
    double start = now();
    for (bool more = readByKey(store, VANTREL_COMPARISON_EQUAL, BY_MAINTAINER, key, sizeof key); more;
         more = readNext(store)) {
        if (count == 0)
            memcpy(found, lastRecord.fields.maintainer, sizeof found);
        else if (strcmp(lastRecord.fields.maintainer, found) != 0)
            break;
        count++;
    }
    double seconds = now() - start;
    printf("\nThe packages of %s\n", maintainer);
    if (count > 0)
        printf("  found under %s\n", found);
    printSeconds(seconds, count, "packages");
    return readingWorks();
}

/* Reads keys alone, which needs no record. */
static bool askForPrefix(Store *store, const char *prefix) {
    enum { SHOWN = 5 };
    NameKey keys[SHOWN], key = nameKey(prefix, "");
    size_t count = 0;
    double start = now();
    VantrelStatus status =
        VantrelFileKeyRetrieve(store->file, VANTREL_COMPARISON_GREATER_OR_EQUAL, BY_NAME, &key, sizeof key);
    while (status == VANTREL_STATUS_NO_ERROR && count < SHOWN) {
        keys[count++] = key;
        status = VantrelFileKeyRetrieveNext(store->file, &key, sizeof key);
    }
    double seconds = now() - start;
    printf("\nThe first keys at or after %s\n", prefix);
    for (size_t i = 0; i < count; i++)
        printf("  %s %s\n", keys[i].name, keys[i].version);
    printSeconds(seconds, count, "keys");
    if (status == VANTREL_STATUS_NO_ERROR || status == VANTREL_STATUS_END_OF_FILE)
        return true;
    return complainOfFile(store, "cannot read a key of");
}

/* The length of what follows the part of the current record that one read gives; -1 after a complaint. */
static int64_t readRest(Store *store) {
    static char chunk[65536];
    int64_t length = 0;
    int32_t offset = LONGEST_RECORD, got;
    do {
        got = VantrelFileRecordRetrieveChunk(store->file, offset, sizeof chunk, chunk, sizeof chunk,
                                             VANTREL_LOCK_MODE_NONE);
        VantrelStatus status = VantrelFileGetLastStatusCode(store->file);
        if (status == VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG)
            return length;
        if (got < 0 || status != VANTREL_STATUS_NO_ERROR) {
            complainOfFile(store, "cannot read a chunk of");
            return -1;
        }
        length += got;
        offset = -1;
    } while (got == (int32_t)sizeof chunk);
    return length;
}

static bool stepThrough(Store *store) {
    size_t count = 0, longRecords = 0;
    int64_t bytes = 0;
    double start = now();
    for (bool found = readFirst(store, VANTREL_INDEX_NONE); found; found = readNext(store)) {
        count++;
        bytes += lastLength;
        if (VantrelFileGetLastStatusCode(store->file) == VANTREL_STATUS_DATA_LENGTH_ERROR) {
            int64_t rest = readRest(store);
            if (rest < 0)
                return false;
            bytes += rest;
            longRecords++;
        }
        if (wasInterrupted())
            return false;
    }
    double seconds = now() - start;
    printf("\nA step through all records in physical order\n");
    printf("  %lld bytes in all; %zu records are longer than one read and were finished in chunks\n",
           (long long)bytes, longRecords);
    printSeconds(seconds, count, "records");
    return readingWorks();
}

static bool returnToPosition(Store *store, const char *name) {
    Table table = {.count = 0};
    double start = now();
    if (!readFromName(store, name))
        return readingWorks();
    addRow(&table);
    VantrelCursorPosition position = VantrelFileGetCursorPosition(store->file);
    if (position < 0)
        return complainOfFile(store, "cannot take a position in");
    if (readLast(store, BY_NAME))
        addRow(&table);
    if (readingWorks() && readAt(store, BY_NAME, position))
        addRow(&table);
    if (readingWorks() && readNext(store))
        addRow(&table);
    double seconds = now() - start;
    printf(
        "\nA position is kept at %s, left for the last package, and read again; then the one that follows\n",
        table.rows[0].name);
    printTable(&table);
    printSeconds(seconds, table.count, "reads");
    return readingWorks();
}

bool askQuestions(Store *store) {
    return askForName(store, "bash") && askForLargest(store, 10) && askForSection(store, "editors") &&
           askForMaintainer(store, "DEBIAN QA GROUP <PACKAGES@QA.DEBIAN.ORG>") &&
           askForPrefix(store, "python3-") && stepThrough(store) && returnToPosition(store, "bash") &&
           !wasInterrupted();
}
