#include <map>
#include <optional>
#include <random>
#include <set>

#include "embedded/emulation.h"
#include "embedded/operation/lock_fixture.h"

namespace {

using namespace vantrel::test;

// Steps of a script: 1 and 2 read the records a and b with a single lock, without waiting; r and s read them
// without a lock; u updates and d deletes the current record; B begins a transaction that never waits, E ends
// and A aborts it.
constexpr char allSteps[] = "12rsudBEA";

// Who may do what, on two records.
class LockModel {
  public:
    struct Outcome {
        int32_t status;
        int version = 0;  // of the record that a read finds
    };

    explicit LockModel(int versionA, int versionB) : committed_{{'a', versionA}, {'b', versionB}} {
        newest_ = std::max(versionA, versionB);
    }

    // Nothing where the step would wait for the other session.
    std::optional<Outcome> apply(int session, char step) {
        me_ = session;
        switch (step) {
            case '1':
            case '2':
                return read(step == '1' ? 'a' : 'b', true);
            case 'r':
            case 's':
                return read(step == 'r' ? 'a' : 'b', false);
            case 'u':
            case 'd':
                return change(step == 'd');
            case 'B':
                return begin();
            default:
                return finish(step == 'E');
        }
    }
    // The version that the next update gives.
    int nextVersion() const { return newest_ + 1; }

  private:
    using Records = std::map<char, int>;

    struct Session {
        bool isInside = false;
        std::optional<char> current = {};
        int version = 0;
        std::optional<char> lock = {};
        bool lockIsTransactions = false;
        Records before = {};  // versions of the records that the transaction changed
    };

    Session &me() { return sessions_[me_]; }
    Session &other() { return sessions_[1 - me_]; }
    Records &view() { return writer_ == me_ ? changed_ : committed_; }
    bool otherHolds(char record) { return other().lock == record || other().before.count(record) != 0; }

    Outcome read(char record, bool locks) {
        auto found = view().find(record);
        if (found == view().end()) {
            me().current.reset();
            return {4};
        }
        if (locks) {
            if (otherHolds(record))
                return {84};
            if (me().lock != record)
                me().lockIsTransactions = me().isInside;
            me().lock = record;
        }
        me().current = record;
        me().version = found->second;
        return {0, found->second};
    }

    std::optional<Outcome> change(bool erases) {
        if (!me().current)
            return Outcome{8};
        if (writer_ == 1 - me_)
            return me().isInside ? std::optional(Outcome{85}) : std::nullopt;
        if (me().isInside && writer_ != me_) {
            writer_ = me_;
            changed_ = committed_;
        }
        char record = *me().current;
        if (otherHolds(record))
            return Outcome{84};
        auto stored = view().find(record);
        if (stored == view().end() || stored->second != me().version)
            return Outcome{80};
        if (me().isInside)
            me().before.emplace(record, stored->second);
        else if (me().lock == record)
            me().lock.reset();
        ++newest_;
        if (erases) {
            view().erase(stored);
            me().current.reset();
        } else {
            stored->second = me().version = newest_;
        }
        return Outcome{0};
    }

    Outcome begin() {
        if (me().isInside)
            return {37};
        me().isInside = true;
        return {0};
    }

    Outcome finish(bool keeps) {
        if (!me().isInside)
            return {keeps ? 39 : 36};
        if (writer_ == me_) {
            if (keeps)
                committed_ = changed_;
            else if (me().current && me().before.count(*me().current) != 0)
                me().version = me().before[*me().current];
            writer_ = nobody;
        }
        me().before.clear();
        me().isInside = false;
        if (me().lockIsTransactions)
            me().lock.reset();
        me().lockIsTransactions = false;
        return {0};
    }

    static constexpr int nobody = -1;

    Records committed_, changed_;
    Session sessions_[2];
    int me_ = 0;
    int writer_ = nobody;
    int newest_;
};

class LockInterleavingTest : public LockFixture {
  protected:
    // Records hold their version as a digit or letter, so that reads tell it.
    static char digit(int version) { return static_cast<char>('0' + version); }

