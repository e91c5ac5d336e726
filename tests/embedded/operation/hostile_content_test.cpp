#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>

#include "embedded/emulation.h"
#include "embedded/operation/owner_fixture.h"
#include "fuzz/file_images.h"
#include "fuzz/file_trial.h"

namespace {

using namespace vantrel::test;
using vantrel::fuzz::FileImage;
using vantrel::fuzz::Trial;

const size_t cutEvery = rounds<size_t>(512, 16384);

// More of everything where somebody has the time.
uint32_t patience() {
    const char *chosen = getenv("VANTREL_HOSTILE_FACTOR");
    return chosen == nullptr ? 1 : static_cast<uint32_t>(strtoul(chosen, nullptr, 10));
}

// The images are made once; the directory stays as long as the process, since a pointer names a path in it.
struct Images {
    TemporaryDirectory directory;
    std::vector<FileImage> all = vantrel::fuzz::makeImages(directory.path());

    const FileImage &named(const std::string &name) const {
        return *std::find_if(all.begin(), all.end(),
                             [&](const FileImage &image) { return image.name == name; });
    }
};

class HostileContentTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { images = new Images; }
    static void TearDownTestSuite() {
        delete images;
        images = nullptr;
    }

    static std::string path() { return images->directory / "file"; }

    // Each answer is a status of which the reference tells, and comes in time.
    static Trial tryImage(const FileImage &image, int32_t mode, const std::string &what) {
        vantrel::fuzz::placeImage(image, images->directory.path());
        return tryPlaced(mode, what);
    }
    static Trial tryPlaced(int32_t mode, const std::string &what) {
        auto start = std::chrono::steady_clock::now();
        Trial trial = vantrel::fuzz::tryFile(path(), mode, vantrel::fuzz::imageOwner);
        EXPECT_EQ(trial.statuses.count(1) + trial.statuses.count(19), 0u) << what;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << what;
        return trial;
    }

