#ifndef VANTREL_TEXT_UNKNOWN_H
#define VANTREL_TEXT_UNKNOWN_H

namespace vantrel {

// The text of every number without a meaning.
inline constexpr char unknownText[] = "Unknown";

}  // namespace vantrel

#endif
