#ifndef VANTREL_TESTS_EMBEDDED_MODEL_STEP_TEXT_H
#define VANTREL_TESTS_EMBEDDED_MODEL_STEP_TEXT_H

#include <string>

#include "step.h"

namespace vantrel::test {

bool isRead(Action action);

std::string hexText(const Bytes &bytes);
std::string describe(const Step &step);
std::string describe(const IndexDefinition &index);
std::string describe(const FileDefinition &file);

}  // namespace vantrel::test

#endif
