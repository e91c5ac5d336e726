#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include "fuzz/information_getters.h"
#include "library.h"
#include "random_source.h"
#include "tests/embedded/emulation.h"

// Files of many definitions, each copied by creating another one from its statistics: whatever can be asked
// of the two is equal but the counts, and these are too once both hold the same records.

namespace {

using namespace vantrel::test;

template <auto release>
struct Release {
    template <typename Handle>
    void operator()(Handle *handle) const {
        release(handle);
    }
};

template <typename Handle, auto allocate, auto release>
std::unique_ptr<Handle, Release<release>> make() {
    Handle *handle = nullptr;
    EXPECT_EQ(allocate(&handle), 0);
    return std::unique_ptr<Handle, Release<release>>(handle);
}

struct Type {
    VantrelDataType code;
    std::vector<int32_t> lengths;
};

const std::vector<Type> types = {{VANTREL_DATA_TYPE_CHAR, {1, 5, 20}},
                                 {VANTREL_DATA_TYPE_ZSTRING, {1, 8}},
                                 {VANTREL_DATA_TYPE_INTEGER, {1, 2, 3, 8}},
                                 {VANTREL_DATA_TYPE_UNSIGNED_BINARY, {1, 4, 13}},
                                 {VANTREL_DATA_TYPE_FLOAT, {4, 8}},
                                 {VANTREL_DATA_TYPE_AUTOINCREMENT, {2, 4, 8}},
                                 {VANTREL_DATA_TYPE_DATE, {4}},
                                 {VANTREL_DATA_TYPE_NUMERIC_STS, {2, 9}},
                                 {VANTREL_DATA_TYPE_TIME, {4}},
                                 {VANTREL_DATA_TYPE_NUMERIC_SA, {1, 9}},
                                 {VANTREL_DATA_TYPE_DECIMAL, {1, 6}},
                                 {VANTREL_DATA_TYPE_CURRENCY, {8}},
                                 {VANTREL_DATA_TYPE_MONEY, {1, 6}},
                                 {VANTREL_DATA_TYPE_TIMESTAMP, {8}},
                                 {VANTREL_DATA_TYPE_LOGICAL, {1, 2}},
                                 {VANTREL_DATA_TYPE_WSTRING, {2, 10}},
                                 {VANTREL_DATA_TYPE_NUMERIC, {1, 8}},
                                 {VANTREL_DATA_TYPE_WZSTRING, {2, 10}},
                                 {VANTREL_DATA_TYPE_BFLOAT, {4, 8}},
                                 {VANTREL_DATA_TYPE_GUID, {16}},
                                 {VANTREL_DATA_TYPE_LSTRING, {1, 9}},
                                 {VANTREL_DATA_TYPE_NULL_INDICATOR_SEGMENT, {1}},
                                 {VANTREL_DATA_TYPE_LEGACY_STRING, {1, 7}},
                                 {VANTREL_DATA_TYPE_LEGACY_BINARY, {1, 7}},
                                 {VANTREL_DATA_TYPE_AUTO_TIMESTAMP, {8}},
                                 {VANTREL_DATA_TYPE_CLOB, {1, 12}},
                                 {VANTREL_DATA_TYPE_TIMESTAMP_2, {8}},
                                 {VANTREL_DATA_TYPE_BIT, {1}},
                                 {VANTREL_DATA_TYPE_NUMERIC_SLB, {1, 5}},
                                 {VANTREL_DATA_TYPE_NUMERIC_SLS, {2, 5}},
                                 {VANTREL_DATA_TYPE_NUMERIC_STB, {1, 5}}};

constexpr uint32_t recordLength = 60;
constexpr uint32_t mostSegments = 420;

// What statistics count, and what belongs to one file, handle or moment.
const std::set<int32_t (*)(VantrelFileInformation *)> ownValues = {
    VantrelFileInformationGetUnusedPageCount, VantrelFileInformationGetIdentifier,
    VantrelFileInformationGetOpenTimestamp, VantrelFileInformationGetDuplicateRecordConflictIndex};
const std::set<int64_t (*)(VantrelFileInformation *)> ownLongValues = {
    VantrelFileInformationGetRecordCount, VantrelFileInformationGetDuplicateRecordConflictCursorPosition};

// One file with its open handle and its statistics.
class OpenedFile {
  public:
    OpenedFile(VantrelClient *client, std::string path) : client_(client), path_(std::move(path)) {}
    ~OpenedFile() {
        if (file_ == nullptr)
            return;
        EXPECT_EQ(VantrelClientFileClose(client_, file_), 0);
        EXPECT_EQ(VantrelClientFileDelete(client_, path_.c_str()), 0);
    }
    OpenedFile(const OpenedFile &) = delete;
    OpenedFile &operator=(const OpenedFile &) = delete;

