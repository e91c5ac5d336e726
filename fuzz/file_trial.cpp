#include "file_trial.h"

#include <cstring>
#include <vector>

#include "engine/bytes.h"
#include "engine_files.h"
#include "engine_requests.h"

namespace vantrel::fuzz {

namespace {

constexpr int32_t verifyMode = -3, physical = -1;
constexpr uint32_t keyOnly = 50;
constexpr int mostSteps = 12;
constexpr size_t longestRead = 200000;
constexpr int32_t indexes[] = {0, 1, 2, 125};

class FileTrial {
  public:
    FileTrial(const std::string &path, const std::string &owner) : path_(path), owner_(owner + '\0') {}
    ~FileTrial() { call(28, {}, "", 0); }
    FileTrial(const FileTrial &) = delete;
    FileTrial &operator=(const FileTrial &) = delete;

    int32_t open(int32_t mode) { return call(0, owner_, path_, mode); }
    void close() { call(1, {}, "", 0); }

    void readAll() {
        call(15, std::string(65535, '\0'), std::string(255, '\0'), 0);
        for (uint32_t number = 1; number <= 8; ++number) {
            std::string request = "ExSt" + littleEndian(number, 4);
            request.resize(5000);
            call(65, request, "", 0);
        }
        walk(physical, 33, 24);
        walk(physical, 34, 35);
        for (int32_t index : indexes) {
            walk(index, 12, 6);
            walk(index, 13, 7);
            walk(index, 12 + keyOnly, 6 + keyOnly);
            for (uint32_t search : {5u, 8u, 9u, 10u, 11u})
                call(search, std::string(300, '\0'), std::string(1100, '1'), index);
            readInBulk(36, index);
            readProportions(index);
        }
        readInBulk(38, physical);
        readProportions(physical);
    }

    void changeAll() {
        insertAndErase();
        changeFound();
        changeStructure();
        call(19, {}, "", 0);
        insertAndErase();
        changeFound();
        call(20, {}, "", 0);
        changeInBulk();
    }

    const std::set<int32_t> &statuses() const { return statuses_; }

  private:
    int32_t call(uint32_t operation, std::string data, const std::string &key, int32_t keyNumber) {
        int32_t status = client_.call(operation, &position_, &data, key, keyNumber);
        reply_ = std::move(data);
        statuses_.insert(status);
        return status;
    }

    // Every record through a buffer that is too short, and through chunks.
    void walk(int32_t index, uint32_t first, uint32_t next) {
        int32_t status = call(first, std::string(100, '\0'), std::string(1100, '\0'), index);
        for (int step = 0; (status == 0 || status == 22) && step < mostSteps; ++step) {
            if (call(22, std::string(8, '\0'), "", 0) == 0)
                readChunks(reply_, index);
            std::string times("SysD", 4);
            times.resize(24);
            call(22, times, "", -3);
            status = call(next, std::string(100, '\0'), std::string(1100, '\0'), index);
        }
    }

    void readChunks(const std::string &address, int32_t index) {
        call(23, address + chunk(0x80000001, 0, bytes_.data(), bytes_.size()), "", -2);
        call(23, address + chunk(0x80000001, 65530, bytes_.data(), 100), "", -2);
        if (index == physical)
            return;
        std::string request = address;
        request.resize(300);
        call(23, request, std::string(1100, '\0'), index);
    }

    static std::string chunk(uint32_t code, uint32_t offset, const void *bytes, size_t length) {
        std::string address(sizeof bytes, '\0');
        memcpy(address.data(), &bytes, sizeof bytes);
        return littleEndian(code, 4) + littleEndian(1, 4) + littleEndian(offset, 4) +
               littleEndian(length, 4) + address;
    }

    void readInBulk(uint32_t operation, int32_t index) {
        // One term on the first byte; all of 20 bytes of each record.
        std::string request = std::string("FI") + littleEndian(0, 2) + littleEndian(1, 2) +
                              std::string("\x0E\x01\0\0\0\x05\0\0", 8) + littleEndian(100, 2) +
                              littleEndian(1, 2) + littleEndian(20, 2) + littleEndian(0, 2);
        request = littleEndian(request.size() + 2, 2) + request;
        request.resize(20000);
        call(operation, request, std::string(1100, '\0'), index);
    }

    void readProportions(int32_t index) {
        for (uint32_t percentage : {0u, 5000u, 10000u}) {
            std::string request = littleEndian(percentage, 4);
            request.resize(300);
            int32_t status = call(44, request, std::string(1100, '\0'), index);
            if ((status != 0 && status != 22) || call(22, std::string(8, '\0'), "", 0) != 0)
                continue;
            call(45, reply_, std::string(1100, '1'), index);
        }
    }

    void insertAndErase() {
        for (size_t length : {size_t{4}, size_t{32}, size_t{100}, size_t{60000}})
            call(2, std::string(length, '7'), std::string(1100, '\0'), 0);
        call(4, {}, "", 0);
    }

    void changeFound() {
        for (int32_t index : {0, physical}) {
            call(index == 0 ? 12 : 33, std::string(100, '\0'), std::string(1100, '\0'), index);
            call(53, chunk(0xA0000001, 0, bytes_.data(), 70000), "", -1);
            call(53, chunk(0x80000009, 66000, bytes_.data(), 1000), "", -1);
            call(53, chunk(0x80000010, 66000, nullptr, 40000), "", -1);
            call(53, littleEndian(0x80000004, 4) + littleEndian(65600, 4), "", -1);
            call(3, std::string(32, '8'), std::string(1100, '\0'), index);
            call(13, std::string(100, '\0'), std::string(1100, '\0'), 0);
            call(4, {}, "", 0);
        }
    }

    void changeStructure() {
        std::string segment = littleEndian(1, 2) + littleEndian(4, 2) + littleEndian(0x0103, 2) +
                              std::string(10, '\0') + littleEndian(14, 2) + std::string(6, '\0');
        call(31, segment, "", 0);
        call(32, {}, "", 0);
    }

    void changeInBulk() {
        std::string request = std::string("FI") + littleEndian(0, 2) + littleEndian(0, 2) +
                              littleEndian(3, 2) + littleEndian(0, 2);
        request = littleEndian(request.size() + 2, 2) + request;
        request.resize(1000);
        call(85, request, std::string(1100, '\0'), 0);
        call(87, request, "", physical);
        std::string many = littleEndian(2, 4);
        for (int record = 0; record < 2; ++record)
            many += littleEndian(32, 4) + std::string(32, static_cast<char>('3' + record));
        call(40, many, "", -1);
    }

    std::string path_, owner_, reply_;
    std::vector<char> bytes_ = std::vector<char>(longestRead);
    Client client_{100};
    Client::PositionBlock position_{};
    std::set<int32_t> statuses_;
};

}  // namespace

Trial tryFile(const std::string &path, int32_t mode, const std::string &owner) {
    Trial trial;
    FileTrial file(path, owner);
    trial.verified = file.open(verifyMode);
    if (trial.verified == 0)
        file.close();
    trial.opened = file.open(mode);
    if (trial.opened == 0) {
        file.readAll();
        file.changeAll();
        file.close();
        file.open(verifyMode);
    }
    trial.statuses = file.statuses();
    return trial;
}

}  // namespace vantrel::fuzz
