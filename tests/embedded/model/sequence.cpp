#include "sequence.h"

#include <functional>

#include "comparison.h"
#include "step_text.h"

namespace vantrel::test {

namespace {

// All that a file may have, and one that none has.
constexpr VantrelIndex walkedIndexes[] = {VANTREL_INDEX_NONE, 0, 1, 2, 5, 7, 118};

// One run of a sequence; ends at the first difference.
class Run {
  public:
    // The log may be null.
    Run(const FileDefinition &file, std::string *log)
        : library_(newFilePath(), file), model_(file), log_(log) {}

    void perform(const Step &step) {
        if (step.action == Action::walkForward)
            return walk(step, Action::first, Action::next);
        if (step.action == Action::walkBackward)
            return walk(step, Action::last, Action::previous);
        performOne(step);
    }

    // Whatever the steps left, then every order in both directions.
    void performEnd();

    const std::string &difference() const { return difference_; }

  private:
    bool performOne(const Step &step);
    void walk(Step step, Action first, Action following);

    Library library_;
    Model model_;
    std::string difference_;
    std::string *log_;
};

// Gives whether the step succeeded.
bool Run::performOne(const Step &step) {
    if (!difference_.empty() || !model_.permits(step))
        return false;
    Observed observed = library_.apply(step, model_.addressOf(step));
    if (log_ != nullptr)
        *log_ += "  " + describe(step) + " -> " + std::to_string(observed.status) + "\n";
    Expected expected = model_.apply(step, observed.insertedAddress);
    std::string found = test::difference(step, expected, observed);
    if (!found.empty())
        difference_ = describe(step) + ": " + found;
    return found.empty() && expected.succeeds();
}

void Run::walk(Step step, Action first, Action following) {
    step.action = first;
    bool continues = performOne(step);
    step.action = following;
    while (continues)
        continues = performOne(step);
}

void Run::performEnd() {
    for (uint32_t handle = 0; handle < handleCount; ++handle) {
        if (model_.isInTransaction(handle / handlesPerSession))
            performOne({.action = handle % 4 == 0 ? Action::end : Action::abort, .handle = handle});
        performOne({.action = Action::close, .handle = handle});
    }
    performOne({.action = Action::open});
    performOne({.action = Action::information});
    for (VantrelIndex index : walkedIndexes) {
        Step step{.action = Action::walkForward,
                  .index = index,
                  .key = Bytes(12, 0xEE),
                  .hasKey = true,
                  .recordSize = 40};
        for (Action action : {Action::walkForward, Action::walkBackward}) {
            step.action = action;
            perform(step);
        }
    }
}

std::string differenceOf(const Sequence &sequence, std::string *log) {
    Run run(sequence.file, log);
    for (const Step &step : sequence.steps)
        run.perform(step);
    run.performEnd();
    return run.difference();
}

}  // namespace

Sequence randomSequence(uint64_t seed, uint32_t length) {
    RandomSource random(seed);
    Sequence sequence{randomFile(random), {}};
    for (uint32_t handle = 0; handle < handleCount; ++handle)
        sequence.steps.push_back({.action = Action::open, .handle = handle});
    while (sequence.steps.size() < length)
        sequence.steps.push_back(randomStep(random, sequence.file));
    return sequence;
}

std::string firstDifference(const Sequence &sequence) {
    return differenceOf(sequence, nullptr);
}

// Takes out ever shorter runs of steps for as long as a difference stays.
Sequence minimised(const Sequence &sequence) {
    Sequence smallest = sequence;
    for (size_t count = sequence.steps.size() / 2; count > 0; count /= 2) {
        for (size_t start = 0; start < smallest.steps.size();) {
            Sequence attempt = smallest;
            auto begin = attempt.steps.begin() + static_cast<ptrdiff_t>(start);
            size_t length = std::min(count, attempt.steps.size() - start);
            attempt.steps.erase(begin, begin + static_cast<ptrdiff_t>(length));
            if (firstDifference(attempt).empty())
                start += count;
            else
                smallest = attempt;
        }
    }
    return smallest;
}

std::string report(const Sequence &sequence) {
    std::string log;
    std::string difference = differenceOf(sequence, &log);
    return describe(sequence.file) + log + difference + "\n";
}

}  // namespace vantrel::test
