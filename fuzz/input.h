#ifndef VANTREL_FUZZ_INPUT_H
#define VANTREL_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vantrel::fuzz {

// The fuzzer's bytes, taken from the front; zeros when they have run out.
class Input {
  public:
    Input() = default;
    Input(const uint8_t *bytes, size_t size) : bytes_(bytes), size_(size) {}

    bool isEmpty() const { return size_ == 0; }

    // Copies as many bytes as there are, and says how many.
    size_t take(void *target, size_t size) {
        size_t count = std::min(size, size_);
        if (count == 0)
            return 0;
        memcpy(target, bytes_, count);
        bytes_ += count;
        size_ -= count;
        return count;
    }

    template <class Number>
    Number number() {
        Number value = 0;
        take(&value, sizeof value);
        return value;
    }

    template <class Value, size_t count>
    Value choose(const Value (&values)[count]) {
        return values[number<uint8_t>() % count];
    }

  private:
    const uint8_t *bytes_ = nullptr;
    size_t size_ = 0;
};

}  // namespace vantrel::fuzz

#endif
