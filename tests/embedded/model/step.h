#ifndef VANTREL_TESTS_EMBEDDED_MODEL_STEP_H
#define VANTREL_TESTS_EMBEDDED_MODEL_STEP_H

#include "definition.h"
#include "random_source.h"

// The requests that sequences are made of. A step carries all its arguments, so that a sequence stays
// meaningful when other steps are taken out of it.

namespace vantrel::test {

enum class Action {
    insert,
    update,
    remove,
    retrieve,
    first,
    last,
    next,
    previous,
    getPosition,
    retrieveByPosition,
    retrieveByProportion,
    getProportion,
    begin,
    end,
    abort,
    open,
    close,
    createIndex,
    dropIndex,
    information,
    walkForward,
    walkBackward
};

// Every session has this many file handles on the one file; handles are numbered through all sessions.
inline constexpr uint32_t sessionCount = 2;
inline constexpr uint32_t handlesPerSession = 2;
inline constexpr uint32_t handleCount = sessionCount * handlesPerSession;

inline constexpr VantrelIndex noIndexYet = -7;
inline constexpr uint32_t percentageDenominator = 10000;

struct Step {
    Action action;
    uint32_t handle = 0;
    VantrelIndex index = 0;
    VantrelComparison comparison = VANTREL_COMPARISON_EQUAL;
    VantrelTransactionMode transactionMode = VANTREL_TRANSACTION_MODE_EXCLUSIVE;
    Bytes record = {};
    Bytes key = {};
    bool hasKey = false;
    bool isKeyOnly = false;
    // Key-only: through the functions that have no record at all.
    bool readsKeyAlone = false;
    int32_t recordSize = 0;
    // Chooses among the addresses known when the step runs, and some that are not.
    uint32_t addressChoice = 0;
    // A denominator of hundredths of a percent stands for the percentage functions.
    uint32_t numerator = 0;
    uint32_t denominator = percentageDenominator;
    IndexDefinition indexDefinition = {};

    uint32_t session() const { return handle / handlesPerSession; }
};

// Key spaces are tiny, so that equal keys, boundaries and collisions happen all the time.
FileDefinition randomFile(RandomSource &random);
Step randomStep(RandomSource &random, const FileDefinition &file);

}  // namespace vantrel::test

#endif