    void open() {
        ASSERT_EQ(VantrelClientFileOpen(client_, &file_, path_.c_str(), nullptr, VANTREL_OPEN_MODE_NORMAL,
                                        VANTREL_OPEN_VARIANT_DEFAULT),
                  0);
    }
    void refresh() { ASSERT_EQ(VantrelFileGetInformation(file_, information_.get()), 0); }

    const char *path() const { return path_.c_str(); }
    VantrelFile *file() const { return file_; }
    VantrelFileInformation *information() const { return information_.get(); }

  private:
    VantrelClient *client_;
    std::string path_;
    VantrelFile *file_ = nullptr;
    decltype(make<VantrelFileInformation, VantrelFileInformationAllocate, VantrelFileInformationFree>())
        information_ =
            make<VantrelFileInformation, VantrelFileInformationAllocate, VantrelFileInformationFree>();
};

class DefinitionCopyTest : public testing::TestWithParam<int> {
  protected:
    DefinitionCopyTest() { EXPECT_EQ(VantrelClientAllocate(&client_, 3000, 1), 0); }
    ~DefinitionCopyTest() override {
        VantrelClientReset(client_);
        VantrelClientFree(client_);
    }

    auto randomIndex(RandomSource &random, uint32_t segmentCount, bool mayBeNull);
    auto randomFile(RandomSource &random);
    void chooseCollation(RandomSource &random, VantrelIndexAttributes *index);
    void create(RandomSource &random, OpenedFile *file);
    void addIndexes(RandomSource &random, VantrelFile *file);
    void insertRecords(RandomSource random, VantrelFile *file);

