#include "support/TemporaryFolder.h"

#include <kavra/objects/OS.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Kavra::Tests {

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kavra-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    mPath = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

std::filesystem::path TemporaryFolder::Write(std::string_view name, std::span<const unsigned char> bytes) const {
    const std::filesystem::path path = mPath / name;
    std::ofstream stream(path, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw std::runtime_error("cannot write " + path.string());
    return path;
}

std::filesystem::path TemporaryFolder::Write(std::string_view name, std::string_view text) const {
    return Write(name, std::span(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
}

Objects::KString Wide(const std::filesystem::path& path) {
    return Objects::KString(OS::FromUtf8(path.c_str()).c_str());
}

std::vector<unsigned char> ReadAll(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(stream), {});
}

}  // namespace Kavra::Tests
