#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "embedded/key/collation.h"
#include "embedded/key/encoding.h"
#include "random_source.h"
#include "tests/embedded/emulation.h"
#include "value_order.h"

namespace {

using namespace vantrel::embedded;
using namespace std::string_literals;

struct TypeCase {
    const char *name;
    KeyType type;
    uint16_t length;
    Bytes alphabet;  // most bytes of most values come from here
    const char *collation = nullptr;
    Bytes first = {};  // what stands in the first and last byte instead
    Bytes last = {};

    // GoogleTest prints the cases.
    friend void PrintTo(const TypeCase &value, std::ostream *out) { *out << value.name; }
};

const Bytes edges = "\x00\x01\x02\x7F\x80\x81\xFE\xFF"s;
const Bytes letters =
    "\x00\x01\x02"s
    "AaBbZz\xC0\xE0\xFF";
const Bytes wideUnits = "\x00\x00\x01\x02\xD8\xFF"s;
const Bytes packedDigits = "\x00\x00\x10\x01\x09\x99"s;
const Bytes packedSigns = "\x0A\x0B\x0C\x0D\x0E\x0F\x1C\x1D\x9D\x9F\x99"s;

class EncodingOrder : public testing::TestWithParam<TypeCase> {
  protected:
    Bytes randomValue() {
        Bytes value = random.bytes(GetParam().length);
        if (random.below(8) == 0)
            return value;
        for (size_t at = 0; at < value.size(); ++at)
            if (random.below(64) != 0)
                value[at] = random.oneOf(alphabetAt(at));
        return value;
    }

    const Bytes &alphabetAt(size_t at) const {
        const TypeCase &type = GetParam();
        if (at == 0 && !type.first.empty())
            return type.first;
        return at + 1 == type.length && !type.last.empty() ? type.last : type.alphabet;
    }

    // Values that differ in one byte only meet often enough to be told apart late.
    Bytes neighbourOf(Bytes value) {
        const size_t at = random.below(value.size());
        value[at] = random.oneOf(alphabetAt(at));
        return value;
    }

    std::vector<Bytes> randomValues() {
        std::vector<Bytes> values;
        for (const char byte : GetParam().alphabet)
            values.emplace_back(GetParam().length, byte);
        while (values.size() < vantrel::test::rounds<size_t>(160, 80))
            values.push_back(random.below(3) == 0 ? neighbourOf(values[random.below(values.size())])
                                                  : randomValue());
        return values;
    }

    CollationPointer collation() const {
        const char *name = GetParam().collation;
        if (name == nullptr)
            return nullptr;
        return strcmp(name, "case") == 0 ? caseInsensitiveCollation() : findBuiltInCollation(name);
    }

    IndexDefinition index(bool descending) const {
        KeySegment segment;
        segment.length = GetParam().length;
        segment.type = GetParam().type;
        segment.collation = collation();
        segment.descending = descending;
        IndexDefinition definition;
        definition.segments = {segment};
        definition.keyLength = segment.length;
        return definition;
    }

