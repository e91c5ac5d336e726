#include "embedded/operation/lock_model.h"

#include <algorithm>

namespace vantrel::test {

LockModel::LockModel() {
    for (File &file : files_)
        file.committed = {{'a', {1, 1, 1}}, {'b', {2, 2, 2}}};
}

std::optional<LockModel::Outcome> LockModel::apply(int session, LockStep step, int content) {
    me_ = session;
    file_ = step.file;
    switch (step.action) {
        case 'r':
        case 's':
            return read(step.action == 'r' ? 'a' : 'b', Kind::none, false);
        case '1':
        case '2':
        case '3':
            return read(static_cast<char>('a' + step.action - '1'), Kind::single, false);
        case 'w':
        case 'x':
            return read(step.action == 'w' ? 'a' : 'b', Kind::single, true);
        case 'm':
        case 'n':
            return read(step.action == 'm' ? 'a' : 'b', Kind::multiple, false);
        case 'v':
        case 'y':
            return read(step.action == 'v' ? 'a' : 'b', Kind::multiple, true);
        case 'u':
        case 'd':
            return change(step.action == 'd', content);
        case 'i':
            return insert(content);
        case 'K':
            releaseLocks(true);
            return Outcome{0};
        case 'B':
            return begin(Transaction::neverWaits);
        case 'C':
            return begin(Transaction::concurrent);
        case 'X':
            return begin(Transaction::exclusive);
        default:
            return finish(step.action == 'E');
    }
}

// What a transaction has inserted nobody else can find.
bool LockModel::otherHolds(int address) {
    const Place &others = sessions_[1 - me_].places[file_];
    return others.locks.count(address) != 0 || others.versionsBefore.count(address) != 0;
}

bool LockModel::takesWriteSide() {
    if (file().writer == 1 - me_)
        return false;
    if (isInside() && file().writer != me_) {
        file().writer = me_;
        file().changed = file().committed;
    }
    return true;
}

std::optional<LockModel::Outcome> LockModel::waitOr(int32_t status, bool waits) {
    return waits && mayWait() ? std::nullopt : std::optional(Outcome{status});
}

std::optional<LockModel::Outcome> LockModel::read(char letter, Kind kind, bool waits) {
    if (me().transaction == Transaction::exclusive && !takesWriteSide())
        return std::nullopt;
    auto found = view().find(letter);
    if (found == view().end()) {
        place().current.reset();
        return Outcome{4};
    }
    auto [address, version, content] = found->second;
    if (kind != Kind::none) {
        if (place().kind != Kind::none && place().kind != kind)
            return Outcome{93};
        if (otherHolds(address))
            return waitOr(84, waits);
        lock(address, kind);
    }
    place().current = {letter, address, version};
    return Outcome{0, content};
}

void LockModel::lock(int address, Kind kind) {
    auto &locks = place().locks;
    locks.emplace(address, isInside());
    place().kind = kind;
    if (kind == Kind::single)
        std::erase_if(locks, [=](const auto &lock) { return lock.first != address; });
}

std::optional<LockModel::Outcome> LockModel::change(bool erases, int content) {
    if (!place().current)
        return Outcome{8};
    if (!takesWriteSide())
        return waitOr(85, true);
    Current &current = *place().current;
    if (otherHolds(current.address))
        return Outcome{84};
    auto stored = view().find(current.letter);
    if (stored == view().end() || stored->second.version != current.version)
        return Outcome{80};
    if (isInside()) {
        place().versionsBefore.try_emplace(current.address, current.version);
    } else if (place().kind == Kind::single && place().locks.erase(current.address) != 0) {
        place().kind = Kind::none;
    }
    if (erases) {
        view().erase(stored);
        place().current.reset();
    } else {
        current.version = ++lastVersion_;
        stored->second = {current.address, current.version, content};
    }
    return Outcome{0};
}

std::optional<LockModel::Outcome> LockModel::insert(int content) {
    if (!takesWriteSide())
        return waitOr(85, true);
    if (view().count('c') != 0)
        return Outcome{5};
    Stored stored{++lastAddress_, ++lastVersion_, content};
    view()['c'] = stored;
    place().current = {'c', stored.address, stored.version};
    if (isInside())
        place().versionsBefore.try_emplace(stored.address, std::nullopt);
    return Outcome{0};
}

LockModel::Outcome LockModel::begin(Transaction transaction) {
    if (isInside())
        return {37};
    me().transaction = transaction;
    return {0};
}

LockModel::Outcome LockModel::finish(bool keeps) {
    if (!isInside())
        return {keeps ? 39 : 36};
    for (file_ = 0; file_ < 2; ++file_) {
        if (file().writer == me_) {
            if (keeps)
                file().committed = file().changed;
            else
                takeBack();
            file().writer.reset();
        }
        place().versionsBefore.clear();
        releaseLocks(false);
    }
    me().transaction = Transaction::none;
    return {0};
}

void LockModel::takeBack() {
    if (!place().current)
        return;
    auto before = place().versionsBefore.find(place().current->address);
    if (before == place().versionsBefore.end())
        return;
    if (before->second)
        place().current->version = *before->second;
    else
        place().current.reset();
}

void LockModel::releaseLocks(bool all) {
    std::erase_if(place().locks, [=](const auto &lock) { return all || lock.second; });
    if (place().locks.empty())
        place().kind = Kind::none;
}

}  // namespace vantrel::test
