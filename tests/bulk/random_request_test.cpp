#include <cstdio>
#include <cstdlib>
#include <random>

#include "bulk/handles.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// A request described twice: by calls to the library, and as the bytes that the engine has to see, put
// together here from the calls' arguments alone.
class RandomRequest {
  public:
    explicit RandomRequest(uint32_t seed) : random_(seed) {}

    void build() {
        setLimits();
        for (uint32_t filter = pick(0, 6); filter > 0; --filter)
            addFilter();
        for (uint32_t field = pick(0, 12); field > 0; --field)
            addField();
    }

    Bytes expectedRequest() const {
        uint32_t recordCount = std::min(maximumRecordCount_, 258046 / (extractedLength_ + 10));
        Bytes body = u16(maximumRejectCount_) + u16(filterCount_) + terms_ + u16(recordCount) +
                     u16(static_cast<uint32_t>(entries_.size() / 4)) + entries_;
        return u16(static_cast<uint32_t>(body.size() + 4)) + bytesOf(skip_ ? "EG" : "UC") + body;
    }
    uint32_t expectedReplyLength() const {
        return std::min(maximumRecordCount_, 258046 / (extractedLength_ + 10)) * (extractedLength_ + 10) + 2;
    }

    RetrieveAttributes attributes;

  private:
    uint32_t pick(uint32_t least, uint32_t most) {
        return std::uniform_int_distribution<uint32_t>(least, most)(random_);
    }
    bool chance(uint32_t percent) { return pick(1, 100) <= percent; }
    static Bytes u16(uint32_t value) {
        return {static_cast<uint8_t>(value % 256), static_cast<uint8_t>(value / 256 % 256)};
    }
    Bytes randomBytes(uint32_t length, uint32_t least = 0) {
        Bytes bytes(length);
        for (uint8_t &byte : bytes)
            byte = static_cast<uint8_t>(pick(least, 255));
        return bytes;
    }

    void setLimits() {
        if (chance(70)) {
            maximumRecordCount_ = pick(1, chance(50) ? 30 : 25804);
            EXPECT_EQ(VantrelBulkRetrieveAttributesSetMaximumRecordCount(attributes, maximumRecordCount_), 0);
        }
        if (chance(50)) {
            maximumRejectCount_ = pick(0, 65535);
            EXPECT_EQ(VantrelBulkRetrieveAttributesSetMaximumRejectCount(attributes, maximumRejectCount_), 0);
        }
        skip_ = chance(50);
        EXPECT_EQ(VantrelBulkRetrieveAttributesSetSkipCurrentRecord(attributes, skip_), 0);
    }

    // The interface's number of a data type and the engine's.
    std::pair<int32_t, uint8_t> dataType() {
        static const std::pair<int32_t, uint8_t> types[] = {{0, 0},   {1, 11},  {2, 1},   {3, 14},  {4, 2},
                                                            {13, 20}, {15, 25}, {20, 10}, {24, 32}, {30, 31}};
        return types[pick(0, 9)];
    }

    void addFilter() {
        Filter filter;
        uint32_t length = pick(0, chance(10) ? 30000 : 40);
        uint32_t constantLength = length;
        Bytes head;
        if (chance(20)) {
            bool update = chance(50);
            EXPECT_EQ(VantrelFilterSetSystemField(filter, update), 0);
            head = Bytes{32, 0x08, 0xFF, static_cast<uint8_t>(update ? 0xFB : 0xFE), 0xFF};
            constantLength = 8;
        } else {
            uint32_t offset = pick(0, 65534 - length);
            auto [type, engineType] = dataType();
            EXPECT_EQ(VantrelFilterSetField(filter, offset, length, type), 0);
            head = Bytes{engineType} + u16(length) + u16(offset);
        }
        uint8_t flags = 0;
        Bytes comparand = setComparand(filter, constantLength, flags);
        Bytes collation = setCollation(filter, flags);
        uint8_t connector = static_cast<uint8_t>(pick(0, 2));
        EXPECT_EQ(VantrelFilterSetConnector(filter, connector), 0);
        EXPECT_EQ(VantrelBulkRetrieveAttributesAddFilter(attributes, filter), 0);
        terms_ = terms_ + head + Bytes{flags, connector} + comparand + collation;
        ++filterCount_;
    }

