#include "embedded/operation/extended_fixture.h"

namespace {

using namespace vantrel::test;

constexpr uint16_t systemDataVersion2 = 0x4200;
constexpr uint16_t systemFieldLength = 0xFF08, createTimeOffset = 0xFFFE, updateTimeOffset = 0xFFFB;
constexpr int32_t createTimeIndex = 125, updateTimeIndex = 124;

// Records a to f in the order of their creation; d and b were updated later.
class ExtendedTimeTest : public ExtendedFixture {
  protected:
    ExtendedTimeTest() {
        EXPECT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(session.create(path, createRequest(2, systemDataVersion2, {{{0, 1}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (const char *record : {"a1", "b1", "c1", "d1", "e1", "f1"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
        for (const char *record : {"d2", "b2"}) {
            EXPECT_EQ(session.call(5, &block, "", std::string(record, 1), 0, 2).status, 0);
            EXPECT_EQ(session.call(3, &block, record, "", -1).status, 0);
        }
    }

    std::string timeOf(const char *letter, size_t place) {
        EXPECT_EQ(session.call(5, &block, "", letter, 0, 2).status, 0);
        return session.call(22, &block, "SysD" + std::string(20, '\0'), "", -3).data.substr(place, 8);
    }
    TermFields onCreation(uint8_t comparison, const char *letter, uint8_t connector = 0) {
        return {20, systemFieldLength, createTimeOffset, comparison, timeOf(letter, 8), connector, ""};
    }
    TermFields onUpdate(uint8_t comparison, const char *letter, uint8_t connector = 0) {
        return {20, systemFieldLength, updateTimeOffset, comparison, timeOf(letter, 16), connector, ""};
    }
    // Gives up at the first record that is examined in vain.
    std::string runWithoutRejects(uint32_t operation, const char *signature, std::vector<TermFields> terms,
                                  int32_t index) {
        RequestFields fields = request(signature, std::move(terms));
        fields.rejectLimit = 1;
        return run(operation, fields, index);
    }
};

TEST_F(ExtendedTimeTest, BoundsOnTheCreationTimeBoundItsIndex) {
    EXPECT_EQ(runWithoutRejects(36, "FI", {onCreation(atLeast, "e")}, createTimeIndex), "ef 9");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onCreation(greaterThan, "b", joinAnd), onCreation(lessThan, "e")},
                                createTimeIndex),
              "cd 64");
    EXPECT_EQ(runWithoutRejects(37, "LA", {onCreation(atMost, "c", joinAnd), onCreation(greaterThan, "a")},
                                createTimeIndex),
              "cb 64");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onCreation(equalTo, "d")}, createTimeIndex), "d 64");
}

TEST_F(ExtendedTimeTest, BoundsOnTheUpdateTimeBoundItsIndex) {
    EXPECT_EQ(runWithoutRejects(36, "FI", {onUpdate(atLeast, "f")}, updateTimeIndex), "fdb 9");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onUpdate(lessThan, "e")}, updateTimeIndex), "ac 64");
    RequestFields fields = request("FI", {onUpdate(greaterThan, "f", joinAnd), onUpdate(lessThan, "b")});
    fields.entries.clear();
    fields.rejectLimit = 1;
    EXPECT_EQ(session.call(85, &block, fields.bytes(), "", updateTimeIndex, 4096).status, 64);
    EXPECT_EQ(letters(), "abcef");
}

TEST_F(ExtendedTimeTest, OtherFieldsBoundNothingThere) {
    EXPECT_EQ(runWithoutRejects(36, "FI", {onUpdate(atLeast, "e")}, createTimeIndex), " 60");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onCreation(atLeast, "e")}, updateTimeIndex), " 60");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onLetter(atLeast, 'e')}, createTimeIndex), " 60");
    EXPECT_EQ(runWithoutRejects(36, "FI", {onCreation(atLeast, "e")}, 0), " 60");
}

}  // namespace
