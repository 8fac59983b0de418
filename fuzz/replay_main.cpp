// Replays a corpus folder through a fuzz entry: what a fuzzer found once is checked in every test run.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", argv[0]);
        return 2;
    }
    std::size_t inputs = 0;
    LLVMFuzzerTestOneInput(nullptr, 0);
    if (std::filesystem::is_directory(argv[1]))
        for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    std::printf("%zu inputs replayed\n", inputs);
    return 0;
}
