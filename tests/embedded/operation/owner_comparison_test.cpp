#include <dlfcn.h>

#include "embedded/operation/owner_fixture.h"

namespace {

// The lengths of what has been compared in a time that does not tell where it differs.
std::vector<size_t> comparedLengths;

}  // namespace

// Stands in front of the cryptographic library's function of this name.
extern "C" __attribute__((visibility("default"))) int CRYPTO_memcmp(const void *one, const void *other,
                                                                    size_t length) {
    using Function = int(const void *, const void *, size_t);
    static auto *const real = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, "CRYPTO_memcmp"));
    comparedLengths.push_back(length);
    return real(one, other, length);
}

namespace {

using namespace vantrel::test;

class OwnerComparisonTest : public testing::TestWithParam<int32_t> {
  protected:
    OwnerComparisonTest() {
        EXPECT_EQ(session.create(path, createRequest(4, 0, {{{0, 4}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(setOwner(session, &block, GetParam(), "harbour"), 0);
    }

    std::vector<size_t> lengthsComparedFor(EngineSession &opener, const std::string &name) {
        bool isOpened = GetParam() == readable || GetParam() == readableEncrypted || name == "harbour";
        EngineSession::PositionBlock opened{};
        comparedLengths.clear();
        EXPECT_EQ(openWith(opener, &opened, path, name), isOpened ? 0 : 51) << name;
        std::vector<size_t> lengths = comparedLengths;
        if (isOpened) {
            EXPECT_EQ(opener.call(1, &opened).status, 0);
        }
        return lengths;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};
INSTANTIATE_TEST_SUITE_P(All, OwnerComparisonTest,
                         testing::Values(denied, readable, deniedEncrypted, readableEncrypted));

// What is made from the name is compared, not the name itself, and all of it wherever names differ.
TEST_P(OwnerComparisonTest, TakesTheSameTimeForEveryName) {
    constexpr size_t derivedLength = 32;
    for (const char *name : {"Xarbour", "harbouX", "harbou", "harbours", "harbour"})
        EXPECT_EQ(lengthsComparedFor(session, name), std::vector<size_t>{derivedLength}) << name;
}

// Whoever does not have the file open yet unwraps its key, of which the library compares the tag.
TEST_P(OwnerComparisonTest, TakesTheSameTimeForEveryWrongNameAtTheFirstOpening) {
    constexpr size_t derivedLength = 32, tagLength = 16;
    EngineSession other(2);
    std::vector<size_t> lengths = lengthsComparedFor(other, "Xarbour");
    ASSERT_FALSE(lengths.empty());
    EXPECT_EQ(lengths.front(), isEncryptedMode(GetParam()) ? tagLength : derivedLength);
    for (const char *name : {"harbouX", "harbou", "harbours"})
        EXPECT_EQ(lengthsComparedFor(other, name), lengths) << name;
}

}  // namespace
