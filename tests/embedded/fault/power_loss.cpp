#include <filesystem>
#include <mutex>
#include <sstream>

#include "embedded/commit/child_process.h"
#include "embedded/fault/disk_image.h"
#include "embedded/fault/run.h"

namespace vantrel::test {

namespace {

constexpr uint32_t variants = 3;

// Up to which step the work must have survived, and up to which it may have.
struct Bounds {
    size_t durable = 0, acknowledged = 0;
};

}  // namespace

// Leaves images of the disk below a directory, and tells the bounds of each.
std::string ScenarioRun::workWithImages(const std::string &target, size_t stride) const {
    std::ostringstream told;
    DiskImage image(files_.path());
    Bounds bounds;
    size_t calls = 0, images = 0;
    auto keep = [&] {
        for (uint32_t variant = 0; variant < variants; ++variant, ++images) {
            std::string left = target + '/' + std::to_string(images);
            std::filesystem::create_directory(left);
            image.writeTo(left, variant == 0 ? 0 : static_cast<uint32_t>(images));
            told << bounds.durable << ' ' << bounds.acknowledged << ' ';
        }
    };
    std::mutex mutex;
    auto watchCall = [&](const SystemCall &call) {
        std::lock_guard lock(mutex);
        if (!scenario_.isUnsafeUntilEnd && bounds.acknowledged < scenario_.work.size() &&
            calls++ % stride == 0)
            keep();
        image.note(call);
        return Fate::happens;
    };
    World world(files_.path());
    SystemCallWatch watch(files_.path(), watchCall),
        background(files_.path(), watchCall, SystemCallWatch::Threads::others);
    scenario_.begin(world);
    for (const Step &step : scenario_.work) {
        EXPECT_EQ(step.run(world), step.expected);
        std::lock_guard lock(mutex);
        ++bounds.acknowledged;
        if (step.isDurable)
            bounds.durable = bounds.acknowledged;
    }
    std::lock_guard lock(mutex);
    keep();
    return told.str();
}

std::string ScenarioRun::checkPowerLoss(size_t stride) {
    auto startWith = [this](const std::string &from) {
        for (const auto &entry : std::filesystem::directory_iterator(files_.path()))
            std::filesystem::remove_all(entry.path());
        std::filesystem::copy(from, files_.path());
    };
    TemporaryDirectory left;
    startWith(prepared_.path());
    std::istringstream told(ChildProcess::run([&] { return workWithImages(left.path(), stride); }));
    std::string problems;
    for (Bounds bounds; told >> bounds.durable >> bounds.acknowledged; ++images_) {
        startWith(left / std::to_string(images_));
        std::string found = findIn(files_.path()).contents;
        bool isAllowed = false;
        for (size_t step = bounds.durable; step <= bounds.acknowledged + 1 && step < foundAfterDeath_.size();
             ++step)
            isAllowed |= found == foundAfterDeath_[step].contents;
        if (!isAllowed)
            problems += "image " + std::to_string(images_) + " after step " +
                        std::to_string(bounds.acknowledged) + ": " + found.substr(0, 300) + '\n';
    }
    return problems;
}

}  // namespace vantrel::test
