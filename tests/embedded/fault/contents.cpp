#include "embedded/fault/contents.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

#include "embedded/fault/scenario.h"

namespace vantrel::test {

namespace {

constexpr uint8_t readerNumber = 77;
constexpr uint32_t longestWhole = 65535, longestRead = 300000, readChunk = 0x80000001;
constexpr int32_t exclusive = -4;
constexpr uint64_t ownerFlags = 0x2160;
constexpr const char *sideFileEndings[] = {"-wal", "-shm", "-lock", "-commit", "-new", "-rekey", "-journal"};

bool isSideFile(const std::string &name) {
    return std::any_of(std::begin(sideFileEndings), std::end(sideFileEndings),
                       [&](const char *ending) { return name.ends_with(ending); });
}

std::string shortened(const std::string &bytes) {
    constexpr size_t longest = 40;
    return bytes.size() <= longest
               ? bytes
               : std::to_string(bytes.size()) + '#' + std::to_string(std::hash<std::string>()(bytes));
}

// Reads one open file.
class Reader {
  public:
    Reader(EngineSession &session, EngineSession::PositionBlock &block) : session_(session), block_(block) {}

    std::string all() {
        Reply reply = session_.call(15, &block_, std::string(longestWhole, '\0'));
        std::string statistics = reply.data;
        if (reply.status != 0)
            return "statistics " + std::to_string(reply.status);
        // How many pages are unused is left to chance.
        statistics.replace(22, 2, 2, '\0');
        std::string found = std::to_string(number(statistics, 8, 8)) + " records, definition " +
                            std::to_string(std::hash<std::string>()(statistics)) + '\n';
        found += "physical: " + walk(33, 24, 0, true) + '\n';
        for (int32_t index : indexesIn(statistics))
            found += "index " + std::to_string(index) + ": " + walk(12, 6, index, index < 119) + '\n';
        return found;
    }

  private:
    static std::vector<int32_t> indexesIn(const std::string &statistics) {
        std::vector<int32_t> indexes;
        size_t at = 32;
        for (uint64_t left = number(statistics, 16, 2); left > 0; at += 24) {
            bool isLast = (number(statistics, at + 4, 2) & continues) == 0;
            if (!isLast)
                continue;
            indexes.push_back(static_cast<int32_t>(number(statistics, at + 20, 2)));
            --left;
        }
        if ((statistics[31] & 2) != 0)
            indexes.push_back(125);
        if ((statistics[31] & 1) != 0)
            indexes.push_back(124);
        return indexes;
    }

    std::string walk(uint32_t first, uint32_t next, int32_t index, bool showsKeys) {
        std::string found;
        const std::string key(64, '?');
        Reply reply = session_.call(first, &block_, "", key, index, longestWhole);
        while (reply.status == 0 || reply.status == 22) {
            uint64_t address = number(session_.call(22, &block_, "", "", 0, 8).data, 0, 8);
            found += std::to_string(address);
            if (showsKeys)
                found += '=' + shortened(reply.key.substr(0, reply.key.find('?'))) + '/';
            found += shortened(reply.status == 0 ? reply.data : longRecord(address)) + ' ';
            reply = session_.call(next, &block_, "", key, index, longestWhole);
        }
        return found + std::to_string(reply.status);
    }

    std::string longRecord(uint64_t address) {
        std::string target(longestRead, '\0');
        const void *bytes = target.data();
        std::string pointer(sizeof bytes, '\0');
        memcpy(pointer.data(), &bytes, sizeof bytes);
        std::string request = u64(address) + u32(readChunk) + u32(1) + u32(0) + u32(longestRead) + pointer;
        auto delivered = static_cast<uint32_t>(request.size());
        uint8_t client[16] = {};
        client[12] = readerNumber;
        int32_t status = VNTLEXID(23, block_.data(), request.data(), &delivered, nullptr, 0, -2, client);
        return status == 0 ? target.substr(0, delivered) : "chunk " + std::to_string(status);
    }

    EngineSession &session_;
    EngineSession::PositionBlock &block_;
};

std::string ownerOf(EngineSession &session, EngineSession::PositionBlock &block, const std::string &path) {
    EngineSession::PositionBlock withoutName{};
    int32_t opened = session.open(&withoutName, path);
    Reply usage = session.call(65, &block, "ExSt" + u32(4), "", 0, 4096);
    uint64_t flags = usage.status == 0 ? number(usage.data, usage.data.size() - 4, 2) & ownerFlags : 0;
    return "without the owner's name " + std::to_string(opened) + ", owner " + std::to_string(flags) + '\n';
}

}  // namespace

std::vector<std::string> filesIn(const std::string &directory) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        if (!isSideFile(entry.path().filename().string()))
            names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string namesIn(const std::string &directory) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::string all;
    for (const std::string &name : names)
        all += (all.empty() ? "" : ",") + name;
    return all;
}

// An encrypted file can need that another one, which decides about its last transaction, is open.
std::string contentsOf(const std::string &directory, int32_t mode) {
    constexpr int32_t inUse = 85;
    std::string found;
    EngineSession session(readerNumber);
    std::vector<std::string> names = filesIn(directory);
    std::vector<EngineSession::PositionBlock> blocks(names.size());
    std::vector<int32_t> statuses(names.size(), inUse);
    for (int turn = 0; turn < 2; ++turn) {
        for (size_t file = 0; file < names.size(); ++file) {
            std::string path = directory + '/' + names[file] + '\0';
            if (statuses[file] == inUse)
                statuses[file] = session.call(0, &blocks[file], ownerName, path, mode).status;
        }
    }
    for (size_t file = 0; file < names.size(); ++file) {
        found += names[file] + ": ";
        found += statuses[file] == 0 ? Reader(session, blocks[file]).all() +
                                           ownerOf(session, blocks[file], directory + '/' + names[file])
                                     : std::to_string(statuses[file]);
        found += '\n';
    }
    return found;
}

std::string changeEach(const std::string &directory) {
    EngineSession session(readerNumber);
    for (const std::string &name : filesIn(directory)) {
        EngineSession::PositionBlock block{};
        int32_t opened = session.call(0, &block, ownerName, directory + '/' + name + '\0', exclusive).status;
        if (opened != 0)
            return name + " cannot be opened alone: " + std::to_string(opened);
        int32_t read = session.call(12, &block, "", std::string(64, '?'), 0, longestWhole).status;
        if (read == 6 || read == 9)
            continue;
        int32_t erased = session.call(4, &block).status;
        if (erased != 0)
            return name + " cannot be changed: " + std::to_string(read) + ", " + std::to_string(erased);
    }
    return {};
}

}  // namespace vantrel::test
