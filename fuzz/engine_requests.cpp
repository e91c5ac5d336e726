#include "engine_requests.h"

namespace vantrel::fuzz {

namespace {

constexpr int32_t keyNumberChunk = -2, keyNumberTimes = -3, keyNumberRename = -127;
constexpr uint16_t keyContinues = 0x0010;

std::string bytesOf(Input &input, size_t size) {
    std::string bytes(size, '\0');
    input.take(bytes.data(), size);
    return bytes;
}

std::string record(Input &input) {
    constexpr size_t sizes[] = {32, 32, 32, 40, 0, 31, 300, 65535, 65536};
    std::string start = bytesOf(input, input.number<uint8_t>() % 48);
    start.resize(input.choose(sizes), 'r');
    return start;
}

// Most fields are segments of the files' indexes, or as long as their type wants.
struct Place {
    uint16_t type, length, offset;
};

Place field(Input &input) {
    constexpr Place places[] = {{14, 4, 0},  {11, 8, 4},      {1, 4, 12},    {0, 4, 16},       {15, 4, 0},
                                {2, 8, 4},   {2, 4, 8},       {5, 4, 12},    {10, 8, 16},      {32, 8, 24},
                                {6, 5, 4},   {8, 6, 3},       {9, 8, 2},     {9, 4, 1},        {17, 5, 7},
                                {18, 3, 9},  {19, 8, 8},      {28, 4, 20},   {29, 6, 5},       {31, 7, 6},
                                {25, 8, 10}, {0, 200, 65500}, {0, 9, 65535}, {21, 5000, 65000}};
    if (input.number<uint8_t>() % 4 != 0)
        return input.choose(places);
    return {input.choose(places).type, static_cast<uint16_t>(input.number<uint8_t>() % 20),
            static_cast<uint16_t>(input.number<uint8_t>() % 40)};
}

std::string segmentBytes(const Segment &segment) {
    return littleEndian(segment.offset + 1u, 2) + littleEndian(segment.length, 2) +
           littleEndian(segment.flags, 2) + std::string(10, '\0') + littleEndian(segment.type, 2) +
           static_cast<char>(segment.nullValue) + std::string(5, '\0');
}

std::vector<Segment> segments(Input &input, uint16_t *indexCount) {
    constexpr uint16_t types[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 14, 15,
                                  16, 17, 18, 19, 20, 21, 25, 26, 27, 28, 29, 31, 32, 34};
    constexpr uint16_t lengths[] = {1, 2, 4, 8, 8, 16, 3, 9};
    constexpr uint16_t flags[] = {0x0100, 0x0103, 0x0143, 0x0503, 0x0112, 0x0308,
                                  0x0D21, 0x0521, 0x0003, 0x0007, 0x0111, 0x0181};
    std::vector<Segment> result(input.number<uint8_t>() % 8);
    *indexCount = 0;
    for (Segment &segment : result) {
        segment = {static_cast<uint16_t>(input.number<uint8_t>() % 32), input.choose(lengths),
                   input.choose(flags), input.choose(types), input.number<uint8_t>()};
        if ((segment.flags & keyContinues) == 0)
            ++*indexCount;
    }
    return result;
}

std::string createRequestFrom(Input &input) {
    constexpr uint16_t fileFlags[] = {0x0000, 0x0001, 0x0200, 0x4201, 0x1200, 0x0010, 0x0104};
    uint16_t indexCount;
    std::vector<Segment> requested = segments(input, &indexCount);
    return createRequest(32, input.choose(fileFlags), requested, indexCount) + collationBlock();
}

std::string indexRequestFrom(Input &input) {
    uint16_t indexCount;
    std::string request;
    for (const Segment &segment : segments(input, &indexCount))
        request += segmentBytes(segment);
    return request + collationBlock();
}

std::string chunkDescriptor(Input &input) {
    constexpr uint32_t subFunctions[] = {0x80000001, 0x80000009, 0x80000010, 0xA0000001, 0x80000004,
                                         0xC0000001, 0xC0000009, 0xC0000010, 0xC0000004, 0x80000000};
    uint32_t subFunction = input.choose(subFunctions);
    // Around the places where records are taken apart for storage, or anywhere.
    constexpr uint32_t starts[] = {0, 32, 65530, 65535, 70000, 98300, 131000, 200000};
    uint32_t offset = input.choose(starts) + input.number<uint8_t>() % 64;
    if ((subFunction & 0xFF) == 4)
        return littleEndian(subFunction, 4) + littleEndian(offset, 4);
    return littleEndian(subFunction, 4) + littleEndian(1, 4) + littleEndian(offset, 4) +
           littleEndian(input.number<uint32_t>() % 200000, 4) + std::string(sizeof(void *), '\0');
}

std::string comparand(uint8_t comparison, uint16_t length, Input &input) {
    constexpr uint8_t withField = 0x40, pattern = 7;
    if ((comparison & withField) != 0)
        return bytesOf(input, 2);
    if ((comparison & pattern) != pattern)
        return bytesOf(input, length);
    std::string text = bytesOf(input, input.number<uint8_t>() % 24);
    return static_cast<char>(1 + input.number<uint8_t>() % 3) + littleEndian(text.size() + 1, 2) + text +
           '\0';
}

std::string blockBehind(uint8_t comparison, Input &input) {
    constexpr uint8_t hasBlock = 0x08;
    const std::string blocks[] = {"\xAC" + std::string("REVERSE\0", 8),
                                  "\xAE" + std::string("UPPER") + std::string(11, '\0'),
                                  "\xAB" + std::string("UTF-8") + std::string(11, '\0')};
    if ((comparison & hasBlock) == 0)
        return {};
    return blocks[input.number<uint8_t>() % 3];
}

std::string terms(Input &input, size_t count) {
    constexpr uint8_t comparisons[] = {1, 2, 3,    4,    5,    6,    1,    2,    3,    4,   5,
                                       6, 7, 0x47, 0x41, 0x87, 0x82, 0x0F, 0x09, 0x21, 0x4A};
    std::string bytes;
    for (size_t term = 0; term < count; ++term) {
        uint8_t comparison = input.choose(comparisons);
        Place place = field(input);
        bytes += static_cast<char>(place.type);
        bytes += littleEndian(place.length, 2) + littleEndian(place.offset, 2);
        bytes += static_cast<char>(comparison);
        bytes += static_cast<char>(term + 1 == count ? 0 : 1 + input.number<uint8_t>() % 2);
        bytes += comparand(comparison, place.length, input) + blockBehind(comparison, input);
    }
    return bytes;
}

std::string entry(size_t length, size_t offset) {
    return littleEndian(length, 2) + littleEndian(offset, 2);
}

std::string extractorEntry(Input &input) {
    constexpr uint16_t functions[] = {'M' | 'I' << 8, 'M' | 'A' << 8, 'A' | 'V' << 8, 'C' | 'E' << 8,
                                      'F' | 'L' << 8, 'R' | 'O' << 8, 'T' | 'R' << 8};
    Place place = field(input);
    std::string bytes = entry(place.length, place.offset);
    size_t kind = input.number<uint8_t>() % 20;
    if (kind == 7)
        return entry(0xFF08, 0xFFFE);
    if (kind > 7)
        return bytes;
    uint16_t function = functions[kind % 7];
    std::string item = entry(0xFF00, kind < 2 ? 0xFFF9 : 0xFFFA) + entry(place.type, function) + bytes;
    return kind >= 5 ? item + entry(0, input.number<uint8_t>() - 128u) : item;
}

std::string extendedRequest(bool deletes, Input &input) {
    constexpr const char *signatures[] = {"UC", "EG", "FI", "LA", "EQ", "GT", "LT", "GE", "LE"};
    std::string signature = input.choose(signatures);
    size_t termCount = input.number<uint8_t>() % 4;
    std::string request =
        signature + littleEndian(input.number<uint8_t>() % 4, 2) + littleEndian(termCount, 2);
    request += terms(input, termCount);
    size_t entryCount = deletes ? 0 : input.number<uint8_t>() % 4, written = 0;
    std::string entries;
    for (; written < entryCount; ++written)
        entries += extractorEntry(input);
    request +=
        littleEndian(1 + input.number<uint8_t>() % 8, 2) + littleEndian(entries.size() / 4, 2) + entries;
    return littleEndian(request.size() + 2, 2) + request;
}

std::string insertExtendedRequest(Input &input) {
    size_t count = input.number<uint8_t>() % 5;
    std::string request = littleEndian(count, 4);
    for (size_t number = 0; number < count; ++number) {
        std::string bytes = record(input);
        request += littleEndian(bytes.size(), 4) + bytes;
    }
    return request;
}

std::string address(Input &input) {
    return littleEndian(input.number<uint8_t>() % 12, 8);
}

}  // namespace

std::string littleEndian(uint64_t value, size_t length) {
    std::string bytes;
    for (size_t byte = 0; byte < length; ++byte, value >>= 8)
        bytes.push_back(static_cast<char>(value));
    return bytes;
}

std::string createRequest(uint16_t recordLength, uint16_t fileFlags, const std::vector<Segment> &segments,
                          uint16_t indexCount) {
    std::string request = littleEndian(recordLength, 2) + littleEndian(4096, 2) + littleEndian(fileFlags, 2) +
                          std::string(10, '\0') + littleEndian(indexCount, 2) + std::string(14, '\0');
    for (const Segment &segment : segments)
        request += segmentBytes(segment);
    return request;
}

std::string collationBlock() {
    std::string block = "\xAC" + std::string("REVERSE\0", 8);
    for (int byte = 255; byte >= 0; --byte)
        block.push_back(static_cast<char>(byte));
    return block;
}

std::string makeRequest(uint32_t operation, int32_t keyNumber, Input &input) {
    switch (operation) {
        case 0:
        case 29:
        case 17029:
            return input.number<uint8_t>() % 4 == 0 ? std::string("owner\0", 6) : "";
        case 2:
        case 3:
            return record(input);
        case 14:
            return keyNumber == keyNumberRename ? std::string("file\0", 5) : createRequestFrom(input);
        case 22:
            return (keyNumber == keyNumberTimes ? "SysD" : "") + bytesOf(input, 20);
        case 23:
            return address(input) + (keyNumber == keyNumberChunk ? chunkDescriptor(input) : "");
        case 27:
        case 44:
            return address(input);
        case 31:
            return indexRequestFrom(input);
        case 36:
        case 37:
        case 38:
        case 39:
            return extendedRequest(false, input);
        case 40:
            return insertExtendedRequest(input);
        case 42:
            return input.number<uint8_t>() % 4 == 0 ? "file,other" : "file";
        case 53:
            return chunkDescriptor(input);
        case 65:
            return "ExSt" + littleEndian(input.number<uint8_t>() % 10, 4);
        case 85:
        case 86:
        case 87:
        case 88:
            return extendedRequest(true, input);
        default:
            return bytesOf(input, input.number<uint8_t>());
    }
}

size_t chunkOffset(uint32_t operation, int32_t keyNumber) {
    if (operation == 53)
        return 0;
    return operation == 23 && keyNumber == keyNumberChunk ? 8 : noChunk;
}

}  // namespace vantrel::fuzz
