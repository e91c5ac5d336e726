#ifndef VANTREL_TESTS_EMBEDDED_EMULATION_H
#define VANTREL_TESTS_EMBEDDED_EMULATION_H

#include <cstdlib>

namespace vantrel::test {

// Under an emulator, which VANTREL_EMULATED tells of, everything takes many times longer.
inline bool isEmulated() {
    return getenv("VANTREL_EMULATED") != nullptr;
}

// How often something is repeated.
template <class Number>
Number rounds(Number usually, Number emulated) {
    return isEmulated() ? emulated : usually;
}

}  // namespace vantrel::test

#endif
