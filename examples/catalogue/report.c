#include "report.h"

#include <stdarg.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

enum { BAR_WIDTH = 40 };

static void complainWith(const char *format, va_list arguments) {
    clearProgress();
    fflush(stdout);
    fprintf(stderr, "catalogue: ");
    vfprintf(stderr, format, arguments);
}

void complain(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    complainWith(format, arguments);
    va_end(arguments);
    fputc('\n', stderr);
}

bool complainOfStatus(const char *path, VantrelStatus status, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    complainWith(format, arguments);
    va_end(arguments);
    fprintf(stderr, " %s: %s (status %d)\n", path, VantrelStatusCodeToString(status), (int)status);
    return false;
}

double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

void printSeconds(double seconds, size_t count, const char *things) {
    printf("  %s: %zu, time: ", things, count);
    if (seconds < 1e-3)
        printf("%.1f us\n", seconds * 1e6);
    else if (seconds < 1)
        printf("%.2f ms\n", seconds * 1e3);
    else
        printf("%.2f s\n", seconds);
}

void printTime(double start, size_t count, const char *things) {
    printSeconds(now() - start, count, things);
}

static bool barIsShown;

void showProgress(size_t done, size_t total) {
    static const char filled[] = "########################################";
    static const char empty[] = "........................................";
    if (total == 0 || !isatty(STDOUT_FILENO))
        return;
    int width = done < total ? (int)(done * BAR_WIDTH / total) : BAR_WIDTH;
    printf("\r  [%.*s%.*s] %3zu %%  %zu of %zu", width, filled, BAR_WIDTH - width, empty, done * 100 / total,
           done, total);
    fflush(stdout);
    barIsShown = true;
    if (done >= total)
        clearProgress();
}

void clearProgress(void) {
    if (!barIsShown)
        return;
    printf("\r\033[K");
    fflush(stdout);
    barIsShown = false;
}
