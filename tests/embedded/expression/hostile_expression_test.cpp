#include <gtest/gtest.h>

#include <vector>

#include "embedded/expression/extended_request.h"
#include "embedded/expression/request.h"
#include "embedded/key/random_source.h"
#include "embedded/status_error.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

std::vector<EntryFields> joined(std::vector<EntryFields> first, const std::vector<EntryFields> &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// A request with a term and an item of every kind.
RequestFields everything() {
    RequestFields fields;
    fields.terms = {
        {0, 4, 2, equalTo | blockFlag, "abcd", joinAnd, collationBlock("UPPER")},
        {0, 4, 2, atLeast | blockFlag, "abcd", joinOr, shortNameBlock("LATIN1")},
        {11, 8, 2, patternFlag | blockFlag, patternComparand(1, "a%_\\%b"), joinAnd, codePageBlock("UTF-8")},
        {26, 8, 2, patternFlag, patternComparand(2, "a%"), joinAnd, ""},
        {10, 8, 2, patternFlag | caseFlag, patternComparand(3, "^(a|[b-d]{1,2})+$"), joinOr, ""},
        {5, 3, 1, lessThan | fieldFlag, fieldComparand(4), joinAnd, ""},
        {32, 0xFF08, 0xFFFB, notEqualTo, "12345678", 0, ""}};
    fields.entries =
        joined(joined({{4, 0}, {0xFF08, 0xFFFE}}, functionEntries(6, "RO", {3, 1}, 1)),
               joined(joined(functionEntries(9, "CE", {4, 0}), functionEntries(8, "TR", {4, 0}, -2)),
                      joined(aggregateEntries(2, "MI", {4, 3}), aggregateEntries(17, "MA", {4, 2}))));
    return fields;
}

// The status that decoding ends with; a request that is accepted is run on a record. The buffer has no byte
// to spare, so that a sanitizer sees every access beyond it.
int32_t tryRequest(ByteView request, ByteView record) {
    std::vector<char> exact(request.begin(), request.end());
    try {
        ExtendedRequest decoded =
            decodeExtendedRequest(ByteView(exact.data(), exact.size()), {}, {false, false});
        RecordView view{record, 1, 2};
        decoded.filter.passes(view);
        std::vector<uint8_t> reply(decoded.extractor.longest());
        decoded.extractor.extract(view, reply.data());
        decoded.extractor.accumulate(view);
        EXPECT_LE(decoded.extractor.extractAggregates(reply.data()), reply.size());
    } catch (const StatusError &error) {
        return error.status;
    }
    return 0;
}

bool isRefusal(int32_t status) {
    return status == 22 || status == 61 || status == 62 || status == 65 || status == 136;
}

TEST(HostileExpression, ARequestWithEverythingIsAccepted) {
    EXPECT_EQ(tryRequest(everything().bytes(), "xx4444abcd"), 0);
}

TEST(HostileExpression, EveryTruncationIsRefused) {
    Bytes whole = everything().bytes();
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_TRUE(isRefusal(tryRequest(ByteView(whole).substr(0, length), "record"))) << length;
}

TEST(HostileExpression, DamagedRequestsAreRefusedOrRun) {
    RandomSource random;
    const Bytes whole = everything().bytes();
    size_t accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes damaged = whole;
        for (size_t changes = 1 + random.below(4); changes > 0; --changes)
            damaged[random.below(damaged.size())] = static_cast<char>(random.below(256));
        int32_t status = tryRequest(damaged, random.bytes(random.below(20)));
        EXPECT_TRUE(status == 0 || isRefusal(status)) << status;
        accepted += status == 0;
    }
    EXPECT_GT(accepted, 100u);
}

TEST(HostileExpression, RandomRecordsAreExaminedToTheirEnd) {
    RandomSource random;
    const Bytes whole = everything().bytes();
    for (int round = 0; round < 2000; ++round)
        EXPECT_EQ(tryRequest(whole, random.bytes(random.below(24))), 0);
}

TEST(HostileExpression, RandomRegularExpressionsAreRefusedOrRun) {
    RandomSource random;
    for (int round = 0; round < 3000; ++round) {
        std::string pattern;
        for (size_t length = random.below(24); length > 0; --length)
            pattern.push_back(random.oneOf("ab.()[]^$|*+?{},12\\-:="));
        RequestFields fields;
        fields.terms = {{0, 6, 0, patternFlag, patternComparand(3, pattern), 0, ""}};
        int32_t status = tryRequest(fields.bytes(), random.bytes(6));
        EXPECT_TRUE(status == 0 || status == 62) << pattern;
    }
}

}  // namespace
