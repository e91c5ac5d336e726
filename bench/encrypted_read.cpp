// Measures reads of a plain and of an encrypted file with the same records, through the engine's entry point.
//
// Usage: encrypted_read DIRECTORY [RECORDS]    microseconds of processor time a read, the best of several
// rounds;
//                                              the file is made in the directory and removed
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>
#include <string>

extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

namespace vantrel::bench {

namespace {

constexpr uint32_t recordLength = 150;
constexpr int32_t keyLength = 4;
constexpr int rounds = 5;
constexpr int readsOfRound = 50000;
constexpr uint32_t changesOfTransaction = 10000;
constexpr int32_t encryptedMode = 2;

class File {
  public:
    File(uint8_t number, std::string path) : path_(std::move(path)) { client_[12] = number; }
    ~File() {
        call(28, "", "", 0);
        call(14, "", path_ + '\0', -128);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    // Sequence numbers as unsigned keys in front of bytes that do not repeat.
    void fill(uint32_t records) {
        std::string request(56, '\0');
        const unsigned char specification[] = {recordLength, 0, 0, 16};
        memcpy(request.data(), specification, sizeof specification);
        request[16] = 1;
        request[32] = 1;
        request[34] = keyLength;
        request[37] = 1;  // extended type
        request[42] = 14;
        require(call(14, request, path_ + '\0', 0));
        require(call(0, "", path_ + '\0', 0));
        std::mt19937 random(1);
        std::string record(recordLength, '\0');
        for (uint32_t number = 0; number < records; ++number) {
            if (number % changesOfTransaction == 0)
                require(call(1019, "", "", 0));
            for (char &byte : record)
                byte = static_cast<char>(random());
            memcpy(record.data(), &number, sizeof number);
            require(call(2, record, "", -1));
            if (number % changesOfTransaction == changesOfTransaction - 1 || number + 1 == records)
                require(call(20, "", "", 0));
        }
    }
    void encrypt() {
        require(call(29, std::string("bench") + '\0', std::string("bench") + '\0', encryptedMode));
    }
    void close() { require(call(1, "", "", 0)); }
    void open(const char *owner) { require(call(0, owner + std::string(1, '\0'), path_ + '\0', 0)); }

    void readByKey(uint32_t number) {
        memcpy(key_, &number, sizeof number);
        require(read(5));
    }
    void readFirst() { require(read(12)); }
    void readNext() { require(read(6)); }

  private:
    int32_t call(uint32_t operation, std::string data, std::string key, int32_t keyNumber) {
        auto length = static_cast<uint32_t>(data.size());
        return VNTLEXID(operation, block_.data(), data.data(), &length, key.data(),
                        static_cast<int32_t>(key.size()), keyNumber, client_.data());
    }
    int32_t read(uint32_t operation) {
        uint32_t length = recordLength;
        return VNTLEXID(operation, block_.data(), record_, &length, key_, keyLength, 0, client_.data());
    }
    static void require(int32_t status) {
        if (status == 0)
            return;
        fprintf(stderr, "encrypted_read: status %d\n", status);
        exit(1);
    }

    std::string path_;
    std::array<uint8_t, 16> client_{};
    std::array<uint8_t, 128> block_{};
    char key_[keyLength] = {};
    char record_[recordLength] = {};
};

// Of this thread: other programs on the machine disturb it little.
double processorMicroseconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Function>
double bestMicroseconds(Function &&read, int reads) {
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        double start = processorMicroseconds();
        for (int number = 0; number < reads; ++number)
            read();
        double spent = processorMicroseconds() - start;
        best = std::min(best, spent / reads);
    }
    return best;
}

void measure(const char *name, File &file, uint32_t records) {
    std::mt19937 random(2);
    double anywhere =
        bestMicroseconds([&] { file.readByKey(static_cast<uint32_t>(random() % records)); }, readsOfRound);
    // So few records stay in the cache.
    uint32_t few = std::min<uint32_t>(records, 10000);
    double cached =
        bestMicroseconds([&] { file.readByKey(static_cast<uint32_t>(random() % few)); }, readsOfRound);
    double next = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        double start = processorMicroseconds();
        file.readFirst();
        for (uint32_t number = 1; number < records; ++number)
            file.readNext();
        double spent = processorMicroseconds() - start;
        next = std::min(next, spent / records);
    }
    printf("%-10s by key anywhere %6.2f us   by key in the cache %6.2f us   next, whole file %6.2f us\n",
           name, anywhere, cached, next);
}

}  // namespace

}  // namespace vantrel::bench

int main(int count, char **arguments) {
    using namespace vantrel::bench;
    if (count < 2) {
        fprintf(stderr, "usage: encrypted_read DIRECTORY [RECORDS]\n");
        return 2;
    }
    std::string directory = arguments[1];
    auto records = static_cast<uint32_t>(count > 2 ? strtoul(arguments[2], nullptr, 10) : 1000000);
    File file(1, directory + "/encrypted_read.vnt");
    file.fill(records);
    for (const char *owner : {"", "bench"}) {
        bool isEncrypted = *owner != '\0';
        if (isEncrypted)
            file.encrypt();
        file.close();
        double start = processorMicroseconds();
        file.open(owner);
        double spent = processorMicroseconds() - start;
        printf("%-10s opening %.1f ms\n", isEncrypted ? "encrypted" : "plain", spent / 1e3);
        measure(isEncrypted ? "encrypted" : "plain", file, records);
    }
    return 0;
}
