// Calls the engine with what the input makes of operation codes, requests, lengths and key numbers. The first
// bytes of the input choose the files and whether two sessions take part, each following group of bytes is a
// call. Statuses that tell of a failure within the engine, and files that do not belong together at the end,
// are findings as a crash is.
#include <cstring>
#include <memory>

#include "engine_files.h"
#include "engine_requests.h"

extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

namespace vantrel::fuzz {

namespace {

constexpr size_t sessionCount = 2, positionsPerSession = 2;
constexpr uint32_t begin = 19, end = 20, abortChanges = 21, stop = 25, reset = 28;
constexpr uint32_t largestChunk = 200000;
constexpr int mostCalls = 40;

// Exactly as long as the engine is told, so that the sanitizer sees each byte beyond.
class Buffer {
  public:
    Buffer(const std::string &bytes, size_t size) : bytes_(new uint8_t[size]), size_(size) {
        memset(bytes_.get(), 0xEE, size);
        memcpy(bytes_.get(), bytes.data(), std::min(size, bytes.size()));
    }
    uint8_t *data() { return bytes_.get(); }
    size_t size() const { return size_; }

  private:
    std::unique_ptr<uint8_t[]> bytes_;
    size_t size_;
};

class Run {
  public:
    explicit Run(Input &input) : input_(input) {
        uint8_t choice = input.number<uint8_t>();
        twoSessions_ = choice % 2 != 0;
        for (size_t number = 0; number < sessionCount; ++number)
            sessions_[number].block[12] = static_cast<uint8_t>(number + 1);
        bool beginsOpen = choice % 8 < 6;
        for (size_t session = 0; beginsOpen && session <= (twoSessions_ ? 1 : 0); ++session) {
            for (size_t position = 0; position < positionsPerSession; ++position)
                open(session, position);
        }
    }
    ~Run() {
        for (Session &session : sessions_)
            require(call(session, reset, nullptr) == 0, "reset");
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    void performAll() {
        for (int calls = 0; calls < mostCalls && !input_.isEmpty(); ++calls)
            perform();
    }

  private:
    struct Session {
        std::array<uint8_t, 16> block{};
        Client::PositionBlock positions[positionsPerSession]{};
    };

    void open(size_t session, size_t position) {
        std::string name(position == 0 ? "file" : "other");
        uint32_t none = 0;
        int32_t status =
            VNTLEXID(0, sessions_[session].positions[position].data(), nullptr, &none, name.data(),
                     static_cast<int32_t>(name.size()), 0, sessions_[session].block.data());
        require(status == 0, "open");
    }

    int32_t call(Session &session, uint32_t operation, void *position) {
        uint32_t none = 0;
        return VNTLEXID(operation, position, nullptr, &none, nullptr, 0, 0, session.block.data());
    }

    void perform();
    uint32_t chooseOperation();
    int32_t chooseKeyNumber(uint32_t operation);
    uint32_t chooseLength(size_t size);
    std::string chooseName();
    std::string chooseKey(uint32_t operation);
    void *choosePosition(Session &session, Client::PositionBlock *copy);
    void mutate(std::string *request);
    std::unique_ptr<Buffer> placeChunk(Buffer *data, size_t offset);
    Session &chooseSession();
    void follow(uint32_t operation, int32_t status, const Session &session);

    Input &input_;
    bool twoSessions_ = false;
    Session sessions_[sessionCount];
    const Session *inTransaction_ = nullptr;
};

// While one session is in a transaction, the other would only wait for it.
Run::Session &Run::chooseSession() {
    size_t number = input_.number<uint8_t>() % sessionCount;
    if (!twoSessions_)
        return sessions_[0];
    if (inTransaction_ != nullptr)
        return inTransaction_ == &sessions_[0] ? sessions_[0] : sessions_[1];
    return sessions_[number];
}

// Two sessions in one thread may not wait for each other's locks.
uint32_t withoutWaiting(uint32_t operation) {
    uint32_t bias = operation % 500 / 100;
    return bias == 1 || bias == 3 ? operation + 100 : operation;
}

uint32_t Run::chooseOperation() {
    constexpr uint32_t operations[] = {0,  1,  2,  2,  2,  3,  3,  4,  5,  6,    7,    8,    9,  10, 11,
                                       12, 13, 14, 15, 17, 18, 19, 20, 21, 22,   23,   24,   25, 26, 27,
                                       28, 29, 30, 31, 32, 33, 34, 35, 36, 37,   38,   39,   40, 42, 44,
                                       45, 53, 53, 53, 65, 78, 85, 86, 87, 88,   12,   12,   33, 36, 38,
                                       23, 31, 6,  7,  6,  24, 16, 41, 43, 1019, 1519, 17029};
    constexpr uint32_t biases[] = {0, 0, 0, 0, 0, 0, 50, 100, 200, 300, 400, 500};
    uint32_t operation = input_.choose(operations) + input_.choose(biases);
    return twoSessions_ ? withoutWaiting(operation) : operation;
}

int32_t Run::chooseKeyNumber(uint32_t operation) {
    constexpr int32_t numbers[] = {0, 0, 0, 1, 2, 3, 4, -1, -1, -2, -3, -4, 5, 6, 124, 125, 0x80, 0x85, 100};
    constexpr int32_t createNumbers[] = {0, -1, 6, 7, 0x80, 0x82, 0xFF, -127, -128, 99};
    return operation == 14 ? input_.choose(createNumbers) : input_.choose(numbers);
}

uint32_t Run::chooseLength(size_t size) {
    switch (input_.number<uint8_t>() % 8) {
        case 0:
            return 0;
        case 1:
            return input_.number<uint8_t>();
        case 2:
            return static_cast<uint32_t>(size) + input_.number<uint16_t>();
        case 3:
            return 65535 + input_.number<uint8_t>() * 32u;
        default:
            return static_cast<uint32_t>(size);
    }
}

// Names stay within the directory.
std::string Run::chooseName() {
    constexpr const char *names[] = {"file", "file", "file", "other", "missing/file", ".", "", "file-wal"};
    size_t choice = input_.number<uint8_t>() % 10;
    if (choice < 8)
        return names[choice] + std::string(1, '\0');
    std::string name(input_.number<uint8_t>(), '\0');
    input_.take(name.data(), name.size());
    for (char &letter : name) {
        if (letter == '/' || letter == '.')
            letter = '_';
    }
    return choice == 8 ? name : workDirectory() + '/' + name;
}

std::string Run::chooseKey(uint32_t operation) {
    constexpr uint32_t setOwner = 29, setLongOwner = 17029, login = 78;
    if (operation == setOwner || operation == setLongOwner)
        return std::string("owner\0", 6);
    if (operation == login && input_.number<uint8_t>() % 2 == 0)
        return std::string("vantrel://user@/base?option=value", 34);
    std::string key(input_.number<uint8_t>() % 64, '\0');
    input_.take(key.data(), key.size());
    return key;
}

void *Run::choosePosition(Session &session, Client::PositionBlock *copy) {
    size_t choice = input_.number<uint8_t>() % 16;
    switch (choice) {
        case 0:
            return nullptr;
        case 1:
            *copy = session.positions[0];
            return copy->data();
        case 2:
            ++session.positions[1][input_.number<uint8_t>() % copy->size()];
            return session.positions[1].data();
        case 3:
            return sessions_[1].positions[0].data();
        default:
            return session.positions[choice % positionsPerSession].data();
    }
}

void Run::mutate(std::string *request) {
    constexpr uint8_t seldom = 208;
    uint8_t count = input_.number<uint8_t>();
    if (count < seldom || request->empty())
        return;
    for (count -= seldom; count % 8 != 0; --count)
        (*request)[input_.number<uint16_t>() % request->size()] = static_cast<char>(input_.number<uint8_t>());
}

// Addresses are the caller's word: the descriptor gets one, of as many bytes as it states.
std::unique_ptr<Buffer> Run::placeChunk(Buffer *data, size_t offset) {
    constexpr size_t lengthOffset = 12, addressOffset = 16;
    if (offset == noChunk || data->size() < offset + addressOffset + sizeof(void *))
        return nullptr;
    uint32_t length;
    memcpy(&length, data->data() + offset + lengthOffset, sizeof length);
    length %= largestChunk;
    memcpy(data->data() + offset + lengthOffset, &length, sizeof length);
    auto chunk = std::make_unique<Buffer>(std::string(), length);
    uint8_t *address = input_.number<uint8_t>() % 16 == 0 ? nullptr : chunk->data();
    memcpy(data->data() + offset + addressOffset, &address, sizeof address);
    return chunk;
}

void Run::follow(uint32_t operation, int32_t status, const Session &session) {
    bool begins = operation % 500 % 100 == begin;
    if (status == 0 && begins)
        inTransaction_ = &session;
    bool ends = operation == end || operation == abortChanges || operation == stop || operation == reset;
    if (ends && (inTransaction_ == &session || operation == stop))
        inTransaction_ = nullptr;
}

void Run::perform() {
    constexpr size_t reservedPages = 22, keptReservedPages = 6, blockLength = 16;
    Session &session = chooseSession();
    uint32_t operation = chooseOperation();
    int32_t keyNumber = chooseKeyNumber(operation);
    uint32_t plain = operation < 1000 && operation % 100 < 54 ? operation % 100 : operation;
    std::string request = makeRequest(plain, keyNumber, input_);
    mutate(&request);
    bool takesName = operation == 0 || operation == 14 || operation == 17;
    std::string keyBytes = takesName ? chooseName() : chooseKey(operation);
    if (operation == 14 && request.size() > reservedPages + 1) {
        // Space is not what is tested.
        request[reservedPages + 1] = 0;
        request[keptReservedPages + 1] = 0;
    }

    uint32_t length = chooseLength(request.size());
    Buffer data(request, length), key(keyBytes, keyBytes.size());
    std::unique_ptr<Buffer> chunk = placeChunk(&data, chunkOffset(plain, keyNumber));
    Client::PositionBlock copy{};
    void *position = choosePosition(session, &copy);
    std::array<uint8_t, blockLength> block = session.block;
    uint8_t nulls = input_.number<uint8_t>();
    uint32_t delivered = length;
    int32_t status = VNTLEXID(operation, position, nulls == 1 ? nullptr : data.data(),
                              nulls == 2 ? nullptr : &delivered, nulls == 3 ? nullptr : key.data(),
                              nulls == 4 ? -1 : static_cast<int32_t>(key.size()), keyNumber, block.data());
    require(nulls == 2 || delivered <= (chunk != nullptr ? std::max(length, largestChunk) : length),
            "length");
    require(status >= 0 && status != 2 && status != 18 && status != 19 && status != 101, "status");
    follow(operation, status, session);
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    vantrel::fuzz::prepareFiles();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace vantrel::fuzz;
    Input input(bytes, size);
    placeFiles(input.number<uint8_t>() % fileKindCount);
    {
        Run run(input);
        run.performAll();
    }
    checkFile("file");
    checkFile("other");
    return 0;
}
