#include "step_text.h"

#include <cstdio>

namespace vantrel::test {

namespace {

std::string nameOf(Action action) {
    static const char *const names[] = {
        "insert",    "update",      "delete",      "retrieve",    "first",        "last",
        "next",      "previous",    "getPosition", "byPosition",  "byProportion", "proportion",
        "begin",     "end",         "abort",       "open",        "close",        "createIndex",
        "dropIndex", "information", "walkForward", "walkBackward"};
    return names[static_cast<size_t>(action)];
}

std::string nameOf(VantrelComparison comparison) {
    switch (comparison) {
        case VANTREL_COMPARISON_EQUAL:
            return "=";
        case VANTREL_COMPARISON_GREATER:
            return ">";
        case VANTREL_COMPARISON_LESS:
            return "<";
        case VANTREL_COMPARISON_GREATER_OR_EQUAL:
            return ">=";
        default:
            return "<=";
    }
}

bool namesIndex(Action action) {
    return (isRead(action) && action != Action::next && action != Action::previous) ||
           action == Action::getProportion || action == Action::createIndex || action == Action::dropIndex ||
           action == Action::walkForward || action == Action::walkBackward;
}

std::string describeRead(const Step &step) {
    std::string text;
    if (step.action == Action::retrieve)
        text += " " + nameOf(step.comparison);
    if (step.action == Action::retrieveByPosition)
        text += " address choice " + std::to_string(step.addressChoice);
    if (step.action == Action::retrieveByProportion)
        text += " at " + std::to_string(step.numerator) + "/" + std::to_string(step.denominator);
    text += step.hasKey ? " key " + hexText(step.key) : " no key";
    if (step.isKeyOnly)
        return text + (step.readsKeyAlone ? " key alone" : " key only");
    return text + " size " + std::to_string(step.recordSize);
}

}  // namespace

std::string hexText(const Bytes &bytes) {
    std::string text;
    char digits[3];
    for (uint8_t byte : bytes) {
        snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

bool isRead(Action action) {
    return (action >= Action::retrieve && action <= Action::previous) ||
           action == Action::retrieveByPosition || action == Action::retrieveByProportion;
}

std::string describe(const IndexDefinition &index) {
    std::string text = index.isUnique ? "unique" : "duplicates";
    if (!index.isModifiable)
        text += " fixed";
    text += " nulls " + std::to_string(index.nullKeyMode);
    text += " collation " + std::to_string(static_cast<int>(index.collation));
    for (const SegmentDefinition &segment : index.segments) {
        text += " [" + std::to_string(segment.offset) + "+" + std::to_string(segment.length) + " type " +
                std::to_string(segment.type) + (segment.isDescending ? " descending" : "") + " null " +
                std::to_string(segment.nullValue) + "]";
    }
    return text;
}

std::string describe(const Step &step) {
    std::string text =
        "session " + std::to_string(step.session()) + " handle " + std::to_string(step.handle) + ": ";
    text += nameOf(step.action);
    if (namesIndex(step.action))
        text += " index " + std::to_string(step.index);
    if (isRead(step.action))
        text += describeRead(step);
    if (step.action == Action::getProportion)
        text += " address choice " + std::to_string(step.addressChoice) + " of " +
                std::to_string(step.denominator) + (step.hasKey ? " key " + hexText(step.key) : " own key");
    if (step.action == Action::insert || step.action == Action::update)
        text += " " + hexText(step.record);
    if (step.action == Action::begin)
        text += " mode " + std::to_string(step.transactionMode);
    if (step.action == Action::createIndex)
        text += " " + describe(step.indexDefinition);
    return text;
}

std::string describe(const FileDefinition &file) {
    std::string text = "file: record length " + std::to_string(file.fixedLength);
    text += file.isVariable ? " and more\n" : "\n";
    for (const auto &[number, index] : file.indexes)
        text += "  index " + std::to_string(number) + ": " + describe(index) + "\n";
    return text;
}

}  // namespace vantrel::test
