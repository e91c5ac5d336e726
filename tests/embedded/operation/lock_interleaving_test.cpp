#include <atomic>
#include <random>
#include <thread>

#include "embedded/emulation.h"
#include "embedded/operation/lock_fixture.h"
#include "embedded/operation/lock_model.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

// Which session goes next wherever both could, through all possibilities.
class Order {
  public:
    int next(int count) {
        if (count == 1)
            return 0;
        if (used_ == choices_.size())
            choices_.push_back({0, count});
        return choices_[used_++].chosen;
    }
    // False after the last one.
    bool advance() {
        used_ = 0;
        while (!choices_.empty() && choices_.back().chosen + 1 == choices_.back().count)
            choices_.pop_back();
        if (choices_.empty())
            return false;
        ++choices_.back().chosen;
        return true;
    }

  private:
    struct Choice {
        int chosen, count;
    };
    std::vector<Choice> choices_;
    size_t used_ = 0;
};

class LockInterleavingTest : public LockFixture {
  protected:
    LockInterleavingTest() : LockFixture(2) {}

    using Outcome = LockModel::Outcome;

    // A step that waits for the other session, in a thread of its own.
    struct Parked {
        int session;
        LockStep step;
        int content;
        std::future<int32_t> status;
        std::shared_ptr<int> found = std::make_shared<int>(0);
    };

    Reply read(int session, LockStep step) {
        static constexpr struct {
            char action, letter;
            uint32_t bias;
        } reads[] = {{'r', 'a', 0},   {'s', 'b', 0},   {'1', 'a', 200}, {'2', 'b', 200},
                     {'3', 'c', 200}, {'w', 'a', 100}, {'x', 'b', 100}, {'m', 'a', 400},
                     {'n', 'b', 400}, {'v', 'a', 300}, {'y', 'b', 300}};
        for (const auto &[action, letter, bias] : reads) {
            if (action == step.action) {
                LockClient &client = *clients[static_cast<size_t>(session)];
                Reply reply = client.session.call(5 + bias, client.block(step.file), "", {letter}, 0, 2);
                if (reply.status == 0)
                    currentOf[session][step.file] = letter;
                return reply;
            }
        }
        return {};
    }

    // Records hold their content as one character.
    int32_t run(int session, LockStep step, int content, int *found) {
        LockClient &client = *clients[static_cast<size_t>(session)];
        char &current = currentOf[session][step.file];
        char written = static_cast<char>('0' + content);
        switch (step.action) {
            case 'u':
                return client.update({current, written}, step.file);
            case 'd':
                return client.erase(step.file);
            case 'i': {
                int32_t status = client.insert({'c', written}, step.file);
                if (status == 0)
                    current = 'c';
                return status;
            }
            case 'K':
                return client.unlock(-2, step.file);
            case 'B':
                return client.begin(1519);
            case 'C':
                return client.begin(1019);
            case 'X':
                return client.begin(19);
            case 'E':
                return client.end();
            case 'A':
                return client.abort();
            default:
                Reply reply = read(session, step);
                *found = reply.status == 0 ? reply.data[1] - '0' : 0;
                return reply.status;
        }
    }

    void restore() {
        for (auto &client : clients)
            client->abort();
        for (size_t file : {0u, 1u}) {
            LockClient &client = *clients[0];
            for (auto &each : clients) {
                each->unlock(-2, file);
                EXPECT_EQ(each->read('?', 0, file), 4);
            }
            for (const char *record : {"a1", "b2"}) {
                if (client.data(record[0], file) == record)
                    continue;
                EXPECT_EQ(client.read(record[0], 0, file) == 0 ? client.update(record, file)
                                                               : client.insert(record, file),
                          0);
            }
            if (client.read('c', 0, file) == 0) {
                EXPECT_EQ(client.erase(file), 0);
            }
            EXPECT_EQ(client.read('?', 0, file), 4);
        }
    }

