#ifndef VANTREL_TESTS_EMBEDDED_MODEL_RANDOM_SOURCE_H
#define VANTREL_TESTS_EMBEDDED_MODEL_RANDOM_SOURCE_H

#include <cstdint>
#include <random>
#include <vector>

namespace vantrel::test {

// The same numbers for the same seed on every platform, which the standard distributions do not promise.
class RandomSource {
  public:
    explicit RandomSource(uint64_t seed) : generator_(seed) {}

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(generator_() % limit); }
    bool percent(uint32_t chance) { return below(100) < chance; }

    template <typename Value>
    const Value &pick(const std::vector<Value> &values) {
        return values[below(static_cast<uint32_t>(values.size()))];
    }

  private:
    std::mt19937_64 generator_;
};

}  // namespace vantrel::test

#endif
