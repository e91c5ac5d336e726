#ifndef CATALOGUE_LOAD_H
#define CATALOGUE_LOAD_H

#include "lists.h"
#include "store.h"

/* What the lists hold. */
typedef struct {
    size_t entries;
    size_t bytes;
} Contents;

/* Reads all lists, to find damage before a file is made. */
bool checkLists(const Lists *lists, Contents *contents);

/* Inserts every package. An entry whose name and version are there already is counted and left out. */
bool loadLists(Store *store, const Lists *lists, const Contents *contents);

#endif
