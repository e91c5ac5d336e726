#include "file_images.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "engine_files.h"
#include "engine_requests.h"
#include "tests/embedded/quiet_fork.h"

namespace vantrel::fuzz {

namespace {

constexpr uint16_t variableLength = 0x0001, keyOnlyFlag = 0x0010, systemData = 0x0200, extended = 0x0100;
constexpr uint16_t repeated = extended | 0x0003;

std::string readAll(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeAll(const std::string &path, const std::string &content) {
    std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

// Works on the files of the directory; what fails is the fault of whoever asked for it.
class Maker {
  public:
    explicit Maker(const std::string &directory) : directory_(directory) {}

    void create(const std::string &name, uint16_t flags) {
        std::string request =
            createRequest(32, flags, {{0, 4, extended, 14}, {4, 8, repeated, 1}, {12, 4, repeated, 0}}, 3);
        must(14, nullptr, request, directory_ + '/' + name, 0);
    }
    void open(size_t file, const std::string &name) {
        must(0, &positions_[file], std::string(), directory_ + '/' + name, 0);
    }
    void close(size_t file) { must(1, &positions_[file], {}, "", 0); }
    void insert(size_t file, uint32_t first, uint32_t count) {
        for (uint32_t number = first; number < first + count; ++number)
            must(2, &positions_[file], littleEndian(number, 4) + std::string(28, char('a' + number % 26)), "",
                 -1);
    }
    void append(size_t file, size_t length) {
        std::string bytes(length, 'x');
        const char *address = bytes.data();
        std::string request = littleEndian(0xA0000001, 4) + littleEndian(1, 4) + littleEndian(0, 4) +
                              littleEndian(length, 4) + std::string(sizeof address, '\0');
        memcpy(request.data() + 16, &address, sizeof address);
        must(53, &positions_[file], request, "", -1);
    }
    void setOwner(int32_t mode) {
        std::string name = std::string(imageOwner) + '\0';
        must(29, &positions_[0], name, name, mode);
    }
    void count() {
        for (int32_t order : {0, -1})
            must(44, &positions_[0], littleEndian(5000, 4) + std::string(28, '\0'), "", order);
    }
    void begin() { must(1019, nullptr, {}, "", 0); }
    void end() { must(20, nullptr, {}, "", 0); }

  private:
    void must(uint32_t operation, Client::PositionBlock *position, std::string data, const std::string &key,
              int32_t keyNumber) {
        require(client_.call(operation, position, &data, key, keyNumber) == 0, "a call that makes an image");
    }

    std::string directory_;
    Client client_{200};
    Client::PositionBlock positions_[2]{};
};

// The commit is decided, and then the log of the file cannot grow.
void leaveCommitPending(Maker &maker) {
    maker.create("file", variableLength);
    maker.create("other", 0);
    maker.open(0, "file");
    maker.open(1, "other");
    for (uint32_t record = 1; record < 30; ++record)
        maker.insert(0, record, 1);
    signal(SIGXFSZ, SIG_IGN);
    maker.begin();
    maker.insert(1, 1, 3);
    maker.insert(0, 100, 3);
    rlimit limit{400 * 1024, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    maker.end();
}

FileImage make(const std::string &directory, const std::string &name, bool isClosed,
               const std::function<void(Maker &)> &work) {
    pid_t child = test::forkWhileQuiet([&] {
        Maker maker(directory);
        work(maker);
        if (isClosed)
            maker.close(0);
        return 0;
    });
    int status = -1;
    require(waitpid(child, &status, 0) == child && status == 0, "the making of an image");
    std::string file = directory + "/file", other = directory + "/other";
    FileImage image{name,           readAll(file),          readAll(file + "-wal"), readAll(file + "-commit"),
                    readAll(other), readAll(other + "-wal")};
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        std::filesystem::remove(entry.path());
    return image;
}

std::function<void(Maker &)> simple(uint16_t flags, uint32_t records) {
    return [=](Maker &maker) {
        maker.create("file", flags);
        maker.open(0, "file");
        maker.insert(0, 1, records);
    };
}

}  // namespace

std::vector<FileImage> makeImages(const std::string &directory) {
    auto withLong = [](Maker &maker) {
        simple(variableLength, 3)(maker);
        maker.append(0, 150000);
    };
    auto withOwner = [](int32_t mode) {
        return [mode](Maker &maker) {
            simple(0, 5)(maker);
            maker.setOwner(mode);
        };
    };
    auto counted = [](Maker &maker) {
        simple(systemData, 600)(maker);
        maker.count();
    };
    std::vector<FileImage> images = {make(directory, "plain", true, simple(0, 20)),
                                     make(directory, "long", true, withLong),
                                     make(directory, "key-only", true, simple(keyOnlyFlag, 20)),
                                     make(directory, "counted", true, counted),
                                     make(directory, "owner", true, withOwner(1)),
                                     make(directory, "encrypted", true, withOwner(2)),
                                     make(directory, "log", false, simple(variableLength, 5)),
                                     make(directory, "pending", false, leaveCommitPending)};
    require(!images.back().pointer.empty() && !images[6].log.empty(), "what stands beside an image");
    return images;
}

void placeImage(const FileImage &image, const std::string &directory) {
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        std::filesystem::remove_all(entry.path());
    struct {
        const char *name;
        const std::string &content;
    } files[] = {{"/file", image.file},
                 {"/file-wal", image.log},
                 {"/file-commit", image.pointer},
                 {"/other", image.other},
                 {"/other-wal", image.otherLog}};
    for (const auto &[name, content] : files) {
        if (!content.empty() || strcmp(name, "/file") == 0)
            writeAll(directory + name, content);
    }
}

}  // namespace vantrel::fuzz
