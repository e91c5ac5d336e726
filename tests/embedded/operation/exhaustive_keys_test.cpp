#include <algorithm>
#include <optional>

#include "embedded/operation/engine_session.h"

// All texts of up to three letters of an alphabet as keys, found by every search and met by every step,
// against a list that is looked through from its start.

namespace {

using namespace vantrel::test;

constexpr uint16_t characterType = 0, lengthPrefixedType = 10, zeroTerminatedType = 11;
constexpr uint16_t caseInsensitive = 0x0400;
constexpr size_t fieldLength = 4, recordLength = 8, longestText = 3;
constexpr uint32_t getEqual = 5, getNext = 6, getPrevious = 7, getGreater = 8, getGreaterOrEqual = 9,
                   getLess = 10, getLessOrEqual = 11, getFirst = 12, getLast = 13, keyOnly = 50;
constexpr int32_t notFound = 4, endOfFile = 9, duplicateKey = 5;

struct Kind {
    uint16_t type;
    bool isDescending, hasDuplicates, ignoresCase;
};

std::string nameOf(const testing::TestParamInfo<Kind> &info) {
    const Kind &kind = info.param;
    std::string type = kind.type == characterType        ? "Character"
                       : kind.type == lengthPrefixedType ? "LengthPrefixed"
                                                         : "ZeroTerminated";
    return type + (kind.isDescending ? "Descending" : "Ascending") +
           (kind.hasDuplicates ? "Duplicates" : "Unique") + (kind.ignoresCase ? "CaseInsensitive" : "");
}

std::vector<Kind> allKinds() {
    std::vector<Kind> kinds;
    for (uint16_t type : {characterType, lengthPrefixedType, zeroTerminatedType}) {
        for (int choice = 0; choice < 8; ++choice)
            kinds.push_back({type, (choice & 1) != 0, (choice & 2) != 0, (choice & 4) != 0});
    }
    return kinds;
}

std::vector<std::string> allTexts() {
    std::vector<std::string> texts{""};
    for (size_t at = 0; at < texts.size(); ++at) {
        if (texts[at].size() == longestText)
            continue;
        for (char letter : {'A', 'a', 'b'})
            texts.push_back(texts[at] + letter);
    }
    return texts;
}

class ExhaustiveKeysTest : public testing::TestWithParam<Kind> {
  protected:
    struct Entry {
        std::string text;
        std::string record;
    };
    // A place is the number of an entry, or the one between it and the entry before, which a failing search
    // leaves behind.
    struct Place {
        size_t number;
        bool isBetween;
    };

