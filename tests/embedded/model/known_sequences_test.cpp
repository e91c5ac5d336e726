#include <gtest/gtest.h>

#include "sequence.h"

// Short sequences that random ones found to be worth keeping, each against the model. Handles 0 and 1 belong
// to one session, 2 and 3 to another.

namespace {

using namespace vantrel::test;

constexpr int32_t recordSize = 4;

// The record's first byte is the key of index 0, which has no duplicates.
FileDefinition fileWithIndex() {
    FileDefinition file;
    file.fixedLength = recordSize;
    file.indexes[0] = {.segments = {{0, 1, VANTREL_DATA_TYPE_CHAR}}, .isUnique = true};
    return file;
}

Step step(Action action, uint32_t handle) {
    return {.action = action, .handle = handle};
}

Step insert(uint32_t handle, uint8_t key) {
    return {.action = Action::insert, .handle = handle, .record = {key, 0, 0, 0}};
}

Step update(uint32_t handle, uint8_t key, uint8_t value) {
    return {.action = Action::update, .handle = handle, .record = {key, value, 0, 0}};
}

Step first(uint32_t handle) {
    return {.action = Action::first, .handle = handle, .recordSize = recordSize};
}

Step retrieve(uint32_t handle, uint8_t key, VantrelComparison comparison = VANTREL_COMPARISON_EQUAL) {
    return {.action = Action::retrieve,
            .handle = handle,
            .comparison = comparison,
            .key = {key},
            .hasKey = true,
            .recordSize = recordSize};
}

Step begin(uint32_t handle, VantrelTransactionMode mode) {
    return {.action = Action::begin, .handle = handle, .transactionMode = mode};
}

Step createIndexOnSecondByte(uint32_t handle) {
    return {.action = Action::createIndex,
            .handle = handle,
            .index = 1,
            .indexDefinition = {.segments = {{1, 1, VANTREL_DATA_TYPE_CHAR}}}};
}

// All four handles are open before the first step.
void expectAnswersLikeTheModel(const std::vector<Step> &steps) {
    Sequence sequence{fileWithIndex(), {}};
    for (uint32_t handle = 0; handle < handleCount; ++handle)
        sequence.steps.push_back(step(Action::open, handle));
    sequence.steps.insert(sequence.steps.end(), steps.begin(), steps.end());
    EXPECT_EQ(firstDifference(sequence), "") << report(sequence);
}

TEST(EngineSequences, ADeletionComesAfterAnotherSessionsChange) {
    expectAnswersLikeTheModel({insert(0, 'a'), first(2), insert(0, 'b'), step(Action::remove, 2)});
}

TEST(EngineSequences, ADeletionOfARecordThatAnotherSessionDeletedIsAConflict) {
    expectAnswersLikeTheModel({insert(0, 'a'), first(2), step(Action::remove, 0), step(Action::remove, 2)});
}

TEST(EngineSequences, AnIndexIsCreatedAfterAnotherSessionsChange) {
    expectAnswersLikeTheModel({insert(0, 'a'), first(2), insert(0, 'b'), createIndexOnSecondByte(2)});
}

TEST(EngineSequences, AnIndexIsDroppedAfterAnotherSessionsChange) {
    expectAnswersLikeTheModel(
        {insert(0, 'a'), first(2), insert(0, 'b'), {.action = Action::dropIndex, .handle = 2}});
}

TEST(EngineSequences, AnotherSessionsChangeStaysAConflictAfterAChangeThroughAnotherHandle) {
    expectAnswersLikeTheModel(
        {insert(0, 'a'), first(2), update(2, 'a', 1), first(1), update(1, 'a', 2), update(0, 'a', 3)});
}

TEST(EngineSequences, ARecordWhoseDeletionWasAbortedStaysCurrentForOtherHandles) {
    expectAnswersLikeTheModel({insert(0, 'a'), first(1), begin(0, 1), step(Action::remove, 0),
                               step(Action::abort, 0), update(1, 'a', 1)});
}

TEST(EngineSequences, ARecordWhoseUpdateWasAbortedIsNoConflictForItsOwnSession) {
    expectAnswersLikeTheModel({insert(0, 'a'), begin(0, 1), update(0, 'a', 1), first(0),
                               step(Action::abort, 0), update(0, 'a', 2)});
}

TEST(EngineSequences, AnAbortForgetsNoRecordThatAnotherSessionDeleted) {
    expectAnswersLikeTheModel({insert(0, 'a'), first(2), step(Action::remove, 0), begin(2, 1), insert(3, 'b'),
                               step(Action::abort, 2), update(2, 'a', 1)});
}

TEST(EngineSequences, AnAbortForgetsRecordsThatItRemoved) {
    expectAnswersLikeTheModel({begin(0, 1), insert(0, 'a'), first(1), step(Action::abort, 0),
                               update(1, 'a', 1), step(Action::getPosition, 0)});
}

TEST(EngineSequences, ARefusedChangeLeavesReadsAtTheLastCommittedState) {
    expectAnswersLikeTheModel({insert(0, 'a'), begin(2, 2), first(2), insert(0, 'b'), begin(0, 1),
                               insert(0, 'c'), step(Action::remove, 2), retrieve(2, 'b')});
}

TEST(EngineSequences, AScanMeetsARecordThatItMovedForwardAgain) {
    expectAnswersLikeTheModel({insert(0, 'a'), insert(0, 'c'), first(0), update(0, 'd', 1),
                               step(Action::next, 0), step(Action::next, 0), step(Action::next, 0)});
}

TEST(EngineSequences, AFailedSearchLeavesThePlaceBesideTheKeysThatItPassed) {
    expectAnswersLikeTheModel({insert(0, 'a'), insert(0, 'b'), retrieve(0, 'b', VANTREL_COMPARISON_GREATER),
                               step(Action::previous, 0), retrieve(0, 'a', VANTREL_COMPARISON_LESS),
                               step(Action::next, 0)});
}

TEST(EngineSequences, AScanGoesOnFromADeletedRecord) {
    expectAnswersLikeTheModel({insert(0, 'a'), insert(0, 'b'), insert(0, 'c'), retrieve(0, 'b'),
                               step(Action::remove, 0), step(Action::next, 0), step(Action::previous, 0),
                               step(Action::getPosition, 0)});
}

}  // namespace
