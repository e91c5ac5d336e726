#ifndef CATALOGUE_READING_H
#define CATALOGUE_READING_H

#include "store.h"

/* The record that the functions below read last, and its length. */
extern PackageRecord lastRecord;
extern int32_t lastLength;

/* Whether a read found a record; false with lastLength 0 where there is none, and with lastLength -1, after a
 * complaint, where it failed. */
bool readByKey(Store *store, VantrelComparison comparison, VantrelIndex index, void *key, size_t keyLength);
bool readFirst(Store *store, VantrelIndex index);
bool readLast(Store *store, VantrelIndex index);
bool readNext(Store *store);
bool readAt(Store *store, VantrelIndex index, VantrelCursorPosition position);

/* The record at a place in an index, in hundredths of a percent. */
bool readAtPlace(Store *store, VantrelIndex index, uint32_t place);

/* The first record whose name is not before the given one; the first of all where that is none. */
bool readFromName(Store *store, const char *name);

/* The first record of a section. */
bool readSection(Store *store, const char *section);

/* Whether the last read found a record or none, and did not fail. */
bool readingWorks(void);

/* The number of packages in a section; -1 after a complaint. */
long countSection(Store *store, const char *section);

/* Prints that number. */
bool showSection(Store *store, const char *when, const char *section);

/* A few packages to be printed. */
enum { TABLE_SIZE = 21 };
typedef struct {
    PackageFields rows[TABLE_SIZE];
    size_t count;
} Table;

void addRow(Table *table);
void printTable(const Table *table);

#endif