    void SetUp() override {
        const Kind &kind = GetParam();
        uint16_t flags = extendedType;
        flags |= kind.isDescending ? descending : 0;
        flags |= kind.hasDuplicates ? duplicates : 0;
        flags |= kind.ignoresCase ? caseInsensitive : 0;
        ASSERT_EQ(
            session.create(path, createRequest(recordLength, 0, {{{0, fieldLength, flags, kind.type}}})), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        // Neither in order nor with equal texts side by side.
        for (size_t number = 0; number < texts.size() * 2; ++number)
            insert(texts[number * 17 % texts.size()], static_cast<uint32_t>(number));
    }

    // The bytes of a field, of which the filler stands where the type does not look.
    static std::string field(const std::string &text, char filler) {
        switch (GetParam().type) {
            case characterType:
                return text + std::string(fieldLength - text.size(), ' ');
            case lengthPrefixedType:
                return static_cast<char>(text.size()) + text + std::string(longestText - text.size(), filler);
            default:
                return text + '\0' + std::string(longestText - text.size(), filler);
        }
    }

    // Below 0, 0 or above 0 as the first text stands before, with or behind the second one in the index.
    static int compare(std::string first, std::string second) {
        if (GetParam().type == characterType) {
            first.resize(fieldLength, ' ');
            second.resize(fieldLength, ' ');
        }
        if (GetParam().ignoresCase) {
            std::replace(first.begin(), first.end(), 'A', 'a');
            std::replace(second.begin(), second.end(), 'A', 'a');
        }
        int order = first.compare(second);
        return GetParam().isDescending ? -order : order;
    }

    void insert(const std::string &text, uint32_t number) {
        std::string record = field(text, static_cast<char>('0' + number % 10)) + u32(number);
        bool isEqual = std::any_of(entries.begin(), entries.end(),
                                   [&](const Entry &entry) { return compare(entry.text, text) == 0; });
        bool isRefused = isEqual && !GetParam().hasDuplicates;
        ASSERT_EQ(session.call(2, &block, record, "", -1).status, isRefused ? duplicateKey : 0);
        if (isRefused)
            return;
        auto behind = std::find_if(entries.begin(), entries.end(),
                                   [&](const Entry &entry) { return compare(entry.text, text) > 0; });
        entries.insert(behind, {text, record});
    }

    std::optional<size_t> firstThat(const std::string &text, bool (*holds)(int order)) {
        for (size_t number = 0; number < entries.size(); ++number) {
            if (holds(compare(entries[number].text, text)))
                return number;
        }
        return std::nullopt;
    }
    std::optional<size_t> lastThat(const std::string &text, bool (*holds)(int order)) {
        for (size_t number = entries.size(); number-- > 0;) {
            if (holds(compare(entries[number].text, text)))
                return number;
        }
        return std::nullopt;
    }
    std::optional<size_t> expected(uint32_t operation, const std::string &text) {
        switch (operation) {
            case getEqual:
                return firstThat(text, [](int order) { return order == 0; });
            case getGreater:
                return firstThat(text, [](int order) { return order > 0; });
            case getGreaterOrEqual:
                return firstThat(text, [](int order) { return order >= 0; });
            case getLess:
                return lastThat(text, [](int order) { return order < 0; });
            default:
                return lastThat(text, [](int order) { return order <= 0; });
        }
    }

    void expectFound(const Reply &reply, size_t number) {
        ASSERT_EQ(reply.status, 0);
        ASSERT_EQ(reply.data, entries[number].record);
        ASSERT_EQ(reply.key, entries[number].record.substr(0, fieldLength));
    }

    void expectStep(uint32_t operation, std::optional<size_t> number) {
        Reply reply = session.call(operation, &block, "", std::string(fieldLength, '?'), 0, recordLength);
        if (number)
            return expectFound(reply, *number);
        ASSERT_EQ(reply.status, endOfFile);
    }

    std::optional<size_t> after(Place place) {
        size_t next = place.isBetween ? place.number : place.number + 1;
        return next < entries.size() ? std::optional(next) : std::nullopt;
    }
    static std::optional<size_t> before(Place place) {
        return place.number > 0 ? std::optional(place.number - 1) : std::nullopt;
    }

    Reply search(uint32_t operation, const std::string &text) {
        return session.call(operation, &block, "", field(text, '#'), 0, recordLength);
    }

    // A search, and one step in each direction from where it leads.
    void expectSearch(uint32_t operation, const std::string &text) {
        std::optional<size_t> found = expected(operation, text);
        Place place{found.value_or(placeOfFailure(operation, text)), !found};
        for (bool isForward : {true, false}) {
            Reply reply = search(operation, text);
            if (found) {
                expectFound(reply, *found);
            } else {
                ASSERT_EQ(reply.status, operation == getEqual ? notFound : endOfFile);
            }
            expectStep(isForward ? getNext : getPrevious, isForward ? after(place) : before(place));
        }
        Reply reply = session.call(operation + keyOnly, &block, "", field(text, '#'), 0, 0);
        ASSERT_EQ(reply.status == 0, found.has_value());
        if (found) {
            ASSERT_EQ(reply.key, entries[*found].record.substr(0, fieldLength));
        }
    }

    // In front of the key sought, or behind it where the search asks for what is not beyond it.
    size_t placeOfFailure(uint32_t operation, const std::string &text) {
        bool isBehind = operation == getGreater || operation == getLessOrEqual;
        return isBehind ? firstThat(text, [](int order) { return order > 0; }).value_or(entries.size())
                        : firstThat(text, [](int order) { return order >= 0; }).value_or(entries.size());
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
    const std::vector<std::string> texts = allTexts();
    std::vector<Entry> entries;  // in the order of the index
};

TEST_P(ExhaustiveKeysTest, EverySearchFindsWhatAScanFinds) {
    for (const std::string &text : texts) {
        for (uint32_t operation : {getEqual, getGreater, getGreaterOrEqual, getLess, getLessOrEqual}) {
            SCOPED_TRACE("operation " + std::to_string(operation) + " at \"" + text + '"');
            ASSERT_NO_FATAL_FAILURE(expectSearch(operation, text));
        }
    }
}

// Half of the texts are gone, so that searches for them fail.
TEST_P(ExhaustiveKeysTest, SearchesForMissingKeysLeaveTheirPlace) {
    for (size_t number = entries.size(); number-- > 0;) {
        if (entries[number].text.size() == 2 || entries[number].text.substr(0, 1) == "b")
            continue;
        ASSERT_EQ(session.call(getFirst, &block, "", "", 0, recordLength).status, 0);
        for (size_t step = 0; step < number; ++step)
            ASSERT_EQ(session.call(getNext, &block, "", "", 0, recordLength).status, 0);
        ASSERT_EQ(session.call(4, &block).status, 0);
        entries.erase(entries.begin() + static_cast<ptrdiff_t>(number));
    }
    for (const std::string &text : texts) {
        for (uint32_t operation : {getEqual, getGreater, getGreaterOrEqual, getLess, getLessOrEqual}) {
            SCOPED_TRACE("operation " + std::to_string(operation) + " at \"" + text + '"');
            ASSERT_NO_FATAL_FAILURE(expectSearch(operation, text));
        }
    }
}

TEST_P(ExhaustiveKeysTest, StepsLeadFromEveryPlaceToItsNeighbours) {
    expectStep(getFirst, 0);
    for (size_t number = 0; number < entries.size(); ++number) {
        SCOPED_TRACE("entry " + std::to_string(number));
        Place place{number, false};
        ASSERT_NO_FATAL_FAILURE(expectStep(getPrevious, before(place)));
        ASSERT_NO_FATAL_FAILURE(expectStep(number == 0 ? getFirst : getNext, number));
        ASSERT_NO_FATAL_FAILURE(expectStep(getNext, after(place)));
    }
    expectStep(getLast, entries.size() - 1);
    expectStep(getNext, std::nullopt);
    for (size_t number = entries.size() - 1; number-- > 0;)
        ASSERT_NO_FATAL_FAILURE(expectStep(getPrevious, number));
    expectStep(getPrevious, std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExhaustiveKeysTest, testing::ValuesIn(allKinds()), nameOf);

}  // namespace
