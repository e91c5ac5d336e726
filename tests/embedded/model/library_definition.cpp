#include <gtest/gtest.h>

#include <memory>

#include "library.h"

// Definitions on their way into the library and back.

namespace vantrel::test {

namespace {

template <auto release>
struct Release {
    template <typename Record>
    void operator()(Record *record) const {
        release(record);
    }
};

template <typename Record, auto allocate, auto release>
std::unique_ptr<Record, Release<release>> make() {
    Record *record = nullptr;
    EXPECT_EQ(allocate(&record), 0);
    return std::unique_ptr<Record, Release<release>>(record);
}

auto makeSegment() {
    return make<VantrelKeySegment, VantrelKeySegmentAllocate, VantrelKeySegmentFree>();
}

auto makeIndexAttributes(VantrelIndex number, const IndexDefinition &index) {
    auto attributes =
        make<VantrelIndexAttributes, VantrelIndexAttributesAllocate, VantrelIndexAttributesFree>();
    for (const SegmentDefinition &definition : index.segments) {
        auto segment = makeSegment();
        EXPECT_EQ(
            VantrelKeySegmentSetField(segment.get(), definition.offset, definition.length, definition.type),
            0);
        VantrelKeySegmentSetDescendingSortOrder(segment.get(), definition.isDescending);
        VantrelKeySegmentSetNullKeyMode(segment.get(), index.nullKeyMode);
        VantrelKeySegmentSetNullValue(segment.get(), definition.nullValue);
        EXPECT_EQ(VantrelIndexAttributesAddKeySegment(attributes.get(), segment.get()), 0);
    }
    VantrelIndexAttributesSetIndex(attributes.get(), number);
    VantrelIndexAttributesSetDuplicateMode(
        attributes.get(),
        index.isUnique ? VANTREL_DUPLICATE_MODE_NOT_ALLOWED : VANTREL_DUPLICATE_MODE_ALLOWED_NONREPEATING);
    VantrelIndexAttributesSetModifiable(attributes.get(), index.isModifiable);
    if (index.collation == Collation::caseInsensitive)
        VantrelIndexAttributesSetACSMode(attributes.get(), VANTREL_ACS_MODE_CASE_INSENSITIVE);
    if (index.collation == Collation::userDefined)
        VantrelIndexAttributesSetACSUserDefined(attributes.get(), collationName, collatingTable().data(),
                                                static_cast<int32_t>(collatingTable().size()));
    return attributes;
}

auto makeFileAttributes(const FileDefinition &file) {
    auto attributes = make<VantrelFileAttributes, VantrelFileAttributesAllocate, VantrelFileAttributesFree>();
    VantrelFileAttributesSetFixedRecordLength(attributes.get(), static_cast<int32_t>(file.fixedLength));
    VantrelFileAttributesSetSystemDataMode(attributes.get(), VANTREL_SYSTEM_DATA_MODE_NO);
    if (file.isVariable)
        VantrelFileAttributesSetVariableLengthRecordsMode(attributes.get(),
                                                          VANTREL_VARIABLE_LENGTH_RECORDS_MODE_YES);
    return attributes;
}

VantrelNullKeyMode nullKeyModeOf(VantrelKeySegment *segment) {
    return VantrelKeySegmentGetNullKeyMode(segment);
}

SegmentDefinition segmentOf(VantrelKeySegment *segment) {
    return {.offset = VantrelKeySegmentGetOffset(segment),
            .length = VantrelKeySegmentGetLength(segment),
            .type = VantrelKeySegmentGetDataType(segment),
            .isDescending = VantrelKeySegmentGetDescendingSortOrder(segment) != 0,
            .nullValue = static_cast<uint8_t>(VantrelKeySegmentGetNullValue(segment))};
}

Collation collationOf(VantrelKeySegment *segment) {
    VantrelACSMode mode = VantrelKeySegmentGetACSMode(segment);
    if (mode == VANTREL_ACS_MODE_NONE)
        return Collation::none;
    return mode == VANTREL_ACS_MODE_CASE_INSENSITIVE ? Collation::caseInsensitive : Collation::userDefined;
}

// The indexes that the segments of the statistics make up.
std::vector<IndexStatistics> indexesOf(VantrelFileInformation *information) {
    std::vector<IndexStatistics> indexes;
    auto segment = makeSegment();
    bool continues = false;
    for (int32_t i = 1; VantrelFileInformationGetKeySegment(information, segment.get(), i) == 0; ++i) {
        if (!continues)
            indexes.push_back({.number = VantrelKeySegmentGetIndex(segment.get()),
                               .definition = {},
                               .uniqueCount = VantrelKeySegmentGetUniqueValueCount(segment.get())});
        IndexStatistics &index = indexes.back();
        index.definition.segments.push_back(segmentOf(segment.get()));
        index.definition.isUnique =
            VantrelKeySegmentGetDuplicateMode(segment.get()) == VANTREL_DUPLICATE_MODE_NOT_ALLOWED;
        index.definition.isModifiable = VantrelKeySegmentGetModifiable(segment.get()) != 0;
        index.definition.nullKeyMode = nullKeyModeOf(segment.get());
        index.definition.collation = collationOf(segment.get());
        EXPECT_EQ(VantrelKeySegmentGetIndex(segment.get()), index.number);
        EXPECT_EQ(VantrelKeySegmentGetUniqueValueCount(segment.get()), index.uniqueCount);
        continues = VantrelKeySegmentGetKeyContinues(segment.get()) != 0;
    }
    return indexes;
}

}  // namespace

VantrelStatus createIndex(VantrelFile *file, VantrelIndex number, const IndexDefinition &index) {
    return VantrelFileIndexCreate(file, makeIndexAttributes(number, index).get());
}

// A file is created with one index or none; the others are added to it.
VantrelStatus createFile(VantrelClient *client, const std::string &path, const FileDefinition &file) {
    auto attributes = makeFileAttributes(file);
    VantrelStatus status = 0;
    auto index = file.indexes.begin();
    if (index == file.indexes.end())
        return VantrelClientFileCreate(client, attributes.get(), nullptr, path.c_str(),
                                       VANTREL_CREATE_MODE_NO_OVERWRITE, VANTREL_LOCATION_MODE_DEFAULT);
    status = VantrelClientFileCreate(client, attributes.get(),
                                     makeIndexAttributes(index->first, index->second).get(), path.c_str(),
                                     VANTREL_CREATE_MODE_NO_OVERWRITE, VANTREL_LOCATION_MODE_DEFAULT);
    if (status != 0 || ++index == file.indexes.end())
        return status;
    VantrelFile *opened = nullptr;
    status = VantrelClientFileOpen(client, &opened, path.c_str(), nullptr, VANTREL_OPEN_MODE_NORMAL,
                                   VANTREL_OPEN_VARIANT_DEFAULT);
    for (; status == 0 && index != file.indexes.end(); ++index)
        status = createIndex(opened, index->first, index->second);
    if (opened == nullptr)
        return status;
    VantrelStatus closing = VantrelClientFileClose(client, opened);
    return status != 0 ? status : closing;
}

Observed Library::information(VantrelFile *file) {
    auto information =
        make<VantrelFileInformation, VantrelFileInformationAllocate, VantrelFileInformationFree>();
    Observed observed;
    observed.status = VantrelFileGetInformation(file, information.get());
    observed.recordCount = VantrelFileInformationGetRecordCount(information.get());
    observed.indexes = indexesOf(information.get());
    EXPECT_EQ(VantrelFileInformationGetIndexCount(information.get()),
              static_cast<int32_t>(observed.indexes.size()));
    return observed;
}

}  // namespace vantrel::test
