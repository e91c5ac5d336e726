// A process does random work on two files and is killed at a random instant; what another one finds must be
// what was acknowledged, with or without the call that was under way. Usage: see below.
#include <getopt.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "embedded/child.h"
#include "embedded/kill/inspection.h"
#include "embedded/kill/worker.h"

namespace {

using namespace vantrel::test;
using Clock = std::chrono::steady_clock;

constexpr const char *usage = "Usage: random_kills [--rounds N] [--seed N]\n";
constexpr const char *kindNames[] = {"open",        "close",        "begin",      "end",        "abort",
                                     "insert",      "insert many",  "update",     "erase",      "chunk",
                                     "erase group", "create index", "drop index", "percentage", "lock"};
static_assert(std::size(kindNames) == static_cast<size_t>(CallKind::count));

// So many rounds go on with the same files. One of a few such stretches has an encrypted file, whose openings
// take long.
constexpr uint32_t roundsOfStretch = 20, roundsWithEncryption = 6, stretchesToEncryption = 5;

struct Options {
    uint32_t rounds = 200;
    uint64_t seed = std::random_device()();
};

bool parseOptions(Options &options, int count, char **arguments) {
    static const option known[] = {
        {"rounds", required_argument, nullptr, 'n'}, {"seed", required_argument, nullptr, 's'}, {}};
    for (int found; (found = getopt_long(count, arguments, "", known, nullptr)) != -1;) {
        if (found == 'n')
            options.rounds = static_cast<uint32_t>(strtoul(optarg, nullptr, 10));
        else if (found == 's')
            options.seed = strtoull(optarg, nullptr, 10);
        else
            return false;
    }
    return optind == count && options.rounds > 0;
}

// What the processes of a round tell each other.
struct Shared {
    Journal journal;
    std::atomic<bool> isReady, isDead;
    std::atomic<int> found;
};

// True where the condition came within the time.
template <class Condition>
bool waitFor(Condition condition, std::chrono::microseconds longest) {
    auto end = Clock::now() + longest;
    while (!condition()) {
        if (Clock::now() >= end)
            return false;
        usleep(10);
    }
    return true;
}

class RandomKills {
  public:
    RandomKills(const Options &options, const std::string &directory)
        : options_(options), directory_(directory), random_(options.seed) {
        void *memory =
            mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        shared_ = new (memory) Shared{};
    }

    bool run() {
        auto start = Clock::now();
        bool isWell = true;
        for (; round_ < options_.rounds && isWell; ++round_)
            isWell = (roundsLeft_ != 0 || startStretch()) && runRound();
        if (!isWell)
            printf("failed in round %u\n", round_ - 1);
        report(std::chrono::duration<double>(Clock::now() - start).count());
        return isWell;
    }

  private:
    bool startStretch() {
        for (const auto &entry : std::filesystem::directory_iterator(directory_))
            std::filesystem::remove(entry.path());
        bool isEncrypted = ++stretches_ % stretchesToEncryption == 0;
        roundsLeft_ = isEncrypted ? roundsWithEncryption : roundsOfStretch;
        states_ = {ExpectedState()};
        return endedWell(inChild([&] {
            if (!RecordFiles::create(directory_, isEncrypted))
                _exit(1);
        }));
    }

    bool runRound() {
        --roundsLeft_;
        shared_ = new (shared_) Shared{};
        shared_->found = -1;
        bool isWatched = random_.percent(20);
        pid_t watcher = isWatched ? startInspection(true) : -1;
        if (isWatched && !waitFor([&] { return shared_->isReady.load(); }, std::chrono::seconds(60)))
            return false;
        workAndDie();
        noteTheDead();
        if (isWatched)
            return takeWhatIsFound(watcher, true);
        if (random_.percent(20))
            dieInRecovery();
        if (random_.percent(20)) {
            // The next process finds what this one left.
            states_ = statesAfterDeath(states_, shared_->journal);
            ++unseen_;
            return !states_.empty();
        }
        return takeWhatIsFound(startInspection(false), false) && nothingIsLeftBeside();
    }

    void workAndDie() {
        uint64_t seed = random_.below(UINT32_MAX);
        pid_t worker = inChild([&] { Worker(directory_, seed, shared_->journal).run(); });
        const Journal &journal = shared_->journal;
        constexpr auto patience = std::chrono::seconds(60);
        uint32_t call = random_.below(40);
        switch (random_.below(4)) {
            case 0:
                usleep(random_.below(8000));
                break;
            case 1:
                // Within the end of a transaction, which takes longer than anything else.
                waitFor([&] { return isWithin(CallKind::end) || journal.asked == mostCalls; }, patience);
                usleep(random_.below(2000));
                break;
            default:
                waitFor([&] { return journal.asked >= call; }, patience);
                waitFor([] { return false; }, std::chrono::microseconds(random_.below(400)));
        }
        killAndWait(worker);
        shared_->isDead = true;
    }