    RandomSource random;
};

int sign(int number) {
    return (number > 0) - (number < 0);
}

bool startsWithOther(const Bytes &left, const Bytes &right) {
    return left != right && (left.starts_with(right) || right.starts_with(left));
}

TEST_P(EncodingOrder, IsTheOrderOfTheValuesInBothDirections) {
    const std::vector<Bytes> values = randomValues();
    for (const bool descending : {false, true}) {
        const IndexDefinition definition = index(descending);
        std::vector<Bytes> keys(values.size());
        for (size_t at = 0; at < values.size(); ++at)
            appendEncodedKey(definition, values[at], keys[at]);
        for (size_t left = 0; left < values.size(); ++left) {
            for (size_t right = 0; right <= left; ++right) {
                const int expected =
                    compareValues(GetParam().type, collation().get(), values[left], values[right]);
                ASSERT_EQ(sign(keys[left].compare(keys[right])),
                          descending ? -sign(expected) : sign(expected))
                    << testing::PrintToString(values[left]) << " against "
                    << testing::PrintToString(values[right]) << (descending ? " descending" : "");
                ASSERT_FALSE(startsWithOther(keys[left], keys[right]));
            }
        }
    }
}

std::vector<TypeCase> typeCases() {
    std::vector<TypeCase> cases = {
        {"character", KeyType::character, 5, letters},
        {"characterWithoutCase", KeyType::character, 5, letters, "case"},
        {"legacyString", KeyType::legacyString, 4, letters},
        {"legacyStringUpper", KeyType::legacyString, 4, letters, "UPPER"},
        {"largeObjectText", KeyType::largeObjectText, 6, letters, "LATIN1"},
        {"lengthPrefixed", KeyType::lengthPrefixedString, 5, "\x00\x01\x02\x03\x04\x05\x06\xFFz"s},
        {"lengthPrefixedWithoutCase", KeyType::lengthPrefixedString, 5,
         "\x00\x01\x02\x03\x04\x05\xFF"
         "aAbB"s,
         "case"},
        {"lengthPrefixedByte", KeyType::lengthPrefixedString, 1, edges},
        {"zeroTerminated", KeyType::zeroTerminatedString, 5, letters},
        {"zeroTerminatedCodePage", KeyType::zeroTerminatedString, 5, letters, "CP850"},
        {"zeroTerminatedByte", KeyType::zeroTerminatedString, 1, edges},
        {"wide", KeyType::wideString, 6, wideUnits},
        {"wideZeroTerminated", KeyType::wideZeroTerminatedString, 8, wideUnits},
        {"guid", KeyType::guid, 16, edges},
        {"unsignedLong", KeyType::unsignedBinary, 13, edges},
        {"legacyBinary", KeyType::legacyBinary, 3, edges},
        {"autoincrement2", KeyType::autoincrement, 2, edges},
        {"autoincrement4", KeyType::autoincrement, 4, edges},
        {"autoincrement8", KeyType::autoincrement, 8, edges},
        {"logical1", KeyType::logical, 1, edges},
        {"logical2", KeyType::logical, 2, edges},
        {"bit", KeyType::bit, 1, edges},
        {"nullIndicator", KeyType::nullIndicator, 1, edges},
        {"date", KeyType::date, 4, edges},
        {"time", KeyType::time, 4, edges},
        {"currency", KeyType::currency, 8, edges},
        {"timestamp", KeyType::timestamp, 8, edges},
        {"autoTimestamp", KeyType::autoTimestamp, 8, edges},
        {"timestamp2", KeyType::timestamp2, 8, edges},
        {"float4", KeyType::floatingPoint, 4, "\x00\x01\x7F\x80\xFF\x3F\xC0"s},
        {"float8", KeyType::floatingPoint, 8, "\x00\x01\x7F\x80\xFF\xF0\x3F"s},
        {"binaryFloat4", KeyType::binaryFloat, 4, edges},
        {"binaryFloat8", KeyType::binaryFloat, 8, edges},
        {"decimal1", KeyType::decimal, 1, packedSigns},
        {"decimal4", KeyType::decimal, 4, packedDigits, nullptr, {}, packedSigns},
        {"money3", KeyType::money, 3, packedDigits, nullptr, {}, packedSigns},
        {"numeric1", KeyType::numeric, 1, "0159{AEI}JNR"},
        {"numeric4", KeyType::numeric, 4, "0019", nullptr, {}, "09{AI}JR"},
        {"numericAscii", KeyType::numericAsciiOverpunch, 4, "0019", nullptr, {}, "09pyPY"},
        {"numericLeadingBit", KeyType::numericSignLeadingBinary, 4, "0019", nullptr, "019pqy", {}},
        {"numericTrailingBit", KeyType::numericSignTrailingBinary, 4, "0019", nullptr, {}, "019pqy"},
        {"numericLeadingSeparate", KeyType::numericSignLeadingSeparate, 4, "0019", nullptr, "++--0", {}},
        {"numericTrailingSeparate", KeyType::numericSignTrailingSeparate, 4, "0019", nullptr, {}, "++--0"},
    };
    static const char *const integerNames[] = {"integer1", "integer2", "integer3", "integer4",
                                               "integer5", "integer6", "integer7", "integer8"};
    static const char *const unsignedNames[] = {"unsigned1", "unsigned2", "unsigned3", "unsigned4",
                                                "unsigned5", "unsigned6", "unsigned7", "unsigned8"};
    for (uint16_t length = 1; length <= 8; ++length) {
        cases.push_back({integerNames[length - 1], KeyType::integer, length, edges});
        cases.push_back({unsignedNames[length - 1], KeyType::unsignedBinary, length, edges});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Types, EncodingOrder, testing::ValuesIn(typeCases()),
                         [](const auto &information) { return std::string(information.param.name); });

}  // namespace
