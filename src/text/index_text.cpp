#include "text/unknown.h"
#include "vantrel.h"

using namespace vantrel;

namespace {

constexpr int32_t indexCount = VANTREL_INDEX_MAXIMUM + 1;

// Decimal numbers from 1 on, in the order of the indexes.
struct IndexTexts {
    char texts[indexCount][sizeof "119"];
};

constexpr IndexTexts makeIndexTexts() {
    IndexTexts table{};
    for (int32_t index = 0; index < indexCount; ++index) {
        char *text = table.texts[index];
        int32_t number = index + 1;
        if (number >= 100)
            *text++ = static_cast<char>('0' + number / 100);
        if (number >= 10)
            *text++ = static_cast<char>('0' + number / 10 % 10);
        *text = static_cast<char>('0' + number % 10);
    }
    return table;
}

constexpr IndexTexts indexTexts = makeIndexTexts();

}  // namespace

const char *VantrelIndexToString(VantrelIndex index) {
    switch (index) {
        case VANTREL_INDEX_NONE:
            return "None";
        case VANTREL_INDEX_SYSTEM_VERSION_2:
            return "System Version 2";
        case VANTREL_INDEX_SYSTEM:
            return "System";
        default:
            return index >= 0 && index < indexCount ? indexTexts.texts[index] : unknownText;
    }
}