    Bytes setComparand(VantrelFilter *filter, uint32_t constantLength, uint8_t &flags) {
        if (chance(30)) {
            uint32_t kind = pick(1, 3), length = pick(0, 50), behind = pick(0, 3);
            Bytes text = randomBytes(length, 1);
            Bytes constant = behind == 0 ? text : text + Bytes{0} + randomBytes(behind - 1);
            EXPECT_EQ(VantrelFilterSetComparison(filter, static_cast<int32_t>(6 + kind)), 0);
            EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, constant.data(),
                                                         static_cast<uint32_t>(constant.size())),
                      0);
            flags = 7;
            return Bytes{static_cast<uint8_t>(kind)} + u16(length + 1) + text + Bytes{0};
        }
        flags = static_cast<uint8_t>(pick(0, 6));
        EXPECT_EQ(VantrelFilterSetComparison(filter, flags), 0);
        if (chance(30)) {
            uint32_t offset = pick(0, 65534);
            EXPECT_EQ(VantrelFilterSetComparisonField(filter, offset), 0);
            flags = static_cast<uint8_t>(flags + 0x40);
            return u16(offset);
        }
        Bytes constant = randomBytes(constantLength);
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, constant.data(), constantLength), 0);
        return constant;
    }

    Bytes setCollation(VantrelFilter *filter, uint8_t &flags) {
        uint32_t choice = pick(0, 5);
        if (choice <= 2) {
            flags = static_cast<uint8_t>(flags + (choice == 1 ? 0x80 : choice == 2 ? 0x20 : 0));
            EXPECT_EQ(VantrelFilterSetACSMode(filter, choice == 0 ? 0 : static_cast<int32_t>(choice + 2)), 0);
            return {};
        }
        flags = static_cast<uint8_t>(flags + 0x08);
        uint32_t size = choice == 3 ? 8 : 16;
        std::string name(pick(0, size), static_cast<char>('a' + pick(0, 25)));
        Bytes padded = bytesOf(name) + Bytes(size - name.size());
        if (choice == 3) {
            EXPECT_EQ(VantrelFilterSetACSUserDefined(filter, name.c_str()), 0);
            return Bytes{172} + padded;
        }
        if (choice == 4) {
            EXPECT_EQ(VantrelFilterSetACSName(filter, name.c_str()), 0);
            return Bytes{174} + padded;
        }
        EXPECT_EQ(VantrelFilterSetLikeCodePageName(filter, name.c_str()), 0);
        return Bytes{171} + padded;
    }

    void addField() {
        uint32_t length = pick(0, chance(10) ? 5000 : 20), offset = pick(0, 60000);
        auto [type, engineType] = dataType();
        Bytes place = u16(length) + u16(offset);
        switch (pick(0, 4)) {
            case 0:
                EXPECT_EQ(VantrelBulkRetrieveAttributesAddField(attributes, offset, length), 0);
                entries_ = entries_ + place;
                break;
            case 1:
                EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, 0), 0);
                entries_ = entries_ + Bytes{0x08, 0xFF, 0xFE, 0xFF};
                length = 8;
                break;
            case 2:
                EXPECT_EQ(VantrelBulkRetrieveAttributesAddMinimumAggregate(attributes, type, offset, length),
                          0);
                entries_ = entries_ + Bytes{0, 0xFF, 0xF9, 0xFF, engineType, 0, 'M', 'I'} + place;
                break;
            case 3:
                EXPECT_EQ(VantrelBulkRetrieveAttributesAddFloorField(attributes, type, offset, length), 0);
                entries_ = entries_ + Bytes{0, 0xFF, 0xFA, 0xFF, engineType, 0, 'F', 'L'} + place;
                break;
            default:
                EXPECT_EQ(VantrelBulkRetrieveAttributesAddTruncateField(attributes, type, offset, length, -3),
                          0);
                entries_ = entries_ + Bytes{0, 0xFF, 0xFA, 0xFF, engineType, 0, 'T', 'R'} + place +
                           Bytes{0, 0, 0xFD, 0xFF};
        }
        extractedLength_ += length;
    }

    std::mt19937 random_;
    uint32_t maximumRecordCount_ = 25804;
    uint32_t maximumRejectCount_ = 0;
    bool skip_ = false;
    uint32_t filterCount_ = 0;
    Bytes terms_;
    Bytes entries_;
    uint32_t extractedLength_ = 0;
};

class RandomBulkRequestTest : public FileTest {};

TEST_F(RandomBulkRequestTest, RequestsAreWhatAnIndependentWriterMakesOfThem) {
    const char *given = getenv("VANTREL_SEED");
    uint32_t seed =
        given == nullptr ? std::random_device()() : static_cast<uint32_t>(strtoul(given, nullptr, 10));
    printf("VANTREL_SEED=%u\n", seed);
    for (uint32_t round = 0; round < 300; ++round) {
        SCOPED_TRACE(testing::Message() << "VANTREL_SEED=" << seed << ", round " << round);
        RandomRequest request(seed + round);
        request.build();
        engine.reset();
        RetrieveResult result;
        ASSERT_EQ(VantrelFileBulkRetrieveNext(file, request.attributes, result, VANTREL_LOCK_MODE_NONE), 0);
        const EngineCall &call = engine.onlyCall();
        const Bytes expected = request.expectedRequest();
        ASSERT_EQ(call.dataLength,
                  std::max(request.expectedReplyLength(), static_cast<uint32_t>(expected.size())));
        const Bytes sent(call.dataBytes.begin(),
                         call.dataBytes.begin() + static_cast<ptrdiff_t>(expected.size()));
        ASSERT_EQ(sent, expected);
    }
}

}  // namespace
