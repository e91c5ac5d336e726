#include "reading.h"

#include <stdio.h>
#include <string.h>

PackageRecord lastRecord;
int32_t lastLength;

/* Keeps what a read gave. A record that was cut is one that was found. */
static bool keep(Store *store, int32_t length) {
    VantrelStatus status = VantrelFileGetLastStatusCode(store->file);
    if (length >= (int32_t)sizeof(PackageFields)) {
        lastLength = length;
        return true;
    }
    lastLength = 0;
    if (status == VANTREL_STATUS_KEY_VALUE_NOT_FOUND || status == VANTREL_STATUS_END_OF_FILE)
        return false;
    lastLength = -1;
    return complainOfFile(store, "cannot read");
}

bool readByKey(Store *store, VantrelComparison comparison, VantrelIndex index, void *key, size_t keyLength) {
    return keep(store, VantrelFileRecordRetrieve(store->file, comparison, index, key, (int32_t)keyLength,
                                                 &lastRecord, sizeof lastRecord, VANTREL_LOCK_MODE_NONE));
}

bool readFirst(Store *store, VantrelIndex index) {
    return keep(store, VantrelFileRecordRetrieveFirst(store->file, index, NULL, 0, &lastRecord,
                                                      sizeof lastRecord, VANTREL_LOCK_MODE_NONE));
}

bool readLast(Store *store, VantrelIndex index) {
    return keep(store, VantrelFileRecordRetrieveLast(store->file, index, NULL, 0, &lastRecord,
                                                     sizeof lastRecord, VANTREL_LOCK_MODE_NONE));
}

bool readNext(Store *store) {
    return keep(store, VantrelFileRecordRetrieveNext(store->file, NULL, 0, &lastRecord, sizeof lastRecord,
                                                     VANTREL_LOCK_MODE_NONE));
}

bool readAt(Store *store, VantrelIndex index, VantrelCursorPosition position) {
    return keep(store,
                VantrelFileRecordRetrieveByCursorPosition(store->file, index, position, NULL, 0, &lastRecord,
                                                          sizeof lastRecord, VANTREL_LOCK_MODE_NONE));
}

bool readFromName(Store *store, const char *name) {
    NameKey key = nameKey(name, "");
    return readByKey(store, VANTREL_COMPARISON_GREATER_OR_EQUAL, BY_NAME, &key, sizeof key) ||
           (readingWorks() && readFirst(store, BY_NAME));
}

bool readSection(Store *store, const char *section) {
    char key[sizeof lastRecord.fields.section];
    storeText(key, sizeof key, section);
    return readByKey(store, VANTREL_COMPARISON_EQUAL, BY_SECTION, key, sizeof key);
}

bool readAtPlace(Store *store, VantrelIndex index, uint32_t place) {
    return keep(store, VantrelFileRecordRetrieveByPercentage(store->file, index, place, NULL, 0, &lastRecord,
                                                             sizeof lastRecord, VANTREL_LOCK_MODE_NONE));
}

bool readingWorks(void) {
    return lastLength >= 0;
}

long countSection(Store *store, const char *section) {
    long count = 0;
    for (bool found = readSection(store, section); found && strcmp(lastRecord.fields.section, section) == 0;
         found = readNext(store))
        count++;
    return readingWorks() ? count : -1;
}

bool showSection(Store *store, const char *when, const char *section) {
    long count = countSection(store, section);
    if (count >= 0)
        printf("  %-24s section %s has %ld packages\n", when, section, count);
    return count >= 0;
}

void addRow(Table *table) {
    if (table->count < TABLE_SIZE)
        table->rows[table->count++] = lastRecord.fields;
}

void printTable(const Table *table) {
    if (table->count > 0)
        printf("  %-40s %-26s %-14s %9s\n", "NAME", "VERSION", "SECTION", "KIB");
    for (size_t i = 0; i < table->count; i++) {
        const PackageFields *row = &table->rows[i];
        printf("  %-40.40s %-26.26s %-14.14s %9u\n", row->name, row->version, row->section,
               (unsigned)loadNumber(row->installedSize));
    }
}
