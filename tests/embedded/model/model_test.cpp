#include <gtest/gtest.h>

#include <cstdlib>

#include "sequence.h"
#include "tests/embedded/emulation.h"

// The engine against the model: random sequences of requests with a tiny key space. VANTREL_SEED chooses the
// first seed and VANTREL_SEQUENCES how many follow from there; sanitizers slow them down, so they get fewer.

namespace {

using namespace vantrel::test;

uint64_t numberFromEnvironment(const char *name, uint64_t otherwise) {
    const char *text = getenv(name);
    return text == nullptr ? otherwise : strtoull(text, nullptr, 10);
}

class EngineModel : public testing::TestWithParam<int> {};

constexpr int partCount = 10;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr uint64_t defaultSequenceCount = 2000;
#else
const uint64_t defaultSequenceCount = rounds<uint64_t>(10000, 200);
#endif
constexpr uint32_t sequenceLength = 100;

// Divided into parts, so that they can run side by side.
TEST_P(EngineModel, AnswersLikeTheModel) {
    uint64_t firstSeed = numberFromEnvironment("VANTREL_SEED", 1);
    uint64_t count = numberFromEnvironment("VANTREL_SEQUENCES", defaultSequenceCount);
    for (uint64_t seed = firstSeed; seed < firstSeed + count; ++seed) {
        if (seed % partCount != static_cast<uint64_t>(GetParam()))
            continue;
        Sequence sequence = randomSequence(seed, sequenceLength);
        if (!firstDifference(sequence).empty())
            FAIL() << "VANTREL_SEED=" << seed << " VANTREL_SEQUENCES=1\n" << report(minimised(sequence));
    }
}

INSTANTIATE_TEST_SUITE_P(Shard, EngineModel, testing::Range(0, partCount));

}  // namespace
