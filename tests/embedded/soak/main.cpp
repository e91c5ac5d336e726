// Several processes move money between the accounts of two files, for a time that is given; some are killed
// in the middle. The total must never change. Usage: see below.
#include <getopt.h>
#include <sys/mman.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <thread>
#include <vector>

#include "embedded/child.h"
#include "worker.h"

namespace {

using namespace vantrel::test;
using Clock = std::chrono::steady_clock;

constexpr const char *usage =
    "Usage: soak [--seconds N] [--processes N] [--kill-every MILLISECONDS] [--seed N]\n"
    "Killing is left out with 0.\n";

struct Options {
    int seconds = 60;
    int processes = 4;
    int killEvery = 500;
    uint64_t seed = std::random_device()();
};

bool parseOptions(Options &options, int count, char **arguments) {
    static const option known[] = {{"seconds", required_argument, nullptr, 's'},
                                   {"processes", required_argument, nullptr, 'p'},
                                   {"kill-every", required_argument, nullptr, 'k'},
                                   {"seed", required_argument, nullptr, 'r'},
                                   {}};
    for (int found; (found = getopt_long(count, arguments, "", known, nullptr)) != -1;) {
        if (found == 's')
            options.seconds = atoi(optarg);
        else if (found == 'p')
            options.processes = atoi(optarg);
        else if (found == 'k')
            options.killEvery = atoi(optarg);
        else if (found == 'r')
            options.seed = strtoull(optarg, nullptr, 10);
        else
            return false;
    }
    return optind == count && options.seconds > 0 && options.processes > 0 && options.killEvery >= 0;
}

class Soak {
  public:
    Soak(const Options &options, const std::string &directory)
        : options_(options), paths_{directory + "/a", directory + "/b"}, random_(options.seed) {
        void *memory = mmap(nullptr, sizeof(Work), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        work_ = new (memory) Work{};
    }

    bool run() {
        if (!endedWell(inChild([this] { createFiles(); })))
            return false;
        for (int process = 0; process < options_.processes; ++process)
            workers_.push_back(startWorker());
        workUntilTheEnd();
        work_->isOver = true;
        bool allWell = true;
        for (pid_t worker : workers_)
            allWell &= endedWell(worker);
        allWell &= endedWell(inChild([this] { checkAtTheEnd(); }));
        report();
        return allWell && work_->failures == 0;
    }

  private:
    void createFiles() {
        for (const std::string &path : paths_) {
            if (createAccounts(path) != VANTREL_STATUS_NO_ERROR)
                _exit(1);
        }
    }

    pid_t startWorker() {
        uint64_t seed = random_();
        return inChild([this, seed] { Worker(paths_, seed, *work_).run(); });
    }

    void workUntilTheEnd() {
        auto end = Clock::now() + std::chrono::seconds(options_.seconds);
        auto turn = std::chrono::milliseconds(options_.killEvery != 0 ? options_.killEvery : 100);
        while (Clock::now() < end && work_->failures == 0) {
            std::this_thread::sleep_for(turn);
            if (options_.killEvery != 0)
                killOne();
        }
    }

    void killOne() {
        pid_t &worker = workers_[static_cast<size_t>(random_() % workers_.size())];
        killAndWait(worker);
        ++kills_;
        worker = startWorker();
    }

    void checkAtTheEnd() {
        VantrelClient *client;
        VantrelClientAllocate(&client, 0, 0);
        for (const std::string &path : paths_) {
            if (Accounts(client, path, VANTREL_OPEN_MODE_VERIFY).status() != VANTREL_STATUS_NO_ERROR)
                ++work_->failures;
        }
        uint64_t checked = work_->checks;
        Worker(paths_, 0, *work_).checkTotal();
        if (work_->checks == checked)
            ++work_->failures;
    }

    void report() {
        struct {
            const char *what;
            uint64_t count;
        } lines[] = {{"transfers", work_->transfers},   {"abandoned", work_->abandoned},
                     {"conflicts", work_->conflicts},   {"deadlocks", work_->deadlocks},
                     {"updates", work_->updates},       {"scans", work_->scans},
                     {"insertions", work_->insertions}, {"checks of the total", work_->checks},
                     {"processes killed", kills_},      {"failures", work_->failures}};
        printf("seed %llu, %d processes, %d seconds\n", static_cast<unsigned long long>(options_.seed),
               options_.processes, options_.seconds);
        for (const auto &line : lines)
            printf("  %-20s %10llu\n", line.what, static_cast<unsigned long long>(line.count));
    }

    Options options_;
    std::string paths_[fileCount];
    std::mt19937_64 random_;
    Work *work_;
    std::vector<pid_t> workers_;
    uint64_t kills_ = 0;
};

}  // namespace

int main(int count, char **arguments) {
    Options options;
    if (!parseOptions(options, count, arguments)) {
        fputs(usage, stderr);
        return 2;
    }
    std::string directory = std::filesystem::temp_directory_path() / "vantrel-soak-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr)
        return 1;
    bool allWell = Soak(options, directory).run();
    if (allWell)
        std::filesystem::remove_all(directory);
    else
        fprintf(stderr, "failed; the files are in %s\n", directory.c_str());
    return allWell ? 0 : 1;
}
