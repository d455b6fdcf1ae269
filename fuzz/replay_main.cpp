// Replays files (or every file of given folders) through the fuzz entry point,
// for builds without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {
void replay(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // Every format byte over the same payload.
    for (int format = 0; format < 9; ++format) {
        std::string input;
        input.push_back(static_cast<char>(format));
        input.push_back('\0');
        input += bytes;
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}
}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path arg = argv[i];
        if (std::filesystem::is_directory(arg)) {
            std::vector<std::filesystem::path> files;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(arg)) {
                if (entry.is_regular_file()) files.push_back(entry.path());
            }
            for (const auto& file : files) replay(file), ++count;
        } else {
            replay(arg), ++count;
        }
    }
    std::printf("replayed %zu file(s)\n", count);
    return 0;
}
