#ifndef VANTREL_ENGINE_WIDE_TEXT_H
#define VANTREL_ENGINE_WIDE_TEXT_H

#include <climits>
#include <cstdint>
#include <cwchar>

#include "engine/records.h"
#include "engine/status.h"

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
    // With room for a character that crosses the limit: one that is left out would leave a shorter name.
    char text_[narrowTextSize + MB_LEN_MAX];
};

// Calls the narrow form of a wide-character function. A text that is missing or does not fit is kept as the
// client's status and returned instead.
template <class Call>
VantrelStatus withNarrowText(VantrelClient *client, const wchar_t *wideText, Call call) {
    if (wideText == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    NarrowText text(wideText);
    if (!text.fits())
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_OPTION);
    return call(text.get());
}

}  // namespace vantrel

#endif
