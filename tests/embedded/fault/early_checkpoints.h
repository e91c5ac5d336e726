#ifndef VANTREL_TESTS_EMBEDDED_FAULT_EARLY_CHECKPOINTS_H
#define VANTREL_TESTS_EMBEDDED_FAULT_EARLY_CHECKPOINTS_H

namespace vantrel::test {

// From here on every file that this process opens brings its log into the file in each commit of more than a
// page, rather than in one of thousands.
void checkpointEarly();

}  // namespace vantrel::test

#endif
