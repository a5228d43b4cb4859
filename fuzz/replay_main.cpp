// Without libFuzzer, a harness replays the inputs it is given (files, or
// every file of a folder), so a found crash stays a test of the suite.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace
{

void replay(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
    // A copy of exactly its size, so a read past the input is caught.
    const std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
}

} // namespace

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
                files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
        for (const auto &file : files) {
            replay(file);
            ++replayed;
        }
    }
    std::fprintf(stderr, "replayed %zu inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
