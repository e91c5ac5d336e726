#ifndef VANTREL_FUZZ_FILE_IMAGES_H
#define VANTREL_FUZZ_FILE_IMAGES_H

#include <string>
#include <vector>

namespace vantrel::fuzz {

// A file as it stands on disk, with what stands beside it.
struct FileImage {
    std::string name;  // of the kind
    std::string file;
    std::string log;      // none where it is empty
    std::string pointer;  // to the other file, which decided a commit that this one still lacks its part of
    std::string other, otherLog;
};

// The name that opens those that have an owner.
inline constexpr const char *imageOwner = "keeper";

// One of each kind: plain, with long records, key-only, with system data, with an owner, encrypted, with a
// log and with a pending commit. They are made in the directory, and by processes of their own that do not
// close them, so that the logs stay.
std::vector<FileImage> makeImages(const std::string &directory);

// Puts the files into the directory that the image was made in, as "file" and "other".
void placeImage(const FileImage &image, const std::string &directory);

}  // namespace vantrel::fuzz

#endif