    // Returns when the step's thread sleeps.
    void park(int session, LockStep step, int content) {
        parked.emplace(Parked{.session = session, .step = step, .content = content, .status = {}});
        auto thread = std::make_shared<std::atomic<pid_t>>(0);
        parked->status = later([=, this, found = parked->found] {
            *thread = gettid();
            return run(session, step, content, found.get());
        });
        auto isWaiting = [&] {
            return *thread != 0 && isAsleep("/proc/self/task/" + std::to_string(*thread));
        };
        while (!isWaiting() && !isDone())
            std::this_thread::yield();
        ++waits;
    }
    bool isDone() const {
        return parked->status.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    // The waiting step goes on as soon as it may.
    void checkParked(const std::string &done) {
        std::optional<Outcome> expected = model.apply(parked->session, parked->step, parked->content);
        if (!expected) {
            ASSERT_FALSE(isDone()) << done;
            return;
        }
        ASSERT_TRUE(endsSoon(parked->status)) << done;
        EXPECT_EQ(parked->status.get(), expected->status) << done;
        EXPECT_EQ(*parked->found, expected->content) << done;
        parked.reset();
    }

    void take(int session, LockStep step, std::string &done) {
        int content = ++stepsDone;
        done += {static_cast<char>('1' + session), step.action, step.file == 0 ? ' ' : '\''};
        std::optional<Outcome> expected = model.apply(session, step, content);
        if (!expected && !parked) {
            park(session, step, content);
            return;
        }
        int found = 0;
        // Both would wait: the one that comes last is refused.
        if (!expected) {
            ++deadlocks;
            expected = Outcome{78};
        }
        ASSERT_EQ(run(session, step, content, &found), expected->status) << done;
        ASSERT_EQ(found, expected->content) << done;
        if (parked)
            checkParked(done);
    }

    void interleave(const std::vector<LockStep> (&scripts)[2], Order &order) {
        restore();
        model = LockModel();
        stepsDone = 2;
        std::string done;
        for (size_t next[2] = {0, 0};;) {
            std::vector<int> able;
            for (int session : {0, 1}) {
                if (next[session] < scripts[session].size() && !(parked && parked->session == session))
                    able.push_back(session);
            }
            if (able.empty())
                break;
            int session = able[static_cast<size_t>(order.next(static_cast<int>(able.size())))];
            ASSERT_NO_FATAL_FAILURE(take(session, scripts[session][next[session]++], done));
        }
        for (LockStep step : {LockStep{'A'}, LockStep{'K'}, LockStep{'K', 1}}) {
            if (parked) {
                ASSERT_NO_FATAL_FAILURE(take(1 - parked->session, step, done));
            }
        }
        ASSERT_FALSE(parked) << done;
        ++orders;
    }

    void interleaveAll(const std::string &first, const std::string &second) {
        const std::vector<LockStep> scripts[2] = {lockScript(first), lockScript(second)};
        Order order;
        do {
            ASSERT_NO_FATAL_FAILURE(interleave(scripts, order)) << first << " and " << second;
            ASSERT_FALSE(HasFailure()) << first << " and " << second;
        } while (order.advance());
    }

    void interleaveEachWithEach(const std::vector<std::string> &scripts) {
        for (size_t first = 0; first < scripts.size(); ++first) {
            for (size_t second = first; second < scripts.size(); ++second)
                ASSERT_NO_FATAL_FAILURE(interleaveAll(scripts[first], scripts[second]));
        }
    }

    LockModel model;
    std::optional<Parked> parked;
    char currentOf[2][2] = {{'a', 'a'}, {'a', 'a'}};
    int stepsDone = 0;
    size_t orders = 0, waits = 0, deadlocks = 0;
};

TEST_F(LockInterleavingTest, SessionsDoWhatTheyMayInEveryOrder) {
    interleaveEachWithEach(rounds<std::vector<std::string>>(
        {"1u2u", "1d2u", "BruE", "B1uE", "B1uA", "BrdE", "BrdA", "12su", "ruru", "B12E", "Bu1E", "1BuE"},
        {"1u2u", "B1uE", "BrdA", "Bu1E"}));
    EXPECT_GT(orders, rounds<size_t>(4000, 400));
    EXPECT_GT(waits, rounds<size_t>(300, 20));
}

TEST_F(LockInterleavingTest, SessionsWaitAsLongAsTheyMustInEveryOrder) {
    interleaveEachWithEach(rounds<std::vector<std::string>>(
        {"wuxK", "CwuE", "CwdA", "vyuK", "XrxE", "CiuE", "3i2d", "XiuA", "m1Kn"},
        {"wuxK", "CwdA", "XrxE", "vyuK", "m1Kn"}));
    EXPECT_GT(waits, rounds<size_t>(500, 50));
    EXPECT_GT(deadlocks, 0u);
}

TEST_F(LockInterleavingTest, SessionsWaitInTwoFilesInEveryOrder) {
    interleaveEachWithEach(
        rounds<std::vector<std::string>>({"Cii'E", "Ci'iA", "ww'uK", "Xw'rE", "w'iuK"}, {"Cii'E", "Xw'rE"}));
    EXPECT_GT(waits, rounds<size_t>(200, 20));
    EXPECT_GT(deadlocks, rounds<size_t>(10, 1));
}

TEST_F(LockInterleavingTest, SessionsDoWhatTheyMayInEveryOrderOfRandomScripts) {
    uint32_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto script = [&](const std::string &actions) {
        std::string text;
        for (int step = 0; step < 4; ++step) {
            text += actions[random() % actions.size()];
            if (random() % 4 == 0)
                text += '\'';
        }
        return text;
    };
    for (int pair = 0; pair < rounds(40, 8); ++pair) {
        std::string actions = pair % 2 == 0 ? "12rsudBEA" : "12wxvyudidiCXEAK";
        ASSERT_NO_FATAL_FAILURE(interleaveAll(script(actions), script(actions)));
    }
}

}  // namespace