    // The statuses of opening a plain file with verification and as it is, after a change of its tables.
    static std::string afterSql(const std::string &kind, const std::string &sql) {
        vantrel::fuzz::placeImage(images->named(kind), images->directory.path());
        sqlite3 *database = nullptr;
        char *message = nullptr;
        EXPECT_EQ(sqlite3_open(path().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK)
            << sql << ": " << message;
        sqlite3_free(message);
        sqlite3_close(database);
        Trial trial = tryPlaced(0, sql);
        return std::to_string(trial.verified) + ' ' + std::to_string(trial.opened);
    }

    static Images *images;
};

Images *HostileContentTest::images = nullptr;

TEST_F(HostileContentTest, UndamagedFilesAreWhole) {
    for (const FileImage &image : images->all) {
        Trial trial = tryImage(image, 0, image.name);
        EXPECT_EQ(trial.verified, 0) << image.name;
        EXPECT_EQ(trial.opened, 0) << image.name;
        EXPECT_EQ(trial.statuses.count(2), 0u) << image.name;
    }
}

TEST_F(HostileContentTest, FilesCutAnywhere) {
    for (const char *kind : {"plain", "log"}) {
        const FileImage &whole = images->named(kind);
        for (size_t length = 0; length < whole.file.size(); length += cutEvery) {
            FileImage image = whole;
            image.file.resize(length);
            Trial trial = tryImage(image, 0, kind + std::to_string(length));
            bool isStated = trial.verified == 2 || trial.verified == 30 || !image.log.empty();
            EXPECT_TRUE(isStated) << kind << ' ' << length << ": " << trial.verified;
        }
    }
}

TEST_F(HostileContentTest, LogsCutAnywhereLoseNoMoreThanTheirEnd) {
    const FileImage &whole = images->named("log");
    for (size_t length = 0; length < whole.log.size(); length += cutEvery) {
        FileImage image = whole;
        image.log.resize(length);
        Trial trial = tryImage(image, 0, std::to_string(length));
        EXPECT_EQ(trial.verified, 0) << length;
        EXPECT_EQ(trial.opened, 0) << length;
    }
}

TEST_F(HostileContentTest, RandomBitsTurnedAround) {
    uint32_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    uint32_t damaged = 0;
    for (uint32_t variant = 0; variant < rounds(500u, 40u) * patience(); ++variant) {
        // A name is compared slowly.
        const FileImage *chosen = &images->all[random() % images->all.size()];
        if ((chosen->name == "encrypted" || chosen->name == "owner") && variant % 8 != 0)
            chosen = &images->named("plain");
        FileImage image = *chosen;
        std::string *contents[] = {&image.file,    &image.file,  &image.file,    &image.log,
                                   &image.pointer, &image.other, &image.otherLog};
        for (uint32_t bits = 1 + random() % 8; bits > 0; --bits) {
            std::string &content = *contents[random() % std::size(contents)];
            if (!content.empty())
                content[random() % content.size()] ^= static_cast<char>(1 << random() % 8);
        }
        Trial trial = tryImage(image, -static_cast<int32_t>(random() % 5), std::to_string(variant));
        damaged += trial.verified != 0;
    }
    EXPECT_GT(damaged, 0u);
}

struct SqlDamage {
    const char *kind;
    const char *sql;
    const char *expected;
};

// Behind the status of verification stands that of opening without it.
const SqlDamage damages[] = {
    {"plain", "UPDATE definition SET specification = x''", "2 2"},
    {"plain", "UPDATE definition SET specification = 'text'", "2 2"},
    {"plain", "UPDATE definition SET specification = randomblob(10000)", "2 2"},
    {"plain", "UPDATE definition SET specification = zeroblob(1000000)", "2 2"},
    {"plain", "DELETE FROM definition", "2 2"},
    {"plain", "UPDATE definition SET generation = 9223372036854775807", "0 0"},
    {"plain", "DELETE FROM state", "2 0"},
    {"plain", "UPDATE state SET last_address = 9223372036854775807", "2 0"},
    {"plain", "UPDATE state SET last_address = -5", "2 0"},
    {"plain", "UPDATE state SET last_address = 1", "0 0"},
    {"plain", "UPDATE state SET record_count = -1", "2 0"},
    {"plain", "UPDATE state SET record_count = 'many', unique_counts = 'none'", "2 0"},
    {"plain", "UPDATE state SET last_time = -1", "0 0"},
    {"plain", "UPDATE record SET data = x'00'", "0 0"},
    {"plain", "UPDATE record SET data = ''", "0 0"},
    {"plain", "UPDATE record SET data = 7", "0 0"},
    {"plain", "UPDATE record SET length = -1", "0 0"},
    {"plain", "UPDATE record SET length = 9223372036854775807", "0 0"},
    {"plain", "UPDATE record SET length = 70000", "0 0"},
    {"plain", "UPDATE record SET data = zeroblob(70000), length = 70000", "0 0"},
    {"plain", "UPDATE record SET created = 'then', updated = 1.5", "0 0"},
    {"plain", "DELETE FROM record WHERE address > 3", "2 0"},
    {"plain", "UPDATE record SET address = -address", "0 0"},
    {"plain", "UPDATE record SET address = 9223372036854775807 WHERE address = 20", "0 0"},
    {"plain", "DELETE FROM index_0", "0 0"},
    {"plain", "UPDATE index_0 SET address = address + 5", "0 0"},
    {"plain", "UPDATE index_0 SET key = 'text' || address", "0 0"},
    {"plain", "UPDATE index_1 SET key = zeroblob(100000)", "0 0"},
    {"plain", "DROP TABLE index_0", "0 0"},
    {"plain", "DROP TABLE record", "2 0"},
    {"plain", "DROP TABLE state", "2 0"},
    {"plain", "DROP TABLE commit_state", "0 0"},
    {"plain", "DELETE FROM commit_state", "0 0"},
    {"plain", "DROP TABLE redo_file", "2 2"},
    {"plain", "INSERT INTO redo_file VALUES(x'00', x'00', '/nowhere/file')", "0 0"},
    {"plain", "INSERT INTO redo_file VALUES(x'00', x'00', '/dev/zero')", "0 0"},
    {"plain", "DROP TABLE record; CREATE TABLE record(address, data)", "2 0"},
    {"plain",
     "ALTER TABLE record RENAME TO kept; CREATE VIEW record AS WITH RECURSIVE n(address) AS (SELECT 1 UNION "
     "ALL SELECT address + 1 FROM n) SELECT address, 0 created, 0 updated, 4 length, x'00000000' data FROM n",
     "2 0"},
    {"plain",
     "CREATE TRIGGER more AFTER INSERT ON record BEGIN INSERT INTO record SELECT max(address) + 1, 0, 0, 32, "
     "zeroblob(32) FROM record; END; PRAGMA recursive_triggers = ON",
     "0 0"},
    {"plain", "CREATE TRIGGER none BEFORE INSERT ON record BEGIN SELECT RAISE(IGNORE); END", "0 0"},
    {"plain", "CREATE TRIGGER none BEFORE UPDATE ON state BEGIN SELECT RAISE(ROLLBACK, 'no'); END", "0 0"},
    {"plain", "CREATE UNIQUE INDEX narrow ON record(length) WHERE address > 1000", "0 0"},
    {"plain", "CREATE INDEX wide ON record(hex(data))", "0 0"},
    {"long", "UPDATE piece SET bytes = x''", "0 0"},
    {"long", "UPDATE piece SET bytes = zeroblob(1000000)", "0 0"},
    {"long", "UPDATE piece_place SET length = -1", "0 0"},
    {"long", "UPDATE piece_place SET length = 9223372036854775807", "0 0"},
    {"long", "UPDATE piece_place SET piece = 12345", "0 0"},
    {"long", "UPDATE piece_group SET length = -1", "0 0"},
    {"long", "UPDATE piece_group SET length = 9223372036854775807, place = 9223372036854775807", "0 0"},
    {"long", "DELETE FROM piece", "0 0"},
    {"long", "DELETE FROM piece_group", "0 0"},
    {"long", "UPDATE record SET length = 2147483647 WHERE length > 65535", "0 0"},
    {"counted", "UPDATE counted_order SET height = 99", "2 2"},
    {"counted", "UPDATE counted_order SET height = 12", "2 0"},
    {"counted", "UPDATE counted_order SET height = 'high'", "2 2"},
    {"counted", "UPDATE bucket SET count = -1", "2 0"},
    {"counted", "UPDATE bucket SET count = 9223372036854775807", "2 0"},
    {"counted", "UPDATE bucket SET address = address + 1000", "2 0"},
    {"counted", "DELETE FROM bucket", "2 0"},
    {"counted", "DROP TABLE bucket", "2 0"},
    {"owner", "UPDATE owner SET verifier = x''", "2 2"},
    {"owner", "UPDATE owner SET verifier = zeroblob(65)", "2 2"},
    {"owner", "DELETE FROM owner", "2 2"},
    {"owner", "UPDATE owner SET readable = 'yes'", "0 0"},
};

TEST_F(HostileContentTest, TablesChangedByHand) {
    for (const SqlDamage &damage : damages)
        EXPECT_EQ(afterSql(damage.kind, damage.sql), damage.expected) << damage.kind << ": " << damage.sql;
}

}  // namespace
