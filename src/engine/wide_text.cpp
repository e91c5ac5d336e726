#include "engine/wide_text.h"

#include <cstdlib>

namespace vantrel {

// Zero-filled, so that a text whose conversion stops at an unconvertible character is terminated there.
NarrowText::NarrowText(const wchar_t *wideText) : text_{} {
    wcstombs(text_, wideText, sizeof text_);
}

}  // namespace vantrel
