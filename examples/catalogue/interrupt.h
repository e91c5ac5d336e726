#ifndef CATALOGUE_INTERRUPT_H
#define CATALOGUE_INTERRUPT_H

#include <stdbool.h>

/* From now on a request to end (Ctrl-C, a hangup) is only noted, so that the program can tidy up first, and
 * a closed pipe or a file at its largest size is an error like any other. */
void noteInterrupts(void);

bool wasInterrupted(void);

#endif