    VantrelClient *client_ = nullptr;
    bool isKeyOnly_ = false;
    uint32_t indexCount_ = 0;
    uint32_t collationCount_ = 0;
};

void DefinitionCopyTest::chooseCollation(RandomSource &random, VantrelIndexAttributes *index) {
    std::array<uint8_t, 256> table;
    uint32_t number = random.below(4);
    for (size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<uint8_t>(byte ^ number);
    switch (random.below(8)) {
        case 0:
        case 1:
            EXPECT_EQ(VantrelIndexAttributesSetACSUserDefined(index, ("SET" + std::to_string(number)).c_str(),
                                                              table.data(), 256),
                      0);
            ++collationCount_;
            break;
        case 2:
            EXPECT_EQ(VantrelIndexAttributesSetACSName(index, "UPPER"), 0);
            break;
        case 3:
            if (collationCount_ != 0) {
                EXPECT_EQ(VantrelIndexAttributesSetACSNumber(index, 1), 0);
            }
            break;
        case 4:
            EXPECT_EQ(VantrelIndexAttributesSetACSMode(index, VANTREL_ACS_MODE_CASE_INSENSITIVE), 0);
            break;
        case 5:
            EXPECT_EQ(VantrelIndexAttributesSetACSMode(index, VANTREL_ACS_MODE_DEFAULT), 0);
            break;
        default:
            break;
    }
}

auto DefinitionCopyTest::randomIndex(RandomSource &random, uint32_t segmentCount, bool mayBeNull) {
    auto index = make<VantrelIndexAttributes, VantrelIndexAttributesAllocate, VantrelIndexAttributesFree>();
    int32_t nullMode = mayBeNull ? static_cast<int32_t>(random.below(3)) : VANTREL_NULL_KEY_MODE_NONE;
    for (uint32_t number = 0; number < segmentCount; ++number) {
        auto segment = make<VantrelKeySegment, VantrelKeySegmentAllocate, VantrelKeySegmentFree>();
        const Type &type = random.pick(types);
        // A long index has room for the shortest fields only.
        int32_t length = segmentCount > 40 ? 1 : random.pick(type.lengths);
        VantrelDataType code = segmentCount > 40 ? VANTREL_DATA_TYPE_CHAR : type.code;
        auto offset = static_cast<int32_t>(random.below(recordLength - static_cast<uint32_t>(length) + 1));
        EXPECT_EQ(VantrelKeySegmentSetField(segment.get(), offset, length, code), 0);
        VantrelKeySegmentSetDescendingSortOrder(segment.get(), random.percent(30));
        VantrelKeySegmentSetNullKeyMode(segment.get(), nullMode);
        VantrelKeySegmentSetNullValue(segment.get(), static_cast<int32_t>(random.below(256)));
        EXPECT_EQ(VantrelIndexAttributesAddKeySegment(index.get(), segment.get()), 0);
    }
    VantrelIndexAttributesSetDuplicateMode(index.get(), static_cast<int32_t>(random.below(3)));
    VantrelIndexAttributesSetModifiable(index.get(), random.percent(50));
    chooseCollation(random, index.get());
    return index;
}

auto DefinitionCopyTest::randomFile(RandomSource &random) {
    auto file = make<VantrelFileAttributes, VantrelFileAttributesAllocate, VantrelFileAttributesFree>();
    auto any = [&](uint32_t count) { return static_cast<int32_t>(random.below(count)); };
    isKeyOnly_ = random.percent(20);
    VantrelFileAttributesSetFixedRecordLength(file.get(), recordLength);
    VantrelFileAttributesSetPageSize(file.get(), any(10), random.percent(30));
    VantrelFileAttributesSetFileVersion(file.get(), any(9));
    VantrelFileAttributesSetReservedDuplicatePointerCount(file.get(), any(256));
    VantrelFileAttributesSetPreallocatedPageCount(file.get(), random.percent(30) ? any(20) : 0);
    VantrelFileAttributesSetRecordCompressionMode(file.get(), any(3));
    VantrelFileAttributesSetBalancedIndexes(file.get(), random.percent(30));
    VantrelFileAttributesSetSystemDataMode(file.get(), any(4));
    VantrelFileAttributesSetFreeSpaceThreshold(file.get(), any(4));
    VantrelFileAttributesSetKeyOnly(file.get(), isKeyOnly_);
    if (!isKeyOnly_)
        VantrelFileAttributesSetVariableLengthRecordsMode(file.get(), any(3));
    return file;
}

// Most files have a few indexes, some as many as there can be, or as many segments.
void DefinitionCopyTest::addIndexes(RandomSource &random, VantrelFile *file) {
    uint32_t kind = random.below(100);
    bool hasAllIndexes = kind < 4, hasAllSegments = !hasAllIndexes && kind < 8;
    uint32_t more = hasAllIndexes ? uint32_t{VANTREL_INDEX_MAXIMUM} : hasAllSegments ? 1 : random.below(7);
    for (uint32_t number = 0; number < more; ++number) {
        uint32_t segmentCount = hasAllIndexes ? 3 : hasAllSegments ? mostSegments - 4 : 1 + random.below(4);
        auto index = randomIndex(random, segmentCount, true);
        if (!hasAllIndexes && random.percent(50))
            VantrelIndexAttributesSetIndex(index.get(), 5 + 16 * static_cast<VantrelIndex>(number));
        ASSERT_EQ(VantrelFileIndexCreate(file, index.get()), 0) << number;
        ++indexCount_;
    }
    // Numbers and collations of what is dropped leave gaps.
    for (VantrelIndex number : {1, 5, 37}) {
        if (random.percent(30) && VantrelFileIndexDrop(file, number) == 0)
            --indexCount_;
    }
}

void DefinitionCopyTest::create(RandomSource &random, OpenedFile *file) {
    auto attributes = randomFile(random);
    bool hasIndex = isKeyOnly_ || random.percent(90);
    auto index = randomIndex(random, 1 + random.below(4), !isKeyOnly_);
    indexCount_ = hasIndex;
    if (!hasIndex)
        collationCount_ = 0;
    ASSERT_EQ(
        VantrelClientFileCreate(client_, attributes.get(), hasIndex ? index.get() : nullptr, file->path(),
                                VANTREL_CREATE_MODE_NO_OVERWRITE, VANTREL_LOCATION_MODE_DEFAULT),
        0);
    ASSERT_NO_FATAL_FAILURE(file->open());
    ASSERT_NO_FATAL_FAILURE(addIndexes(random, file->file()));
}

// Some of them fail for duplicates, in both files.
void DefinitionCopyTest::insertRecords(RandomSource random, VantrelFile *file) {
    for (int number = 0; number < 12; ++number) {
        Bytes record;
        while (record.size() < recordLength)
            record.push_back(static_cast<uint8_t>(1 + random.below(3)));
        VantrelFileRecordCreate(file, record.data(), recordLength);
    }
}

void expectEqualSegments(VantrelFileInformation *first, VantrelFileInformation *second, bool counts) {
    constexpr int32_t (*getters[])(VantrelKeySegment *) = {
        VantrelKeySegmentGetOffset,        VantrelKeySegmentGetLength,
        VantrelKeySegmentGetDataType,      VantrelKeySegmentGetNullKeyMode,
        VantrelKeySegmentGetNullValue,     VantrelKeySegmentGetDescendingSortOrder,
        VantrelKeySegmentGetDuplicateMode, VantrelKeySegmentGetModifiable,
        VantrelKeySegmentGetACSMode,       VantrelKeySegmentGetACSNumber,
        VantrelKeySegmentGetKeyContinues,  VantrelKeySegmentGetIndex};
    auto firstSegment = make<VantrelKeySegment, VantrelKeySegmentAllocate, VantrelKeySegmentFree>();
    auto secondSegment = make<VantrelKeySegment, VantrelKeySegmentAllocate, VantrelKeySegmentFree>();
    for (int32_t number = 1;; ++number) {
        VantrelStatus status = VantrelFileInformationGetKeySegment(first, firstSegment.get(), number);
        ASSERT_EQ(VantrelFileInformationGetKeySegment(second, secondSegment.get(), number), status);
        if (status != 0)
            return;
        for (auto getter : getters)
            ASSERT_EQ(getter(firstSegment.get()), getter(secondSegment.get())) << "segment " << number;
        int64_t count = VantrelKeySegmentGetUniqueValueCount(secondSegment.get());
        ASSERT_EQ(count, counts ? VantrelKeySegmentGetUniqueValueCount(firstSegment.get()) : 0);
    }
}

void expectEqualValues(VantrelFileInformation *first, VantrelFileInformation *second, bool counts) {
    for (size_t number = 0; number < std::size(vantrel::fuzz::valueGetters); ++number) {
        auto getter = vantrel::fuzz::valueGetters[number];
        if (ownValues.count(getter) == 0) {
            ASSERT_EQ(getter(first), getter(second)) << "getter " << number;
        }
    }
    for (auto getter : vantrel::fuzz::longValueGetters) {
        if (ownLongValues.count(getter) == 0) {
            ASSERT_EQ(getter(first), getter(second));
        }
    }
    for (auto getter : vantrel::fuzz::textGetters) {
        char texts[2][300] = {};
        ASSERT_EQ(getter(first, texts[0], sizeof texts[0]), getter(second, texts[1], sizeof texts[1]));
        if (getter != VantrelFileInformationGetSecurityHandleTableName) {
            ASSERT_STREQ(texts[0], texts[1]);
        }
    }
    ASSERT_EQ(VantrelFileInformationGetRecordCount(second),
              counts ? VantrelFileInformationGetRecordCount(first) : 0);
    expectEqualSegments(first, second, counts);
}

constexpr int partCount = 4;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int definitionCount = 80;
#else
const int definitionCount = rounds(400, 24);
#endif

TEST_P(DefinitionCopyTest, ACopyIsEqualButForTheCounts) {
    for (int seed = GetParam(); seed < definitionCount; seed += partCount) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomSource random(static_cast<uint64_t>(seed));
        OpenedFile original(client_, newFilePath()), copy(client_, newFilePath()),
            second(client_, newFilePath());
        collationCount_ = 0;
        ASSERT_NO_FATAL_FAILURE(create(random, &original));
        insertRecords(random, original.file());
        original.refresh();
        ASSERT_EQ(VantrelFileInformationGetIndexCount(original.information()),
                  static_cast<int32_t>(indexCount_));

        OpenedFile *copies[] = {&copy, &second};
        OpenedFile *source = &original;
        for (OpenedFile *made : copies) {
            ASSERT_EQ(VantrelClientFileCreateUsingFileInformation(
                          client_, source->information(), made->path(), VANTREL_CREATE_MODE_NO_OVERWRITE,
                          VANTREL_LOCATION_MODE_DEFAULT),
                      0);
            ASSERT_NO_FATAL_FAILURE(made->open());
            made->refresh();
            ASSERT_NO_FATAL_FAILURE(expectEqualValues(original.information(), made->information(), false));
            source = made;
        }
        insertRecords(random, second.file());
        second.refresh();
        ASSERT_NO_FATAL_FAILURE(expectEqualValues(original.information(), second.information(), true));
    }
}

INSTANTIATE_TEST_SUITE_P(Shard, DefinitionCopyTest, testing::Range(0, partCount));

}  // namespace
