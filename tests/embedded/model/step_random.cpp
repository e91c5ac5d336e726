#include "step.h"
#include "step_text.h"

namespace vantrel::test {

namespace {

constexpr uint32_t fixedLength = 16;

const std::vector<SegmentDefinition> textSegments = {
    {0, 2, VANTREL_DATA_TYPE_CHAR},          {0, 1, VANTREL_DATA_TYPE_CHAR},
    {0, 3, VANTREL_DATA_TYPE_LEGACY_STRING}, {2, 1, VANTREL_DATA_TYPE_LEGACY_STRING},
    {7, 4, VANTREL_DATA_TYPE_ZSTRING},       {8, 3, VANTREL_DATA_TYPE_ZSTRING},
};

const std::vector<SegmentDefinition> numberSegments = {
    {3, 2, VANTREL_DATA_TYPE_UNSIGNED_BINARY}, {3, 1, VANTREL_DATA_TYPE_UNSIGNED_BINARY},
    {3, 2, VANTREL_DATA_TYPE_LEGACY_BINARY},   {5, 2, VANTREL_DATA_TYPE_INTEGER},
    {5, 1, VANTREL_DATA_TYPE_INTEGER},         {11, 1, VANTREL_DATA_TYPE_UNSIGNED_BINARY},
    {11, 4, VANTREL_DATA_TYPE_INTEGER},        {12, 4, VANTREL_DATA_TYPE_UNSIGNED_BINARY},
};

const std::vector<VantrelIndex> indexNumbers = {0, 1, 2, 5, 118};

// One value for each byte or pair of bytes of the fixed part.
Bytes randomFixedPart(RandomSource &random) {
    static const std::vector<uint8_t> letters = {'a', 'A', 'b', 'c'};
    static const std::vector<uint8_t> textBytes = {0, 0, 'a', 'B', 'b'};
    static const std::vector<uint16_t> numbers = {0, 1, 255, 256, 0x7FFF, 0x8000, 0xFFFF};
    Bytes record = {random.pick(letters), random.pick(letters), random.pick(textBytes)};
    for (int i = 0; i < 2; ++i) {
        uint16_t number = random.pick(numbers);
        record.push_back(static_cast<uint8_t>(number % 256));
        record.push_back(static_cast<uint8_t>(number / 256));
    }
    for (int i = 0; i < 4; ++i)
        record.push_back(random.pick(textBytes));
    record.push_back(static_cast<uint8_t>(random.below(3)));
    while (record.size() < fixedLength)
        record.push_back(static_cast<uint8_t>(random.below(4)));
    return record;
}

Bytes randomRecord(RandomSource &random, const FileDefinition &file) {
    Bytes record = randomFixedPart(random);
    if (file.isVariable)
        record.resize(fixedLength + random.below(20), static_cast<uint8_t>(random.below(256)));
    if (random.percent(2))
        record.resize(random.percent(50) ? fixedLength - 1 : fixedLength + 1, 7);
    return record;
}

IndexDefinition randomIndex(RandomSource &random) {
    IndexDefinition index;
    bool isText = random.percent(50);
    uint32_t segmentCount = 1 + random.below(3);
    for (uint32_t i = 0; i < segmentCount; ++i) {
        bool textSegment = isText || random.percent(30);
        SegmentDefinition segment = random.pick(textSegment ? textSegments : numberSegments);
        segment.isDescending = random.percent(30);
        segment.nullValue = textSegment && random.percent(40) ? 'a' : 0;
        index.segments.push_back(segment);
    }
    index.isUnique = random.percent(25);
    index.isModifiable = random.percent(75);
    index.nullKeyMode = static_cast<VantrelNullKeyMode>(random.below(3));
    if (isText)
        index.collation = static_cast<Collation>(random.below(3));
    return index;
}

void chooseKey(RandomSource &random, const FileDefinition &file, Step *step) {
    Bytes record = randomFixedPart(random);
    auto index = file.indexes.find(step->index);
    step->key = index == file.indexes.end() ? record : keyOf(index->second, record);
    step->hasKey = true;
    if (random.percent(10))
        step->key.resize(step->key.size() + random.below(6), 0xEE);
    if (random.percent(4))
        step->key.resize(random.below(static_cast<uint32_t>(step->key.size())));
}

VantrelIndex randomIndexNumber(RandomSource &random, const FileDefinition &file) {
    if (random.percent(3))
        return 7;
    if (random.percent(15))
        return random.pick(indexNumbers);
    if (file.indexes.empty())
        return VANTREL_INDEX_NONE;
    auto index = file.indexes.begin();
    std::advance(index, random.below(static_cast<uint32_t>(file.indexes.size())));
    return index->first;
}

void chooseRead(RandomSource &random, const FileDefinition &file, Step *step) {
    static const std::vector<VantrelComparison> comparisons = {
        VANTREL_COMPARISON_EQUAL, VANTREL_COMPARISON_GREATER, VANTREL_COMPARISON_LESS,
        VANTREL_COMPARISON_GREATER_OR_EQUAL, VANTREL_COMPARISON_LESS_OR_EQUAL};
    step->index = randomIndexNumber(random, file);
    step->comparison = random.pick(comparisons);
    bool mayGoPhysically = step->action != Action::retrieve || random.percent(5);
    if (mayGoPhysically && random.percent(25))
        step->index = VANTREL_INDEX_NONE;
    bool isNavigation = isRead(step->action) && step->action != Action::retrieveByPosition &&
                        step->action != Action::retrieveByProportion;
    if (isNavigation && random.percent(2))
        step->index = noIndexYet;
    chooseKey(random, file, step);
    bool mayLeaveKeyOut = step->action != Action::retrieve;
    if (mayLeaveKeyOut && random.percent(40)) {
        step->key.clear();
        step->hasKey = false;
    }
    step->recordSize = random.percent(90) ? 40 : static_cast<int32_t>(random.below(20));
    step->isKeyOnly = isNavigation && random.percent(20);
    step->readsKeyAlone = step->isKeyOnly && step->hasKey && random.percent(70);
}

void chooseProportion(RandomSource &random, Step *step) {
    static const std::vector<uint32_t> denominators = {0, 1, 2, 7, UINT32_MAX};
    if (random.percent(50))
        step->denominator = random.pick(denominators);
    uint64_t limit = uint64_t{step->denominator} + 1;
    step->numerator = static_cast<uint32_t>(random.below(10001) * limit / 10001);
    if (random.percent(20))
        step->numerator = random.percent(50) ? step->denominator : step->denominator / 2;
    if (random.percent(4))
        step->numerator = random.percent(50) ? step->denominator + 1 : UINT32_MAX;
}

struct Weight {
    Action action;
    uint32_t weight;
};

constexpr Weight weights[] = {
    {Action::insert, 24},
    {Action::update, 10},
    {Action::remove, 7},
    {Action::retrieve, 16},
    {Action::first, 5},
    {Action::last, 5},
    {Action::next, 22},
    {Action::previous, 18},
    {Action::getPosition, 3},
    {Action::retrieveByPosition, 6},
    {Action::retrieveByProportion, 6},
    {Action::getProportion, 6},
    {Action::begin, 4},
    {Action::end, 3},
    {Action::abort, 3},
    {Action::open, 5},
    {Action::close, 2},
    {Action::createIndex, 2},
    {Action::dropIndex, 1},
    {Action::information, 2},
};

Action randomAction(RandomSource &random) {
    uint32_t total = 0;
    for (const Weight &weight : weights)
        total += weight.weight;
    uint32_t chosen = random.below(total);
    for (const Weight &weight : weights) {
        if (chosen < weight.weight)
            return weight.action;
        chosen -= weight.weight;
    }
    return Action::insert;
}

}  // namespace

FileDefinition randomFile(RandomSource &random) {
    FileDefinition file;
    file.fixedLength = fixedLength;
    file.isVariable = random.percent(40);
    uint32_t count = random.below(4);
    for (uint32_t i = 0; i < count; ++i)
        file.indexes[random.pick(indexNumbers)] = randomIndex(random);
    return file;
}

Step randomStep(RandomSource &random, const FileDefinition &file) {
    Step step{.action = randomAction(random)};
    step.handle = random.percent(60) ? random.below(handlesPerSession) : random.below(handleCount);
    step.transactionMode = static_cast<VantrelTransactionMode>(random.below(3));
    step.record = randomRecord(random, file);
    step.addressChoice = random.below(1000);
    step.indexDefinition = randomIndex(random);
    if (step.action == Action::createIndex || step.action == Action::dropIndex)
        step.index = random.pick(indexNumbers);
    else
        chooseRead(random, file, &step);
    chooseProportion(random, &step);
    return step;
}

}  // namespace vantrel::test
