#include "participant_session.h"

#include <sys/wait.h>
#include <unistd.h>

#include "library.h"
#include "participant.h"
#include "tests/embedded/quiet_fork.h"

namespace vantrel::test {

namespace {

// The process number keeps the sessions of all participants apart.
VantrelClient *allocateClient() {
    VantrelClient *client = nullptr;
    VantrelClientAllocate(&client, static_cast<uint32_t>(getpid()) & 0xFFFF, 1);
    return client;
}

std::string textOf(VantrelStatus status) {
    return std::to_string(status);
}

}  // namespace

void createNumberFile(const std::string &path) {
    VantrelClient *client = allocateClient();
    FileDefinition file;
    file.fixedLength = 8;
    file.indexes[0] = {.segments = {{0, 4, VANTREL_DATA_TYPE_UNSIGNED_BINARY}}, .isUnique = true};
    createFile(client, path, file);
    VantrelClientReset(client);
    VantrelClientFree(client);
}

void deleteNumberFile(const std::string &path) {
    VantrelClient *client = allocateClient();
    VantrelClientFileDelete(client, path.c_str());
    VantrelClientReset(client);
    VantrelClientFree(client);
}

ParticipantSession::ParticipantSession(const std::string &path) : path_(path), client_(allocateClient()) {}

std::string ParticipantSession::perform(const std::string &command) {
    std::istringstream arguments(command);
    std::string verb;
    arguments >> verb;
    if (verb == "open")
        return textOf(open(&file_));
    if (verb == "close")
        return textOf(VantrelClientFileClose(client_, file_));
    if (verb == "end")
        return textOf(VantrelClientTransactionEnd(client_));
    if (verb == "abort")
        return textOf(VantrelClientTransactionAbort(client_));
    if (verb == "begin") {
        VantrelTransactionMode mode = 0;
        arguments >> mode;
        return textOf(VantrelClientTransactionBegin(client_, mode, VANTREL_LOCK_MODE_NONE));
    }
    return performOnFile(verb, arguments);
}

std::string ParticipantSession::performOnFile(const std::string &verb, std::istringstream &arguments) {
    uint32_t first = 0, second = 0;
    if (verb == "contents")
        return contents();
    if (verb == "fork")
        return useInChild();
    if (verb == "insert" || verb == "update" || verb == "delete")
        return textOf(change(verb, arguments));
    arguments >> first >> second;
    if (verb == "read")
        return read(first, static_cast<VantrelLockMode>(second));
    if (verb == "next")
        return next(static_cast<VantrelLockMode>(first));
    if (verb == "unlock")
        return textOf(VantrelFileRecordUnlock(file_, static_cast<VantrelUnlockMode>(first)));
    if (verb == "count")
        return count(first);
    return verb == "watch" ? watch(first) : "unknown command";
}

VantrelStatus ParticipantSession::open(VantrelFile **file) {
    return VantrelClientFileOpen(client_, file, path_.c_str(), nullptr, VANTREL_OPEN_MODE_NORMAL,
                                 VANTREL_OPEN_VARIANT_DEFAULT);
}

VantrelStatus ParticipantSession::change(const std::string &verb, std::istringstream &arguments) {
    NumberRecord record{};
    arguments >> record.number >> record.value;
    if (verb == "insert")
        return VantrelFileRecordCreate(file_, &record, sizeof record);
    if (verb == "update")
        return VantrelFileRecordUpdate(file_, &record, sizeof record);
    return VantrelFileRecordDelete(file_);
}

std::string ParticipantSession::readingOutcome(int32_t length, const NumberRecord &record) const {
    if (length == sizeof record)
        return std::to_string(record.value);
    return "status " + textOf(VantrelFileGetLastStatusCode(file_));
}

std::string ParticipantSession::read(uint32_t number, VantrelLockMode lockMode) {
    NumberRecord record{};
    int32_t length = VantrelFileRecordRetrieve(file_, VANTREL_COMPARISON_EQUAL, 0, &number, sizeof number,
                                               &record, sizeof record, lockMode);
    return readingOutcome(length, record);
}

std::string ParticipantSession::next(VantrelLockMode lockMode) {
    NumberRecord record{};
    int32_t length = VantrelFileRecordRetrieveNext(file_, nullptr, 0, &record, sizeof record, lockMode);
    return readingOutcome(length, record);
}

std::string ParticipantSession::contents() {
    std::string text;
    NumberRecord record{};
    int32_t length =
        VantrelFileRecordRetrieveFirst(file_, 0, nullptr, 0, &record, sizeof record, VANTREL_LOCK_MODE_NONE);
    while (length == sizeof record) {
        text += " " + std::to_string(record.number) + ":" + std::to_string(record.value);
        length =
            VantrelFileRecordRetrieveNext(file_, nullptr, 0, &record, sizeof record, VANTREL_LOCK_MODE_NONE);
    }
    return text.empty() ? "nothing" : text.substr(1);
}

std::string ParticipantSession::count(uint32_t transactions) {
    for (uint32_t value = 1; value <= transactions; ++value) {
        perform("begin 1");
        for (uint32_t number : {1u, 2u}) {
            read(number, VANTREL_LOCK_MODE_NONE);
            NumberRecord record{number, value};
            if (VantrelFileRecordUpdate(file_, &record, sizeof record) != 0)
                return "status " + textOf(VantrelFileGetLastStatusCode(file_));
        }
        perform("end");
    }
    return "0";
}

std::string ParticipantSession::watch(uint32_t times) {
    for (uint32_t i = 0; i < times; ++i) {
        std::string first = read(1, VANTREL_LOCK_MODE_NONE);
        std::string second = read(2, VANTREL_LOCK_MODE_NONE);
        if (std::stoul(second) < std::stoul(first))
            return "torn: " + first + " before " + second;
    }
    return "0";
}

std::string ParticipantSession::useInChild() {
    int answers[2];
    if (pipe(answers) != 0)
        return "no pipe";
    pid_t child = forkWhileQuiet([&] {
        std::string text = next(VANTREL_LOCK_MODE_NONE);
        VantrelFile *own = nullptr;
        text += ", open " + textOf(open(&own));
        std::swap(own, file_);
        text += ", " + read(2, VANTREL_LOCK_MODE_NONE);
        text += ", close " + textOf(VantrelClientFileClose(client_, file_));
        bool isWritten = write(answers[1], text.data(), text.size()) > 0;
        return isWritten ? 0 : 1;
    });
    close(answers[1]);
    char text[200];
    ssize_t length = ::read(answers[0], text, sizeof text);
    close(answers[0]);
    waitpid(child, nullptr, 0);
    return std::string(text, length > 0 ? static_cast<size_t>(length) : 0);
}

}  // namespace vantrel::test
