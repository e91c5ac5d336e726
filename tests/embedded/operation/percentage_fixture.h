#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_PERCENTAGE_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_PERCENTAGE_FIXTURE_H

#include <map>
#include <random>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

// Records of a key of two bytes, a value, and a mark that is null at 0. Index 0 is on the key, index 1 on the
// value, descending; index 2 on the mark. Both times are indexed.
class PercentageFixture : public testing::Test {
  protected:
    static constexpr uint16_t systemDataVersion2 = 0x4200;
    static constexpr int32_t physical = -1;
    static inline const std::vector<int32_t> orders = {physical, 0, 1, 2, 124, 125};
    static constexpr uint16_t common = extendedType | duplicates | modifiable;

    struct Found {
        uint64_t address;
        std::string key;
        std::string record;
    };

    PercentageFixture() {
        std::string request = createRequest(4, systemDataVersion2,
                                            {{{0, 2, common, unsignedType}},
                                             {{2, 1, common | descending, unsignedType}},
                                             {{3, 1, common | nullIfAll, unsignedType}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    static std::string percentage(uint32_t value) { return u32(value); }
    static std::string fraction(uint32_t numerator, uint32_t denominator) {
        return u32(numerator) + "ExPc" + u32(denominator);
    }
    static std::string place(uint64_t address) { return u64(address); }
    static std::string place(uint64_t address, uint32_t denominator) {
        return u64(address) + "ExPc" + u32(denominator);
    }

    static std::string recordOf(uint32_t number) {
        return u16(static_cast<uint16_t>(number * 7 % 50)) + static_cast<char>(number % 5) +
               static_cast<char>(number % 3);
    }
    void insert(const std::string &record) { ASSERT_EQ(session.call(2, &block, record, "", -1).status, 0); }
    void insertMany(uint32_t count) {
        for (uint32_t number = 0; number < count; ++number)
            insert(recordOf(number));
    }

    // The record that a request finds, or its status.
    std::string read(const std::string &request, int32_t order) {
        return read(session, block, request, order);
    }
    static std::string read(EngineSession &through, EngineSession::PositionBlock &at,
                            const std::string &request, int32_t order) {
        Reply reply = through.call(44, &at, request, "", order, 12);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }
    // The proportion of an entry, or minus the status.
    static int64_t proportion(EngineSession &through, EngineSession::PositionBlock &at,
                              const std::string &request, int32_t order, const std::string &key) {
        Reply reply = through.call(45, &at, request, key, order);
        if (reply.status != 0)
            return -reply.status;
        EXPECT_EQ(reply.data.size(), 4u);
        return static_cast<int64_t>(number(reply.data, 0, 4));
    }

    // An order as its neighbours give it one by one.
    static std::vector<Found> walk(EngineSession &through, EngineSession::PositionBlock &at, int32_t order) {
        std::vector<Found> found;
        bool isPhysical = order == physical;
        Reply reply = through.call(isPhysical ? 33 : 12, &at, "", std::string(8, '?'), order, 4);
        while (reply.status == 0) {
            uint64_t address = number(through.call(22, &at, "", "", 0, 8).data, 0, 8);
            found.push_back({address, reply.key, reply.data});
            reply = through.call(isPhysical ? 24 : 6, &at, "", std::string(8, '?'), order, 4);
        }
        EXPECT_EQ(reply.status, 9);
        return found;
    }

    // Every entry has its proportion, and is found at it.
    static void expectTrueRanks(EngineSession &through, EngineSession::PositionBlock &at, int32_t order) {
        SCOPED_TRACE("order " + std::to_string(order));
        std::vector<Found> found = walk(through, at, order);
        auto last = static_cast<uint32_t>(found.size() - 1);
        for (uint32_t rank = 0; rank < found.size(); ++rank) {
            const Found &entry = found[rank];
            ASSERT_EQ(proportion(through, at, place(entry.address, std::max(last, 1u)), order, entry.key),
                      rank);
            ASSERT_EQ(read(through, at, fraction(rank, std::max(last, 1u)), order), entry.record);
            uint64_t current = number(through.call(22, &at, "", "", 0, 8).data, 0, 8);
            ASSERT_EQ(current, entry.address);
        }
        if (found.empty()) {
            EXPECT_EQ(read(through, at, percentage(0), order), "9");
        }
    }
    static void expectTrueRanks(EngineSession &through, EngineSession::PositionBlock &at) {
        for (int32_t order : orders)
            expectTrueRanks(through, at, order);
    }
    // Makes the file count every order from here on.
    void askForAll() {
        for (int32_t order : orders)
            read(percentage(0), order);
    }
    // A session that checks pages, structures and counts as it opens the file.
    void expectVerifies() {
        EngineSession verifier(99);
        EngineSession::PositionBlock verified{};
        EXPECT_EQ(verifier.open(&verified, path, -3), 0);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

}  // namespace vantrel::test

#endif
