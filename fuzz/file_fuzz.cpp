// Opens arbitrary bytes as a file, reads all it can, and changes it. The first byte of the input says how
// it is opened, the second one chooses one of the files made beforehand; the rest damages the file, its log,
// or the pointer beside it, piece by piece. Or all of the rest is the file. Statuses that tell of a failure
// within the engine are findings as a crash is.
#include <cstdlib>

#include "engine_files.h"
#include "file_images.h"
#include "file_trial.h"
#include "input.h"

namespace vantrel::fuzz {

namespace {

constexpr size_t pageSize = 8192;
constexpr size_t mostOverwritten = 16;
constexpr int mostDamages = 64;

std::vector<FileImage> images;

enum Action : uint8_t { overwrite, fill, copyPage, cut, actionCount };

void damage(std::string &content, Input &input) {
    auto action = static_cast<Action>(input.number<uint8_t>() % actionCount);
    if (content.empty())
        return;
    size_t offset = input.number<uint32_t>() % content.size();
    size_t length = std::min<size_t>(1 + input.number<uint8_t>(), content.size() - offset);
    switch (action) {
        case overwrite:
            input.take(content.data() + offset, std::min(length, mostOverwritten));
            break;
        case fill:
            content.replace(offset, length, length, static_cast<char>(input.number<uint8_t>()));
            break;
        case copyPage: {
            size_t from = input.number<uint8_t>() * pageSize % content.size() / pageSize * pageSize;
            std::string page = content.substr(from, pageSize);
            size_t to = std::min(offset / pageSize * pageSize, content.size() - page.size());
            content.replace(to, page.size(), page);
            break;
        }
        default:
            content.resize(offset);
    }
}

FileImage imageFrom(Input &input) {
    size_t kind = input.number<uint8_t>() % (images.size() + 1);
    if (kind == images.size()) {
        std::string content(1 << 20, '\0');
        content.resize(input.take(content.data(), content.size()));
        return {"raw", content, {}, {}, {}, {}};
    }
    FileImage image = images[kind];
    std::string *contents[] = {&image.file,    &image.file,  &image.file,    &image.log,
                               &image.pointer, &image.other, &image.otherLog};
    for (int damages = 0; damages < mostDamages && !input.isEmpty(); ++damages)
        damage(*input.choose(contents), input);
    return image;
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    vantrel::fuzz::images = vantrel::fuzz::makeImages(vantrel::fuzz::workDirectory());
    atexit([] { vantrel::fuzz::removeWorkDirectory(); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace vantrel::fuzz;
    Input input(bytes, size);
    int32_t mode = -static_cast<int32_t>(input.number<uint8_t>() % 5);
    placeImage(imageFrom(input), workDirectory());
    Trial trial = tryFile(workDirectory() + "/file", mode, imageOwner);
    constexpr int32_t invalidOperation = 1, unforeseen = 19;
    require(trial.statuses.count(invalidOperation) == 0, "known operations");
    require(trial.statuses.count(unforeseen) == 0, "foreseen failures");
    return 0;
}
