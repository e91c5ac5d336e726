#include <dlfcn.h>

#include <map>
#include <memory>

#include "embedded/operation/engine_session.h"

struct sqlite3;

namespace {

// What connections have set the size of their caches to.
std::map<sqlite3 *, std::string> cacheSizes;

}  // namespace

// Stands in front of the database library's function of this name.
extern "C" __attribute__((visibility("default"))) int sqlite3_exec(sqlite3 *database, const char *sql,
                                                                   int (*callback)(void *, int, char **,
                                                                                   char **),
                                                                   void *context, char **error) {
    using Function = int(sqlite3 *, const char *, int (*)(void *, int, char **, char **), void *, char **);
    static auto *const real = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, "sqlite3_exec"));
    const std::string text = sql, cacheSize = "PRAGMA cache_size = ";
    if (text.starts_with(cacheSize))
        cacheSizes[database] = text.substr(cacheSize.size());
    return real(database, sql, callback, context, error);
}

namespace {

using namespace vantrel::test;

// In KiB, with a minus in front; a system of 32 bits has a quarter of the room.
TEST(CacheBudget, IsSharedByTheConnectionsOfAProcess) {
    constexpr bool isWide = sizeof(void *) == 8;
    constexpr struct {
        size_t connections;
        const char *size;
    } expected[] = {{1, isWide ? "-65536" : "-16384"},
                    {2, isWide ? "-32768" : "-8192"},
                    {4, isWide ? "-16384" : "-4096"},
                    {100, "-1024"},
                    {3, isWide ? "-21845" : "-5461"}};
    TemporaryDirectory directory;
    std::string path = directory / "file";
    std::vector<std::unique_ptr<EngineSession>> sessions;
    std::map<const EngineSession *, EngineSession::PositionBlock> blocks;
    uint32_t record = 0;
    for (const auto &[connections, size] : expected) {
        cacheSizes.clear();
        while (sessions.size() > connections)
            sessions.pop_back();
        while (sessions.size() < connections) {
            sessions.push_back(std::make_unique<EngineSession>(static_cast<uint8_t>(sessions.size() + 1)));
            EngineSession &added = *sessions.back();
            if (record == 0) {
                ASSERT_EQ(added.create(path, createRequest(4, 0, {{{0, 4}}})), 0);
            }
            ASSERT_EQ(added.open(&(blocks[&added] = {}), path), 0);
        }
        ASSERT_EQ(sessions[0]->call(2, &blocks[sessions[0].get()], u32(++record), "", -1).status, 0);
        for (auto &session : sessions)
            ASSERT_EQ(session->call(13, &blocks[session.get()], "", "kkkk", 0, 4).status, 0);
        EXPECT_EQ(cacheSizes.size(), connections);
        for (const auto &[connection, set] : cacheSizes)
            EXPECT_EQ(set, size) << connections;
    }
}

}  // namespace
