#ifndef VANTREL_TESTS_EMBEDDED_MODEL_COMPARISON_H
#define VANTREL_TESTS_EMBEDDED_MODEL_COMPARISON_H

#include "library.h"

namespace vantrel::test {

// How the outcome of a step differs from what the model expects; empty when it does not.
std::string difference(const Step &step, const Expected &expected, const Observed &observed);

}  // namespace vantrel::test

#endif
