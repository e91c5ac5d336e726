#ifndef VANTREL_TESTS_EMBEDDED_KEY_RANDOM_SOURCE_H
#define VANTREL_TESTS_EMBEDDED_KEY_RANDOM_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "embedded/key/definition.h"

// Random input that can be had again: the seed is printed, and VANTREL_SEED sets it.
class RandomSource {
  public:
    RandomSource() : RandomSource(chooseSeed()) {}

    explicit RandomSource(uint32_t seed) : engine(seed) { printf("VANTREL_SEED=%u\n", seed); }

    size_t below(size_t limit) { return static_cast<size_t>(engine()) % limit; }

    char oneOf(vantrel::embedded::ByteView bytes) { return bytes[below(bytes.size())]; }

    vantrel::embedded::Bytes bytes(size_t count) {
        vantrel::embedded::Bytes result;
        while (result.size() < count)
            result.push_back(static_cast<char>(below(256)));
        return result;
    }

  private:
    static uint32_t chooseSeed() {
        const char *text = getenv("VANTREL_SEED");
        return text == nullptr ? std::random_device()() : static_cast<uint32_t>(strtoul(text, nullptr, 10));
    }

    std::mt19937 engine;
};

#endif
