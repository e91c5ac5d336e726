#include "comparison.h"

#include <algorithm>

#include "step_text.h"

namespace vantrel::test {

namespace {

std::string statusDifference(const Expected &expected, const Observed &observed) {
    if (expected.accepts(observed.status))
        return "";
    std::string text = "status " + std::to_string(observed.status) + " instead of";
    for (VantrelStatus status : expected.statuses)
        text += " " + std::to_string(status);
    return text;
}

std::string bytesDifference(const std::string &what, const Bytes &expected, const Bytes &observed) {
    if (expected == observed)
        return "";
    return what + " " + hexText(observed) + " instead of " + hexText(expected);
}

std::string numberDifference(const std::string &what, int64_t expected, int64_t observed) {
    if (expected == observed)
        return "";
    return what + " " + std::to_string(observed) + " instead of " + std::to_string(expected);
}

// The bytes delivered stand in front of what the caller's buffer held.
Bytes withFront(Bytes buffer, const Bytes &front) {
    std::copy(front.begin(), front.end(), buffer.begin());
    return buffer;
}

std::string keyDifference(const Step &step, const Expected &expected, const Observed &observed) {
    Bytes key = step.key;
    Bytes written = expected.key;
    written.resize(std::min(written.size(), key.size()));
    key = withFront(key, written);
    key.insert(key.end(), guardLength, guardByte);
    return bytesDifference("key", key, observed.key);
}

std::string proportionDifference(const Step &step, const Expected &expected, const Observed &observed) {
    std::string text = keyDifference(step, expected, observed);
    if (!text.empty())
        return text;
    return numberDifference("proportion", observed.status == 0 ? expected.value : -1, observed.value);
}

std::string readDifference(const Step &step, const Expected &expected, const Observed &observed) {
    std::string text = keyDifference(step, expected, observed);
    if (!text.empty())
        return text;
    Bytes record(static_cast<size_t>(step.recordSize) + guardLength, guardByte);
    text = bytesDifference("record", withFront(record, expected.record), observed.record);
    if (!text.empty())
        return text;
    bool failed = observed.status != 0 && observed.status != VANTREL_STATUS_DATA_LENGTH_ERROR;
    bool returnsLength = !step.readsKeyAlone;
    return numberDifference("length", failed && returnsLength ? -1 : expected.value, observed.value);
}

std::string insertDifference(const Expected &expected, const Observed &observed) {
    if (observed.status != 0 || observed.insertedAddress > expected.addressAbove)
        return "";
    return "address " + std::to_string(observed.insertedAddress) + " not above " +
           std::to_string(expected.addressAbove);
}

std::string indexDifference(const IndexStatistics &expected, const IndexStatistics &observed) {
    if (expected.number == observed.number && expected.definition == observed.definition)
        return numberDifference("unique count of index " + std::to_string(expected.number),
                                expected.uniqueCount, observed.uniqueCount);
    return "index " + std::to_string(observed.number) + " " + describe(observed.definition) + " instead of " +
           std::to_string(expected.number) + " " + describe(expected.definition);
}

std::string informationDifference(const Expected &expected, const Observed &observed) {
    std::string text = numberDifference("record count", expected.recordCount, observed.recordCount);
    if (text.empty())
        text = numberDifference("index count", static_cast<int64_t>(expected.indexes.size()),
                                static_cast<int64_t>(observed.indexes.size()));
    for (size_t i = 0; text.empty() && i < expected.indexes.size(); ++i)
        text = indexDifference(expected.indexes[i], observed.indexes[i]);
    return text;
}

}  // namespace

std::string difference(const Step &step, const Expected &expected, const Observed &observed) {
    std::string text = statusDifference(expected, observed);
    if (!text.empty())
        return text;
    if (isRead(step.action))
        return readDifference(step, expected, observed);
    if (step.action == Action::getProportion)
        return proportionDifference(step, expected, observed);
    if (step.action == Action::insert)
        return insertDifference(expected, observed);
    if (step.action == Action::information)
        return informationDifference(expected, observed);
    if (step.action == Action::getPosition)
        return numberDifference("address", observed.status == 0 ? expected.value : -1, observed.value);
    return "";
}

}  // namespace vantrel::test
