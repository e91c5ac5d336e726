#include "embedded/kill/worker.h"

#include <unistd.h>

#include <algorithm>

namespace vantrel::test {

namespace {

constexpr uint32_t overwrite = 0x80000001, insertInto = 0x80000009, deleteFrom = 0x80000010,
                   append = 0xA0000001, truncate = 0x80000004;
constexpr uint32_t longEnough = 200000;

// One file has single locks only, the other one multiple ones.
uint32_t lockBias(size_t file) {
    return file == 0 ? 200 : 400;
}

}  // namespace

Worker::Worker(const std::string &directory, uint64_t seed, Journal &journal)
    : files_(directory, 1), random_(seed), journal_(journal) {}

template <class Function>
void Worker::perform(Call call, const Function &function) {
    uint32_t number = journal_.asked;
    if (number == mostCalls)
        pause();
    journal_.calls[number] = call;
    ++journal_.asked;
    journal_.calls[number].status = function();
    ++journal_.answered;
}

void Worker::run() {
    for (uint8_t file : {uint8_t{1}, uint8_t{0}})
        perform({.kind = CallKind::open, .file = file}, [&] { return files_.open(file); });
    for (;;)
        step();
}

uint32_t Worker::randomLength() {
    if (random_.percent(5))
        return 60000 + random_.below(5536);
    return fixedLength + random_.below(random_.percent(12) ? 20000 : 400);
}

void Worker::step() {
    static const std::vector<CallKind> kinds = {
        CallKind::insert,     CallKind::insert,      CallKind::insert,    CallKind::insertMany,
        CallKind::update,     CallKind::update,      CallKind::erase,     CallKind::chunk,
        CallKind::chunk,      CallKind::lock,        CallKind::begin,     CallKind::begin,
        CallKind::eraseGroup, CallKind::createIndex, CallKind::dropIndex, CallKind::close,
        CallKind::percentage};
    CallKind kind = random_.pick(kinds);
    if (kind == CallKind::begin)
        workInTransaction();
    else if (kind == CallKind::close)
        reopen();
    else
        change(kind);
}

void Worker::workInTransaction() {
    static const std::vector<uint32_t> codes = {19, 1019, 1519};
    static const std::vector<CallKind> kinds = {CallKind::insert,    CallKind::insertMany, CallKind::update,
                                                CallKind::erase,     CallKind::chunk,      CallKind::lock,
                                                CallKind::eraseGroup};
    uint32_t code = random_.pick(codes);
    perform({.kind = CallKind::begin}, [&] { return files_.begin(code); });
    for (uint32_t changes = random_.below(7); changes > 0; --changes)
        change(random_.pick(kinds));
    if (random_.percent(80))
        perform({.kind = CallKind::end}, [&] { return files_.end(); });
    else
        perform({.kind = CallKind::abort}, [&] { return files_.abort(); });
}

void Worker::reopen() {
    uint8_t file = randomFile();
    constexpr int32_t accelerated = -1;
    int32_t mode = random_.percent(30) ? accelerated : 0;
    perform({.kind = CallKind::close, .file = file}, [&] { return files_.close(file); });
    perform({.kind = CallKind::open, .file = file}, [&] { return files_.open(file, mode); });
}

void Worker::planChunk(Call &call, uint32_t recordLength) {
    static const std::vector<uint32_t> codes = {overwrite, insertInto, deleteFrom, append, truncate};
    call.chunkCode = recordLength > longEnough ? truncate : random_.pick(codes);
    uint32_t first = call.chunkCode == overwrite ? tagOffset : fixedLength;
    call.offset = first + random_.below(recordLength - first + 1);
    call.length = random_.percent(10) ? 70000 : 1 + random_.below(3000);
    if (call.chunkCode == deleteFrom)
        call.length = std::min(call.length, recordLength - call.offset);
    if (call.chunkCode == truncate)
        call.length = 0;
}

Call Worker::plan(CallKind kind) {
    Call call{.kind = kind,
              .file = randomFile(),
              .number = randomNumber(),
              .group = randomGroup(),
              .length = randomLength(),
              .seed = random_.below(1000000)};
    if (kind == CallKind::createIndex || kind == CallKind::dropIndex)
        call.number = 2 + random_.below(2);
    if (kind == CallKind::percentage)
        call.number = random_.below(2);
    if (kind == CallKind::insertMany) {
        call.count = 1 + random_.below(6);
        call.length = std::min(call.length, 1000u);
    }
    return call;
}

// What is written depends on the record only for chunks.
void Worker::change(CallKind kind) {
    Call call = plan(kind);
    int32_t found = 0;
    if (kind == CallKind::update || kind == CallKind::erase || kind == CallKind::chunk) {
        found = files_.find(call.file, call.number, random_.percent(20) ? lockBias(call.file) : 0);
        std::string record = found == 0 ? files_.current(call.file) : "";
        call.valueRead = record.empty() ? 0 : valueOf(record);
        if (kind == CallKind::chunk && !record.empty())
            planChunk(call, static_cast<uint32_t>(record.size()));
    }
    perform(call, [&] { return found != 0 ? found : ask(call); });
}

int32_t Worker::ask(const Call &call) {
    size_t file = call.file;
    auto bytes = [&](uint32_t number) { return recordBytes(number, call.group, call.length, call.seed); };
    std::vector<std::string> many;
    switch (call.kind) {
        case CallKind::insert:
            return files_.insert(file, bytes(call.number));
        case CallKind::insertMany:
            for (uint32_t number = call.number; number < call.number + call.count; ++number)
                many.push_back(bytes(number));
            return files_.insertMany(file, many);
        case CallKind::update:
            return files_.update(file, bytes(call.number));
        case CallKind::erase:
            return files_.erase(file);
        case CallKind::chunk:
            return files_.chunk(file, call.chunkCode, call.offset, randomBytes(call.length, call.seed));
        case CallKind::eraseGroup:
            return files_.eraseGroup(file, call.group);
        case CallKind::createIndex:
            return files_.createIndex(file, call.number);
        case CallKind::dropIndex:
            return files_.dropIndex(file, call.number);
        case CallKind::percentage:
            return files_.percentage(file, call.number);
        default:
            return files_.find(file, call.number, lockBias(file));
    }
}

}  // namespace vantrel::test
