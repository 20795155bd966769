/// Runs a fuzz target over files, where there is no fuzzer: the corpus, and every input that ever broke something.
///
/// Usage: TARGET FILE|FOLDER... - exit 1 when one of them is missing or a folder holds no file.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

/// The file itself, or all files below a folder in the order of their names. Empty when there is none.
std::vector<fs::path> FilesOf(const fs::path& place) {
    if (fs::is_regular_file(place)) return {place};
    std::vector<fs::path> files;
    if (!fs::is_directory(place)) return files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

bool RunFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return false;
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream), {}};
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

/// The number of inputs run; nothing when the place holds none or one cannot be read.
std::optional<std::size_t> RunPlace(const fs::path& place) {
    const std::vector<fs::path> files = FilesOf(place);
    if (files.empty() || !std::ranges::all_of(files, RunFile)) return std::nullopt;
    return files.size();
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    bool complete = count > 1;
    for (int i = 1; i < count; ++i) {
        try {
            const std::optional<std::size_t> inputs = RunPlace(arguments[i]);
            replayed += inputs.value_or(0);
            if (inputs) continue;
            std::fprintf(stderr, "%s: no inputs\n", arguments[i]);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", arguments[i], error.what());
        }
        complete = false;
    }
    std::printf("%zu inputs replayed\n", replayed);
    return complete ? 0 : 1;
}
