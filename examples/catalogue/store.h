#ifndef CATALOGUE_STORE_H
#define CATALOGUE_STORE_H

#include <stdbool.h>
#include <stddef.h>
#include <vantrel.h>

#include "package.h"

/* The file of packages. */
typedef struct {
    const char *path;
    VantrelClient *client;
    VantrelFile *file;
    bool exists; /* made by this run, and so this run's to delete */
} Store;

/* The indexes of the file. */
enum {
    BY_NAME, /* and version; unique */
    BY_SECTION,
    BY_INSTALLED_SIZE, /* the largest first */
    BY_MAINTAINER,     /* whatever the case of its letters */
    INDEX_COUNT
};

/* What the statistics call them. */
extern const char *const indexNames[INDEX_COUNT];

/* The functions that return bool complain when it is false. */

/* Makes the file with the first index and opens it. A file of packages that is there already is replaced, a
 * file of another kind is not. */
bool createStore(Store *store, const char *path);

/* Adds the other indexes, over the records that are there by then. */
bool addIndexes(Store *store);

/* Closes the file, after abandoning what is under way, and deletes it unless it is kept. */
void endStore(Store *store, bool isKept);

bool beginTransaction(Store *store);
bool endTransaction(Store *store);
bool abortTransaction(Store *store);

/* Inserts a record; a text too long for one request follows in chunks. Returns the status. */
VantrelStatus insertPackage(Store *store, const PackageFields *fields, const char *text, size_t length);

/* Complains of the file's last status and returns false. */
bool complainOfFile(const Store *store, const char *doing);

#endif
