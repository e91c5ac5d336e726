#ifndef VANTREL_ENGINE_WIDE_TEXT_H
#define VANTREL_ENGINE_WIDE_TEXT_H

#include <cstdint>
#include <cwchar>

namespace vantrel {

inline constexpr uint32_t narrowTextSize = 4096;

// A text argument of a wide-character function, converted to multibyte text in the current locale.
class NarrowText {
  public:
    explicit NarrowText(const wchar_t *wideText);

    // False where the converted text and its terminator needed more than narrowTextSize bytes.
    bool fits() const { return text_[narrowTextSize - 1] == '\0'; }
    const char *get() const { return text_; }

  private:
    char text_[narrowTextSize];
};

}  // namespace vantrel

#endif
