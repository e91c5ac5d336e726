#include "embedded/expression/extended_request.h"
#include "embedded/fault/scenario.h"

// Single changes and bulk changes.

namespace vantrel::test {

namespace {

constexpr uint16_t keyOnly = 0x0010, systemData = 0x4200, autoincrement = 15;
constexpr uint32_t overwriteCode = 0x80000001, insertCode = 0x80000009, deleteCode = 0x80000010,
                   appendCode = 0xA0000001;

Step insert(const std::string &record) {
    return {.run = [=](World &world) { return world.insert(record); }};
}

Step update(const std::string &record) {
    return {.run = [=](World &world) { return world.call(3, record, "", -1).status; }};
}

Step chunk(uint32_t code, uint32_t offset, const std::string &bytes) {
    return {.run = [=](World &world) { return world.changeChunk(code, offset, bytes); }};
}

std::function<void(World &)> prepareWith(uint16_t flags, const std::string &rest = {}) {
    return [=](World &world) {
        makeFile(world, "file", flags);
        openIt(world);
        fill(world, 12, rest);
    };
}

void prepareCounting(World &world) {
    std::string request = createRequest(8, 0, {{{0, 4, extendedType, autoincrement}}, {{4, 1, duplicates}}});
    ASSERT_EQ(world.session().create(world.path("file"), request), 0);
    openIt(world);
    ASSERT_EQ(world.insert(std::string(4, '\0') + "aaaa"), 0);
}

void prepareLong(World &world) {
    prepareVariableFile(world);
    ASSERT_EQ(world.find("ab"), 0);
    ASSERT_EQ(world.changeChunk(appendCode, 0, std::string(100000, 't')), 0);
}

void prepareEncrypted(World &world) {
    prepareFile(world);
    ASSERT_EQ(world.call(29, ownerName, ownerName, 2).status, 0);
}

std::string extendedInsert(const std::vector<std::string> &records) {
    std::string request = u32(static_cast<uint32_t>(records.size()));
    for (const std::string &record : records)
        request += u32(static_cast<uint32_t>(record.size())) + record;
    return request;
}

std::string deletionOf(uint8_t value, uint16_t most, uint16_t offset = 2) {
    RequestFields fields;
    fields.terms = {{14, 1, offset, equalTo, std::string(1, static_cast<char>(value)), 0, ""}};
    fields.recordLimit = most;
    return fields.bytes();
}

const Step deletion = {
    .run = [](World &world) { return world.call(85, deletionOf('1', 100), "", 0, 65535).status; },
    .expected = 9};

// Of a key for which a place in the index takes memory. The last allocation of these changes is always tried.
std::string longKeyRecord(char first, char value) {
    return first + std::string(39, 'k') + value;
}

void prepareLongKeys(World &world) {
    ASSERT_EQ(world.session().create(world.path("file"), createRequest(41, 0, {{{0, 40, modifiable}}})), 0);
    openIt(world);
    for (char first = 'a'; first < 'g'; ++first)
        ASSERT_EQ(world.insert(longKeyRecord(first, static_cast<char>('0' + first % 2))), 0);
}

std::vector<Scenario> longKeyChanges() {
    const std::string key(40, '?');
    const std::string both = extendedInsert({longKeyRecord('h', '2'), longKeyRecord('A', '2')});
    auto insertAll = [=](World &world) { return world.call(40, both, key, 0, 4096).status; };
    auto deleteAll = [=](World &world) {
        return world.call(85, deletionOf('1', 100, 40), "", 0, 65535).status;
    };
    auto insertOne = [=](World &world) { return world.call(2, longKeyRecord('A', '2'), key, 0).status; };
    return {
        {.name = "InsertByLongKey",
         .prepare = prepareLongKeys,
         .begin = openIt,
         .work = {{.run = insertOne}}},
        {.name = "InsertExtendedByLongKey",
         .prepare = prepareLongKeys,
         .begin = openIt,
         .work = {{.run = insertAll}}},
        {.name = "DeleteExtendedByLongKey",
         .prepare = prepareLongKeys,
         .begin = openIt,
         .work = {{.run = deleteAll, .expected = 9}}},
    };
}

// More records than are locked one by one.
void prepareMany(World &world) {
    makeFile(world, "file");
    openIt(world);
    ASSERT_EQ(world.session().call(1019, nullptr).status, 0);
    for (char first = 'A'; first < 'A' + 25; ++first) {
        for (char second = 'A'; second < 'A' + 44; ++second)
            ASSERT_EQ(world.insert({first, second, '1', 'r'}), 0);
    }
    ASSERT_EQ(world.session().call(20, nullptr).status, 0);
}

const Step deletionOfMany = {
    .run = [](World &world) { return world.call(85, deletionOf('1', 1090), "", 0, 65535).status; }};

std::vector<Scenario> singleChanges() {
    const std::string longer(60000, 'l');
    const Step erase = {.run = [](World &world) { return world.call(4).status; }};
    return {
        {.name = "Insert",
         .prepare = prepareWith(0),
         .begin = openIt,
         .work = {insert("zz1r"), insert("zy1r")}},
        {.name = "InsertByIndex",
         .prepare = prepareWith(0),
         .begin = openIt,
         .work = {{.run = [](World &world) { return world.call(2, "zz1r", "??", 0).status; }},
                  {.run = [](World &world) { return world.call(7, "", "??", 0, 4).status; }}}},
        {.name = "InsertVariable",
         .prepare = prepareWith(variableLength),
         .begin = openIt,
         .work = {insert("zz1r" + longer)}},
        {.name = "InsertSystemData",
         .prepare = prepareWith(systemData),
         .begin = openIt,
         .work = {insert("zz1r")}},
        {.name = "InsertKeyOnly", .prepare = prepareWith(keyOnly), .begin = openIt, .work = {insert("zz1r")}},
        {.name = "InsertAutoincrement",
         .prepare = prepareCounting,
         .begin = openIt,
         .work = {insert(std::string(4, '\0') + "bbbb")}},
        {.name = "InsertEncrypted", .prepare = prepareEncrypted, .begin = openIt, .work = {insert("zz1r")}},
        {.name = "UpdateSameKeys", .prepare = prepareWith(0), .begin = openAndFind, .work = {update("ab1x")}},
        {.name = "UpdateOtherKeys",
         .prepare = prepareWith(0),
         .begin = openAndFind,
         .work = {update("zz3x")}},
        {.name = "UpdateLonger",
         .prepare = prepareWith(variableLength),
         .begin = openAndFind,
         .work = {update("zb3x" + longer)}},
        {.name = "DeleteRecord", .prepare = prepareWith(0), .begin = openAndFind, .work = {erase}},
        {.name = "DeleteLongRecord", .prepare = prepareLong, .begin = openAndFind, .work = {erase}},
    };
}

std::vector<Scenario> chunkChanges() {
    const std::string some(40000, 's');
    return {
        {.name = "ChunkAppend",
         .prepare = prepareVariableFile,
         .begin = openAndFind,
         .work = {chunk(appendCode, 0, std::string(70000, 'a'))}},
        {.name = "ChunkInsert",
         .prepare = prepareLong,
         .begin = openAndFind,
         .work = {chunk(insertCode, 50, some)}},
        {.name = "ChunkOverwrite",
         .prepare = prepareLong,
         .begin = openAndFind,
         .work = {chunk(overwriteCode, 66000, some)}},
        {.name = "ChunkDelete",
         .prepare = prepareLong,
         .begin = openAndFind,
         .work = {chunk(deleteCode, 50, some)}},
        {.name = "ChunkTruncate",
         .prepare = prepareLong,
         .begin = openAndFind,
         .work = {{.run = [](World &world) { return world.truncate(70000); }}}},
    };
}

std::vector<Scenario> bulkChanges() {
    return {
        {.name = "InsertExtended",
         .prepare = prepareWith(0),
         .begin = openIt,
         .work =
             {{.run =
                   [](World &world) {
                       return world.call(40, extendedInsert({"zx1r", "zy2r", "zz3r"}), "", -1, 4096).status;
                   }}}},
        {.name = "DeleteExtended", .prepare = prepareWith(0), .begin = openIt, .work = {deletion}},
        {.name = "DeleteMany", .prepare = prepareMany, .begin = openIt, .work = {deletionOfMany}},
    };
}

}  // namespace

std::vector<Scenario> recordScenarios() {
    std::vector<Scenario> all;
    for (auto family : {singleChanges, chunkChanges, longKeyChanges, bulkChanges}) {
        for (Scenario &scenario : family())
            all.push_back(std::move(scenario));
    }
    return all;
}

}  // namespace vantrel::test
