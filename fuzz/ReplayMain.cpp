// Runs a fuzz target's function over files: NAME_replay FILE|FOLDER... Each file is run whole and cut at a few lengths.
// Ends non-zero when no file was found, so that a test with a misspelled folder does not pass.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    for (const std::size_t divisor : {1U, 2U, 3U, 7U}) {
        const std::vector<std::uint8_t> cut(bytes.begin(),
                                            bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / divisor));
        LLVMFuzzerTestOneInput(cut.data(), cut.size());
    }
}

}  // namespace

int main(int count, char** arguments) {
    int files = 0;
    for (int i = 1; i < count; ++i) {
        if (std::filesystem::is_directory(arguments[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
                Replay(entry.path());
                ++files;
            }
        } else if (std::filesystem::exists(arguments[i])) {
            Replay(arguments[i]);
            ++files;
        }
    }
    std::printf("%d files replayed\n", files);
    return files > 0 ? 0 : 1;
}
