#ifndef VANTREL_TESTS_EMBEDDED_MODEL_SEQUENCE_H
#define VANTREL_TESTS_EMBEDDED_MODEL_SEQUENCE_H

#include <string>

#include "step.h"

namespace vantrel::test {

struct Sequence {
    FileDefinition file;
    std::vector<Step> steps;
};

Sequence randomSequence(uint64_t seed, uint32_t length);

// Runs the sequence through library and model side by side, with a walk through everything at its end. Gives
// the first difference, and nothing where there is none.
std::string firstDifference(const Sequence &sequence);

// The sequence without the steps that its difference does not need.
Sequence minimised(const Sequence &sequence);

// All that it takes to understand a difference: file, steps with their outcomes, and what differs.
std::string report(const Sequence &sequence);

}  // namespace vantrel::test

#endif
