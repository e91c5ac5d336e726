#include "embedded/commit/three_files.h"

#include <cstring>

#include "embedded/commit/child_process.h"

namespace vantrel::test {

namespace {

constexpr const char *names[] = {"first", "second", "third"};
constexpr uint32_t readChunk = 0x80000001, appendChunk = 0xA0000001;
constexpr uint32_t longest = 70000;

std::string ownerOf(size_t file) {
    return "owner" + std::to_string(file);
}

std::string descriptor(uint32_t code, const void *bytes, uint32_t length) {
    std::string address(sizeof bytes, '\0');
    memcpy(address.data(), &bytes, sizeof bytes);
    return u32(code) + u32(1) + u32(0) + u32(length) + address;
}

}  // namespace

const std::vector<ThreeFiles::Order> &ThreeFiles::orders() {
    static const std::vector<Order> all = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    return all;
}

std::string ThreeFiles::path(const TemporaryDirectory &directory, size_t file) {
    return directory / names[file];
}

ThreeFiles::ThreeFiles(const TemporaryDirectory &directory, uint8_t sessionNumber)
    : session(sessionNumber), sessionNumber_(sessionNumber) {
    for (size_t file = 0; file < paths_.size(); ++file)
        paths_[file] = path(directory, file);
}

void ThreeFiles::create(const TemporaryDirectory &directory) {
    constexpr uint16_t systemData = 0x0200;
    std::string request = createRequest(2, variableLength | systemData,
                                        {{{0, 1, modifiable}}, {{1, 1, modifiable | duplicates}}});
    ThreeFiles files(directory, 9);
    for (size_t file = 0; file < 3; ++file) {
        ASSERT_EQ(files.session.create(files.paths_[file], request), 0);
        ASSERT_EQ(files.session.open(&files.blocks[file], files.paths_[file]), 0);
        for (const std::string &record : {std::string("a1"), std::string("b1"), std::string(65000, 'd')})
            ASSERT_EQ(files.session.call(2, &files.blocks[file], record, "", -1).status, 0);
    }
}

int32_t ThreeFiles::encrypt(size_t file) {
    constexpr int32_t deniedAndEncrypted = 2;
    return session.call(29, &blocks[file], ownerOf(file), ownerOf(file), deniedAndEncrypted).status;
}

int32_t ThreeFiles::open(const Order &order, int32_t mode) {
    for (size_t file : order) {
        int32_t status = session.call(0, &blocks[file], ownerOf(file), paths_[file] + '\0', mode).status;
        if (status != 0)
            return status;
    }
    return 0;
}

void ThreeFiles::find(size_t file, const char *key) {
    int32_t status = session.call(5, &blocks[file], "", key, 0, 2).status;
    EXPECT_TRUE(status == 0 || status == 22) << key << ' ' << status;
}

void ThreeFiles::change(const Order &order) {
    for (size_t file : order) {
        find(file, "a");
        EXPECT_EQ(session.call(3, &blocks[file], "a2", "", -1).status, 0);
        find(file, "b");
        EXPECT_EQ(session.call(4, &blocks[file]).status, 0);
        EXPECT_EQ(session.call(2, &blocks[file], "c2", "", -1).status, 0);
        find(file, "d");
        EXPECT_EQ(append(&blocks[file], std::string(1000, 'y')), 0);
    }
}

int32_t ThreeFiles::append(EngineSession::PositionBlock *block, const std::string &bytes) {
    auto length = static_cast<uint32_t>(bytes.size());
    return session.call(53, block, descriptor(appendChunk, bytes.data(), length), "", -1).status;
}

uint32_t ThreeFiles::lengthOf(size_t file, uint64_t address) {
    std::string target(longest, '\0');
    std::string request = u64(address) + descriptor(readChunk, target.data(), longest);
    auto delivered = static_cast<uint32_t>(request.size());
    uint8_t client[16] = {};
    client[12] = sessionNumber_;
    EXPECT_EQ(VNTLEXID(23, blocks[file].data(), request.data(), &delivered, nullptr, 0, -2, client), 0);
    return delivered;
}

std::string ThreeFiles::contents(size_t file) {
    std::string found;
    Reply reply = session.call(12, &blocks[file], "", "?", 0, 2);
    for (; reply.status == 0 || reply.status == 22; reply = session.call(6, &blocks[file], "", "?", 0, 2)) {
        uint64_t address = number(session.call(22, &blocks[file], "", "", 0, 8).data, 0, 8);
        found += reply.status == 0 ? reply.data : 'd' + std::to_string(lengthOf(file, address));
        found += ' ';
    }
    return reply.status == 9 ? found : std::to_string(reply.status);
}

std::string ThreeFiles::contents(const Order &order) {
    std::string found = contents(order[0]);
    bool isSame = found == contents(order[1]) && found == contents(order[2]);
    return isSame ? found : "torn";
}

std::string contentsAfterwards(const TemporaryDirectory &directory, const ThreeFiles::Order &order) {
    return ChildProcess::run([&]() -> std::string {
        constexpr int32_t verify = -3;
        ThreeFiles files(directory, 1);
        int32_t status = files.open(order, verify);
        if (status != 0)
            return "open " + std::to_string(status);
        std::string found = files.contents(order);
        EXPECT_EQ(files.begin(), 0);
        for (auto &block : files.blocks)
            EXPECT_EQ(files.session.call(2, &block, "z9", "", -1).status, 0);
        EXPECT_EQ(files.end(), 0);
        EXPECT_EQ(files.contents(order), found + "z9 ");
        return found;
    });
}

}  // namespace vantrel::test
