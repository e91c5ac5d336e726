#include "embedded/fault/run.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "embedded/commit/child_process.h"
#include "embedded/fault/contents.h"
#include "embedded/fault/paused_process.h"

namespace vantrel::test {

namespace {

constexpr int32_t normal = 0, verify = -3;
// For texts, so that they allocate nothing while it is counted what the engine does.
constexpr size_t enough = size_t{1} << 20;

void copyFiles(const std::string &from, const std::string &to) {
    for (const auto &entry : std::filesystem::directory_iterator(to))
        std::filesystem::remove_all(entry.path());
    std::filesystem::copy(from, to);
}

bool isStatusOf(FaultKind kind, int32_t status) {
    switch (kind) {
        case FaultKind::diskIsFull:
            return status == 18 || status == 94;
        case FaultKind::allocationFails:
        case FaultKind::memoryIsUsedUp:
            return status == 101;
        default:
            // A log's index, or a new database, that cannot be opened is taken for one that may not be.
            return status == 2 || status == 46 || status == 94;
    }
}

// Where a text begins to be another than it should be.
std::string difference(const std::string &what, const std::string &found, const std::string &expected) {
    constexpr size_t shown = 200;
    if (found == expected)
        return {};
    auto place = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end()).first;
    auto line = found.substr(0, static_cast<size_t>(place - found.begin())).rfind('\n') + 1;
    return what + ": " + found.substr(line, shown) +
           "\ninstead of: " + expected.substr(std::min(line, expected.size()), shown) + '\n';
}

// Whether side files that cannot be removed, or a log that cannot be brought in, may stay until the next
// session comes.
bool mayLeave(FaultKind kind) {
    return kind == FaultKind::callFails || kind == FaultKind::diskFails || kind == FaultKind::writeTears;
}

bool mayHaveHappenedIn(const Step &step, FaultKind kind) {
    bool isMemory = kind == FaultKind::allocationFails || kind == FaultKind::memoryIsUsedUp;
    return isMemory ? step.mayHaveHappenedWithoutMemory : step.mayHaveHappened;
}

std::vector<std::string> splitAt(const std::string &text, char separator) {
    std::vector<std::string> parts;
    for (size_t start = 0, end; start <= text.size(); start = end + 1) {
        end = std::min(text.find(separator, start), text.size());
        parts.push_back(text.substr(start, end - start));
    }
    return parts;
}

constexpr char separator = '\f';

// The side file of locks harms nobody where it stays.
std::string findings(const std::string &directory) {
    std::string contents = contentsOf(directory, verify);
    std::vector<std::string> names = splitAt(namesIn(directory), ',');
    std::erase_if(names, [](const std::string &name) { return name.ends_with("-lock"); });
    contents += separator;
    for (const std::string &name : names)
        contents += name.empty() ? "" : name + ' ';
    return contents;
}

}  // namespace

// One process's way through a scenario.
class ScenarioRun::Worker {
  public:
    Worker(const ScenarioRun &run, PausedProcess::Teller &teller)
        : run_(run), scenario_(run.scenario_), directory_(run.files_.path()), teller_(teller) {
        warmUpCiphers();
    }

    // Notes after each step what another session sees.
    std::string reference() {
        std::string seen;
        seen.reserve(enough);
        Holdings before;
        {
            World world(directory_);
            scenario_.begin(world);
            note(seen);
            for (const Step &step : scenario_.work) {
                EXPECT_EQ(runStep(world, step), step.expected)
                    << scenario_.name << ", step " << &step - scenario_.work.data();
                note(seen);
            }
        }
        std::string held = Holdings().since(before).text();
        if (testing::Test::HasFailure())
            return "an expectation failed";
        for (uint64_t count : counts_)
            seen += std::to_string(count) + ' ';
        return seen + separator + namesIn(directory_) + separator + held;
    }

    // What went wrong.
    std::string underFault(FaultKind kind, uint64_t number) {
        problems_.reserve(enough);
        Holdings before;
        {
            World world(directory_);
            scenario_.begin(world);
            workUntilFailure(world, kind, number);
            teller_.askForCopy();
            checkState(kind);
            if (step_ < scenario_.work.size())
                goOn(world);
            problems_ += difference("seen at last", contentsOf(directory_, normal), run_.seen_.back());
        }
        Holdings held = Holdings().since(before);
        if (!held.isWithin(run_.held_))
            problems_ +=
                difference("descriptors, blocks and bytes of SQLite", held.text(), run_.held_.text());
        if (!mayLeave(kind) && !hasHappened_)
            problems_ += difference("left over", namesIn(directory_), run_.leftOver_);
        if (hasHappened_)
            teller_.tellThatItHappened();
        if (testing::Test::HasFailure())
            problems_ += "an expectation failed\n";
        return problems_;
    }

  private:
    void note(std::string &seen) {
        seen += contentsOf(directory_, normal) + separator;
        teller_.askForCopy();
    }

    Injection::Place place() const {
        return scenario_.isInBackground ? Injection::Place::background : Injection::Place::calls;
    }

    // Counts what could fail.
    int32_t runStep(World &world, const Step &step) {
        Injection injection(FaultKind::callFails, Injection::never, directory_, place());
        int32_t status = step.run(world);
        for (size_t kind = 0; kind < faultKinds; ++kind)
            counts_[kind] += injection.counted()[kind];
        return status;
    }

    void workUntilFailure(World &world, FaultKind kind, uint64_t number) {
        Injection injection(kind, number, directory_, place());
        for (; step_ < scenario_.work.size(); ++step_) {
            int32_t status = scenario_.work[step_].run(world);
            if (status != scenario_.work[step_].expected) {
                if (!isStatusOf(kind, status))
                    problems_ += "step " + std::to_string(step_) + " gave " + std::to_string(status) + '\n';
                break;
            }
            teller_.acknowledge();
        }
    }

