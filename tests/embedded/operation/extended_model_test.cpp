#include <algorithm>

#include "embedded/emulation.h"
#include "embedded/key/random_source.h"
#include "embedded/operation/engine_session.h"
#include "embedded/operation/extended_model.h"

namespace {

using namespace vantrel::test;
using vantrel::embedded::Collation;
using vantrel::embedded::KeyType;

constexpr size_t recordCount = 120;
const int requestCount = rounds(2500, 500);
constexpr uint16_t caseInsensitive = 0x0400;

Collation foldingCollation() {
    Collation collation;
    for (size_t byte = 0; byte < 256; ++byte)
        collation.table[byte] = static_cast<uint8_t>(byte >= 'A' && byte <= 'Z' ? byte + 32 : byte);
    return collation;
}
const Collation folding = foldingCollation();

// A field that requests ask about: a number, another one, a text.
struct ModelField {
    uint16_t offset, length;
    KeyType type;
};
constexpr ModelField fields[] = {{0, 1, KeyType::unsignedBinary},
                                 {1, 2, KeyType::integer},
                                 {3, 3, KeyType::character},
                                 {6, 2, KeyType::integer},
                                 {8, 4, KeyType::character}};

// Records of a fixed part of 8 bytes and up to 6 bytes more; three indexes, the second one descending, the
// third one without regard to case.
class ExtendedModelTest : public testing::Test {
  protected:
    ExtendedModelTest() {
        std::string request = createRequest(
            8, variableLength,
            {{{0, 1, extendedType | duplicates | modifiable, unsignedType}},
             {{1, 2, extendedType | duplicates | modifiable | descending, 1}},
             {{3, 3, static_cast<uint16_t>(extendedType | duplicates | modifiable | caseInsensitive), 0}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        model.indexes = {{0, 1, KeyType::unsignedBinary, nullptr, false},
                         {1, 2, KeyType::integer, nullptr, true},
                         {3, 3, KeyType::character, &folding, false}};
        fill();
    }

    std::string letters(size_t count) {
        std::string text;
        while (text.size() < count)
            text.push_back(random.oneOf("abABc"));
        return text;
    }
    std::string shortNumber() { return u16(static_cast<uint16_t>(random.below(9) - 4)); }
    std::string valueOf(const ModelField &field) {
        if (field.type == KeyType::unsignedBinary)
            return std::string(1, random.oneOf("abcdefgh"));
        return field.type == KeyType::integer ? shortNumber() : letters(field.length);
    }

    void fill() {
        while (model.records.size() < recordCount) {
            std::string data;
            for (const ModelField &field : fields)
                data += valueOf(field);
            data.resize(8 + random.below(7), 'z');
            ASSERT_EQ(session.call(2, &block, data, "", -1).status, 0);
            ModelRecord record{number(session.call(22, &block, "", "", 0, 8).data, 0, 8), data, "", ""};
            std::string times = session.call(22, &block, "SysD", "", -3, 24).data;
            record.createTime = times.substr(8, 8);
            record.updateTime = times.substr(16, 8);
            model.records[record.address] = record;
        }
    }
    const ModelRecord &anyRecord() {
        auto found = model.records.begin();
        std::advance(found, random.below(model.records.size()));
        return found->second;
    }

    ModelTerm randomTerm();
    ModelTerm systemTerm();
    void addItems(ModelRequest &request);
    ModelRequest randomRequest();
    uint64_t placeCurrent(const ModelRequest &request);
    int32_t compare(const ModelRequest &request);
    void comparePosition(const ModelRequest &request, const ModelOutcome &expected, uint64_t before);

    RandomSource random;
    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
    ExtendedModel model;
};

ModelTerm ExtendedModelTest::systemTerm() {
    const ModelRecord &record = anyRecord();
    TermFields term{32,
                    0xFF08,
                    random.below(2) == 0 ? uint16_t{0xFFFE} : uint16_t{0xFFFB},
                    static_cast<uint8_t>(1 + random.below(6)),
                    record.createTime,
                    0,
                    ""};
    return {term, KeyType::timestamp, nullptr, 0, ""};
}

ModelTerm ExtendedModelTest::randomTerm() {
    if (random.below(12) == 0)
        return systemTerm();
    const ModelField &field = fields[random.below(std::size(fields))];
    TermFields term{static_cast<uint8_t>(field.type),
                    field.length,
                    field.offset,
                    static_cast<uint8_t>(1 + random.below(6)),
                    valueOf(field),
                    0,
                    ""};
    ModelTerm made{term, field.type, nullptr, 0, ""};
    if (field.type == KeyType::character && random.below(3) == 0) {
        made.patternKind = static_cast<uint8_t>(1 + random.below(2));
        for (size_t length = random.below(4); length > 0; --length)
            made.pattern.push_back(random.oneOf("aAbB%_%"));
        made.fields.flags = patternFlag;
        made.fields.comparand = patternComparand(made.patternKind, made.pattern);
    } else if (field.type == KeyType::character && random.below(2) == 0) {
        made.collation = &folding;
        made.fields.flags |= caseFlag;
    } else if (random.below(8) == 0) {
        made.fields.flags |= fieldFlag;
        made.fields.comparand = fieldComparand(static_cast<uint16_t>(random.below(12)));
    }
    return made;
}

void ExtendedModelTest::addItems(ModelRequest &request) {
    auto add = [&](ModelItem::Kind kind, uint16_t offset, uint16_t length, std::vector<EntryFields> entries) {
        request.items.push_back({kind, offset, length});
        request.fields.entries.insert(request.fields.entries.end(), entries.begin(), entries.end());
    };
    for (size_t count = random.below(4); count > 0; --count) {
        auto offset = static_cast<uint16_t>(random.below(14));
        auto length = static_cast<uint16_t>(random.below(8));
        add(ModelItem::Kind::field, offset, length, {{length, offset}});
    }
    if (random.below(4) == 0)
        add(ModelItem::Kind::createTime, 0, 8, {{0xFF08, 0xFFFE}});
    if (random.below(4) == 0)
        add(ModelItem::Kind::absolute, 6, 2, functionEntries(1, "AV", {2, 6}));
    if (random.below(6) == 0)
        add(ModelItem::Kind::minimum, 1, 2, aggregateEntries(1, "MI", {2, 1}));
    if (random.below(6) == 0)
        add(ModelItem::Kind::maximum, 9, 2, aggregateEntries(1, "MA", {2, 9}));
}

ModelRequest ExtendedModelTest::randomRequest() {
    ModelRequest request{};
    request.isPhysical = random.below(4) == 0;
    request.isForward = random.below(2) == 0;
    request.deletes = random.below(10) == 0;
    request.index = random.below(model.indexes.size());
    const char *signatures[] = {"UC", "EG", "FI", "LA", "EQ", "GT", "LT", "GE", "LE"};
    request.fields.signature = signatures[random.below(request.isPhysical ? 4 : 9)];
    request.key =
        request.index == 0 ? std::string(1, random.oneOf("ABabcdefghyz")) : valueOf(fields[request.index]);
    for (size_t count = random.below(4); count > 0; --count) {
        request.terms.push_back(randomTerm());
        request.terms.back().fields.connector = count == 1             ? uint8_t{0}
                                                : random.below(3) == 0 ? joinOr
                                                                       : joinAnd;
        request.fields.terms.push_back(request.terms.back().fields);
    }
    request.fields.rejectLimit = static_cast<uint16_t>(random.below(3) == 0 ? 1 + random.below(40) : 0);
    request.fields.recordLimit = static_cast<uint16_t>(1 + random.below(request.deletes ? 5 : 40));
    if (!request.deletes)
        addItems(request);
    return request;
}

// Makes a record current, on the index asked about, and returns its address.
uint64_t ExtendedModelTest::placeCurrent(const ModelRequest &request) {
    uint64_t address = anyRecord().address;
    auto index = static_cast<int32_t>(request.index);
    EXPECT_EQ(session.call(23, &block, u64(address), "", request.isPhysical ? -1 : index, 20).status, 0);
    return address;
}

void ExtendedModelTest::comparePosition(const ModelRequest &request, const ModelOutcome &expected,
                                        uint64_t before) {
    Reply current = session.call(22, &block, "", "", 0, 8);
    uint64_t last = expected.examined.empty() ? before : expected.examined.back();
    bool isDeleted = request.deletes && !expected.records.empty() && expected.records.back().first == last;
    EXPECT_EQ(current.status, isDeleted ? 8 : 0);
    if (!isDeleted) {
        EXPECT_EQ(current.data, u64(last));
    }
}

// Returns the status.
int32_t ExtendedModelTest::compare(const ModelRequest &request) {
    uint64_t before = placeCurrent(request);
    ModelOutcome expected = model.run(request, before);
    uint32_t operation =
        (request.deletes ? 85 : 36) + (request.isPhysical ? 2 : 0) + (request.isForward ? 0 : 1);
    int32_t index = request.isPhysical ? -1 : static_cast<int32_t>(request.index);
    Reply reply = session.call(operation, &block, request.fields.bytes(), request.key, index, 60000);
    EXPECT_EQ(reply.status, expected.status);
    std::string records = u16(static_cast<uint16_t>(expected.records.size()));
    for (const auto &[address, bytes] : expected.records) {
        size_t length = request.deletes ? model.records[address].data.size() : bytes.size();
        records += u16(static_cast<uint16_t>(length)) + u64(address) + (request.deletes ? "" : bytes);
    }
    EXPECT_EQ(reply.data, records);
    comparePosition(request, expected, before);
    if (request.deletes) {
        for (const auto &[address, bytes] : expected.records)
            model.records.erase(address);
        fill();
    }
    return expected.status;
}

TEST_F(ExtendedModelTest, RandomRequestsDoWhatTheModelDoes) {
    std::map<int32_t, int> statuses;
    for (int round = 0; round < requestCount && !HasFailure(); ++round) {
        ModelRequest request = randomRequest();
        SCOPED_TRACE("request " + std::to_string(round));
        ++statuses[compare(request)];
    }
    for (int32_t status : {0, 4, 9, 60, 64})
        EXPECT_GT(statuses[status], rounds(4, 0)) << status;
}

}  // namespace
