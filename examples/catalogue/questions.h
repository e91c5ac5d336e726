#ifndef CATALOGUE_QUESTIONS_H
#define CATALOGUE_QUESTIONS_H

#include "store.h"

/* Asks the file what it knows and prints the answers. */
bool askQuestions(Store *store);

/* Finds packages by how far into an order they stand. */
bool askForPlaces(Store *store);

/* Reads, inserts and deletes many records with one request each. */
bool showBulk(Store *store);

/* Makes a long record, changes it chunk by chunk and deletes it. */
bool showLongRecord(Store *store);

/* Changes a few records, shows what each change does and takes it back. */
bool showChanges(Store *store);

/* Prints what the engine reports of the file. */
bool showStatistics(Store *store);

#endif
