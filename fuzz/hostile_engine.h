#ifndef VANTREL_FUZZ_HOSTILE_ENGINE_H
#define VANTREL_FUZZ_HOSTILE_ENGINE_H

#include "input.h"

namespace vantrel::fuzz {

// What the engine answers with from now on: it stays within the buffers it is offered, but status, reply
// length and every byte are the input's.
void answerWith(Input *input);

}  // namespace vantrel::fuzz

#endif