    bool isWithin(CallKind kind) const {
        uint32_t answered = shared_->journal.answered, asked = shared_->journal.asked;
        return asked > answered && shared_->journal.calls[asked - 1].kind == kind;
    }

    void noteTheDead() {
        const Journal &journal = shared_->journal;
        acknowledged_ += journal.answered;
        if (journal.asked == journal.answered)
            ++killsBetweenCalls_;
        else
            ++kills_[static_cast<size_t>(journal.calls[journal.answered].kind)];
    }

    // A process that begins to bring the files in order, and is killed over it.
    void dieInRecovery() {
        pid_t child = inChild([&] {
            RecordFiles files(directory_, 4);
            files.openAll();
            pause();
        });
        usleep(random_.below(5000));
        killAndWait(child);
        ++killsInRecovery_;
    }

    // In a process of its own: which of the states that may be there is there.
    pid_t startInspection(bool isEarly) {
        return inChild([&] {
            Inspection inspection(directory_);
            if (isEarly && !inspection.openEarly())
                _exit(1);
            shared_->isReady = true;
            while (!shared_->isDead)
                usleep(10);
            shared_->found = inspection.find(statesAfterDeath(states_, shared_->journal));
        });
    }

    bool takeWhatIsFound(pid_t inspection, bool isWatched) {
        bool isWell = endedWell(inspection) && shared_->found >= 0;
        std::vector<ExpectedState> states = statesAfterDeath(states_, shared_->journal);
        if (!isWell) {
            fprintf(stderr, "%zu states came in question%s\n", states.size(),
                    isWatched ? ", with a watcher" : "");
            sayLastCalls();
            return false;
        }
        states_ = {states[static_cast<size_t>(shared_->found)]};
        return true;
    }

    void sayLastCalls() const {
        const Journal &journal = shared_->journal;
        for (uint32_t number = std::max(journal.asked.load(), 12u) - 12; number < journal.asked; ++number) {
            const Call &call = journal.calls[number];
            fprintf(stderr, "%s: file %u, number %u, count %u, group %u, length %u, chunk %x at %u: ",
                    kindNames[static_cast<size_t>(call.kind)], call.file, call.number, call.count, call.group,
                    call.length, call.chunkCode, call.offset);
            if (number < journal.answered)
                fprintf(stderr, "%d\n", call.status);
            else
                fprintf(stderr, "no answer\n");
        }
    }

    // Only a pointer whose making was not finished may stay until the next one is made.
    bool nothingIsLeftBeside() const {
        for (const auto &entry : std::filesystem::directory_iterator(directory_)) {
            std::string name = entry.path().filename();
            if (name == "a" || name == "b" || name.ends_with("-commit-new"))
                continue;
            fprintf(stderr, "left: %s\n", name.c_str());
            return false;
        }
        return true;
    }

    void report(double seconds) const {
        printf("seed %llu, %u rounds, %.1f s, %llu calls acknowledged\n",
               static_cast<unsigned long long>(options_.seed), round_, seconds,
               static_cast<unsigned long long>(acknowledged_));
        printf("  killed between calls %u, in recovery %u; went on unseen %u\n", killsBetweenCalls_,
               killsInRecovery_, unseen_);
        for (size_t kind = 0; kind < std::size(kindNames); ++kind)
            printf("  killed in %-12s %6u\n", kindNames[kind], kills_[kind]);
    }

    Options options_;
    std::string directory_;
    RandomSource random_;
    Shared *shared_;
    std::vector<ExpectedState> states_;
    uint32_t round_ = 0, stretches_ = 0, roundsLeft_ = 0;
    uint64_t acknowledged_ = 0;
    uint32_t killsBetweenCalls_ = 0, killsInRecovery_ = 0, unseen_ = 0;
    uint32_t kills_[static_cast<size_t>(CallKind::count)] = {};
};

// Memory rather than a disk, where there is a choice: what a process leaves at its death is the same there.
std::string parentDirectory() {
    const char *chosen = getenv("TMPDIR");
    if (chosen != nullptr)
        return chosen;
    return access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm" : "/tmp";
}

}  // namespace

int main(int count, char **arguments) {
    Options options;
    if (!parseOptions(options, count, arguments)) {
        fputs(usage, stderr);
        return 2;
    }
    std::string directory = parentDirectory() + "/vantrel-kills-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr)
        return 1;
    bool isWell = RandomKills(options, directory).run();
    if (isWell)
        std::filesystem::remove_all(directory);
    else
        fprintf(stderr, "the files are in %s\n", directory.c_str());
    return isWell ? 0 : 1;
}