    void checkState(FaultKind kind) {
        std::string seen = contentsOf(directory_, normal);
        bool mayHaveHappened =
            step_ < scenario_.work.size() && mayHaveHappenedIn(scenario_.work[step_], kind);
        if (seen != run_.seen_[step_] && mayHaveHappened)
            hasHappened_ = seen == run_.seen_[step_ + 1];
        if (!hasHappened_)
            problems_ += difference("seen after step " + std::to_string(step_), seen, run_.seen_[step_]);
    }

    // What failed works once nothing fails any more.
    void goOn(World &world) {
        if (scenario_.isTransaction) {
            int32_t status = world.session().call(21, nullptr).status;
            if (status != 0 && status != 36)
                problems_ += "abort gave " + std::to_string(status) + '\n';
            step_ = 0;
        }
        if (hasHappened_)
            ++step_;
        for (; step_ < scenario_.work.size(); ++step_) {
            int32_t status = scenario_.work[step_].run(world);
            // A file that could not be opened again after it was rewritten has lost its positions.
            if (status == 3) {
                scenario_.begin(world);
                status = scenario_.work[step_].run(world);
            }
            if (status != scenario_.work[step_].expected)
                problems_ += "step " + std::to_string(step_) + " gave " + std::to_string(status) + " again\n";
        }
    }

    const ScenarioRun &run_;
    const Scenario &scenario_;
    std::string directory_;
    PausedProcess::Teller &teller_;
    size_t step_ = 0;
    bool hasHappened_ = false;
    std::string problems_;
    Injection::Counts counts_{};
};

ScenarioRun::ScenarioRun(const Scenario &scenario) : scenario_(scenario) {
    std::string end = ChildProcess::run([&]() -> std::string {
        World world(prepared_.path());
        scenario_.prepare(world);
        if (scenario_.prepareDies)
            kill(getpid(), SIGKILL);
        return {};
    });
    EXPECT_EQ(end, scenario_.prepareDies ? "killed" : "");
    takeReference();
}

void ScenarioRun::takeReference() {
    copyFiles(prepared_.path(), files_.path());
    PausedProcess process([&](PausedProcess::Teller &teller) { return Worker(*this, teller).reference(); },
                          [&] {
                              copyFiles(files_.path(), crashed_.path());
                              foundAfterDeath_.push_back(findIn(crashed_.path()));
                          });
    seen_ = splitAt(process.report(), separator);
    ASSERT_EQ(seen_.size(), scenario_.work.size() + 4) << process.report();
    auto taken = [this] {
        std::string last = std::move(seen_.back());
        seen_.pop_back();
        return last;
    };
    std::istringstream(taken()) >> held_.descriptors >> held_.blocks >> held_.sqliteBytes;
    leftOver_ = taken();
    std::istringstream counts(taken());
    for (uint64_t &count : counts_)
        counts >> count;
}

// Of the files as they were, in their place, since they may name each other by their paths.
ScenarioRun::Found ScenarioRun::findCopy() {
    copyFiles(crashed_.path(), files_.path());
    return findIn(files_.path());
}

ScenarioRun::Found ScenarioRun::findIn(const std::string &directory) {
    std::vector<std::string> found =
        splitAt(ChildProcess::run([&] { return findings(directory); }), separator);
    return {found.front(), found.back()};
}

std::string ScenarioRun::checkAfterDeath(const Found &found, size_t step, bool mayHaveHappened) const {
    if (mayHaveHappened && step + 1 < foundAfterDeath_.size() &&
        found.contents == foundAfterDeath_[step + 1].contents)
        return {};
    return difference("found after death", found.contents, foundAfterDeath_.at(step).contents);
}

// What other processes find while the process that worked still lives, but holds nothing any more.
std::string ScenarioRun::checkAtLast(bool namesMayDiffer) const {
    std::string all = ChildProcess::run([&] {
        std::string told = findings(files_.path()) + separator;
        return told + changeEach(files_.path());
    });
    std::vector<std::string> found = splitAt(all, separator);
    if (found.size() != 3)
        return "who opens the files ends with " + found.front() + '\n';
    std::string problems = difference("found at last", found[0], foundAfterDeath_.back().contents);
    if (!namesMayDiffer)
        problems += difference("names at last", found[1], foundAfterDeath_.back().names);
    return problems + found[2];
}

std::string ScenarioRun::check(FaultKind kind, uint64_t number) {
    copyFiles(prepared_.path(), files_.path());
    size_t step = 0;
    bool mayHaveHappened = kind == FaultKind::processDies;
    std::string problems;
    {
        PausedProcess process(
            [&](PausedProcess::Teller &teller) { return Worker(*this, teller).underFault(kind, number); },
            [&] { copyFiles(files_.path(), crashed_.path()); });
        step = process.acknowledged();
        bool hasDied = process.report().starts_with("signal") || process.report().starts_with("exit");
        if (hasDied && !(mayHaveHappened && process.report() == "signal 9"))
            return "step " + std::to_string(step) + " ended with " + process.report() + '\n';
        if (hasDied)
            copyFiles(files_.path(), crashed_.path());
        else
            problems = process.report() + checkAtLast(process.hasHappened());
    }
    // What cannot be taken back while the disk fails on and on may come back.
    mayHaveHappened |= kind == FaultKind::diskFails || kind == FaultKind::diskIsFull ||
                       (step < scenario_.work.size() && mayHaveHappenedIn(scenario_.work[step], kind));
    return problems + checkAfterDeath(findCopy(), step, mayHaveHappened);
}

}  // namespace vantrel::test
