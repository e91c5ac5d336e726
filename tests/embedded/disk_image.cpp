#include "embedded/disk_image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace vantrel::test {

namespace {

struct stat statusOf(int descriptor) {
    struct stat status = {};
    EXPECT_EQ(fstat(descriptor, &status), 0);
    return status;
}

std::string bytesOf(int descriptor) {
    std::string bytes(static_cast<size_t>(statusOf(descriptor).st_size), '\0');
    EXPECT_EQ(pread(descriptor, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    return bytes;
}

}  // namespace

DiskImage::DiskImage(std::string directory) : directory_(std::move(directory)) {
    names_ = namesNow();
    for (const auto &[name, inode] : names_) {
        std::ifstream file(directory_ + '/' + name, std::ios::binary);
        synced_[inode].assign(std::istreambuf_iterator<char>(file), {});
    }
}

DiskImage::Names DiskImage::namesNow() const {
    Names names;
    for (const auto &entry : std::filesystem::directory_iterator(directory_)) {
        struct stat status = {};
        EXPECT_EQ(stat(entry.path().c_str(), &status), 0);
        names[entry.path().filename().string()] = status.st_ino;
    }
    return names;
}

void DiskImage::note(const SystemCall &call) {
    if (call.descriptor < 0)
        return;
    struct stat status = statusOf(call.descriptor);
    auto offset = static_cast<size_t>(call.offset);
    if (call.name == "fsync" && S_ISDIR(status.st_mode)) {
        names_ = namesNow();
    } else if (call.name == "fsync") {
        synced_[status.st_ino] = bytesOf(call.descriptor);
        pending_[status.st_ino].clear();
    } else if (call.name == "write") {
        pending_[status.st_ino].push_back({offset, std::string(call.bytes), false});
    } else if (call.name == "ftruncate") {
        pending_[status.st_ino].push_back({offset, {}, true});
    }
}

// Of what is pending, a part reaches the disk, in any order; the names all or not at all.
void DiskImage::writeTo(const std::string &target, uint32_t seed) const {
    std::mt19937 random(seed);
    Names names = seed != 0 && random() % 2 == 0 ? namesNow() : names_;
    for (const auto &[name, inode] : names) {
        auto synced = synced_.find(inode);
        std::string bytes = synced == synced_.end() ? "" : synced->second;
        auto pending = pending_.find(inode);
        std::vector<Change> changes =
            seed == 0 || pending == pending_.end() ? std::vector<Change>() : pending->second;
        std::shuffle(changes.begin(), changes.end(), random);
        changes.resize(changes.empty() ? 0 : random() % (changes.size() + 1));
        for (const Change &change : changes) {
            bytes.resize(change.truncates ? change.offset
                                          : std::max(bytes.size(), change.offset + change.bytes.size()));
            std::copy(change.bytes.begin(), change.bytes.end(),
                      bytes.begin() + static_cast<ptrdiff_t>(change.offset));
        }
        std::ofstream(target + '/' + name, std::ios::binary) << bytes;
    }
}

}  // namespace vantrel::test
