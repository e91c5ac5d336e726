// Runs the fuzz target once on every file of a folder, without a fuzzer. Usage: reply_replay FOLDER
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: reply_replay FOLDER\n");
        return 2;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::vector<char> text{std::istreambuf_iterator<char>(file), {}};
        std::vector<uint8_t> bytes(text.begin(), text.end());
        // Named first, so that the last name printed is the one that failed.
        printf("%s\n", entry.path().filename().c_str());
        fflush(stdout);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++count;
    }
    printf("%d inputs\n", count);
    return count == 0;
}