    int32_t run(int session, char step, int nextVersion, int *version) {
        LockClient &client = *clients[static_cast<size_t>(session)];
        if (step == '1' || step == '2' || step == 'r' || step == 's') {
            bool isA = step == '1' || step == 'r';
            Reply reply = client.session.call(step == '1' || step == '2' ? 205 : 5, client.block(), "",
                                              isA ? "a" : "b", 0, 2);
            *version = reply.status == 0 ? reply.data[1] - '0' : 0;
            currentOf[session] = reply.status == 84 ? currentOf[session] : isA ? 'a' : 'b';
            return reply.status;
        }
        switch (step) {
            case 'u':
                return client.update({currentOf[session], digit(nextVersion)});
            case 'd':
                return client.erase();
            case 'B':
                return client.begin(1519);
            case 'E':
                return client.end();
            default:
                return client.abort();
        }
    }

    void restore() {
        for (auto &client : clients) {
            client->abort();
            client->unlock(0);
            EXPECT_EQ(client->read('?'), 4);
        }
        for (char letter : {'a', 'b'}) {
            LockClient &client = *clients[0];
            std::string record{letter, digit(letter == 'a' ? 1 : 2)};
            EXPECT_EQ(client.read(letter) == 0 ? client.update(record) : client.insert(record), 0);
            EXPECT_EQ(client.read('?'), 4);
        }
    }

    // One order of the two scripts' steps: a set bit is a step of the second session.
    void interleave(const std::string &first, const std::string &second, uint32_t order) {
        restore();
        LockModel model(1, 2);
        std::string done;
        size_t next[2] = {0, 0};
        for (size_t step = 0; step < first.size() + second.size(); ++step) {
            int session = static_cast<int>(order >> step & 1);
            char action = (session == 0 ? first : second)[next[session]++];
            int nextVersion = model.nextVersion();
            std::optional<LockModel::Outcome> expected = model.apply(session, action);
            if (!expected)
                return;
            done += {static_cast<char>('1' + session), action, ' '};
            int version = 0;
            ASSERT_EQ(run(session, action, nextVersion, &version), expected->status) << done;
            ASSERT_EQ(version, expected->version) << done;
            ++steps;
        }
    }

    void interleaveAll(const std::string &first, const std::string &second) {
        for (uint32_t order = 0; order < 1u << (first.size() + second.size()); ++order) {
            if (static_cast<size_t>(__builtin_popcount(order)) != second.size())
                continue;
            ASSERT_NO_FATAL_FAILURE(interleave(first, second, order));
        }
    }

    char currentOf[2] = {'a', 'a'};
    size_t steps = 0;
};

TEST_F(LockInterleavingTest, SessionsDoWhatTheyMayInEveryOrder) {
    const std::vector<std::string> scripts = {"1u2u", "1d2u", "BruE", "B1uE", "B1uA", "BrdE",
                                              "BrdA", "12su", "ruru", "B12E", "Bu1E", "1BuE"};
    for (size_t first = 0; first < scripts.size(); ++first) {
        for (size_t second = first; second < scripts.size(); second += rounds<size_t>(1, 5))
            ASSERT_NO_FATAL_FAILURE(interleaveAll(scripts[first], scripts[second]));
    }
    EXPECT_GT(steps, rounds(20000u, 3000u));
}

TEST_F(LockInterleavingTest, SessionsDoWhatTheyMayInEveryOrderOfRandomScripts) {
    uint32_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    auto script = [&] {
        std::string text;
        while (text.size() < 4)
            text += allSteps[random() % (sizeof allSteps - 1)];
        return text;
    };
    for (int pair = 0; pair < rounds(60, 10); ++pair)
        ASSERT_NO_FATAL_FAILURE(interleaveAll(script(), script()));
}

}  // namespace
