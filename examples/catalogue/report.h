#ifndef CATALOGUE_REPORT_H
#define CATALOGUE_REPORT_H

#include <stdbool.h>
#include <stddef.h>
#include <vantrel.h>

/* Writes a message to the standard error stream, behind the program's name. */
void complain(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* The same about a file and a status; returns false, for callers that give up. */
bool complainOfStatus(const char *path, VantrelStatus status, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

/* Seconds on a clock that only goes forward. */
double now(void);

/* A line such as "  packages: 3, time: 1.20 ms" for work that began at `start` and took until now. */
void printTime(double start, size_t count, const char *things);

/* The same for work that took so many seconds. */
void printSeconds(double seconds, size_t count, const char *things);

/* A bar that shows how far something is, on terminals only; the last call has done equal to total. */
void showProgress(size_t done, size_t total);

/* Removes a bar that has not reached its end. */
void clearProgress(void);

#endif
