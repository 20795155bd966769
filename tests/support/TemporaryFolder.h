/// A folder of a test's own, gone when the test is.
#pragma once

#include <kavra/objects/KString.h>

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }
    std::filesystem::path operator/(std::string_view name) const { return mPath / name; }

    /// Writes a file into the folder and returns its path.
    std::filesystem::path Write(std::string_view name, std::span<const unsigned char> bytes) const;
    std::filesystem::path Write(std::string_view name, std::string_view text) const;

private:
    std::filesystem::path mPath;
};

/// A path as the host's string.
Objects::KString Wide(const std::filesystem::path& path);

/// All bytes of a file; empty when it cannot be read.
std::vector<unsigned char> ReadAll(const std::filesystem::path& path);

}  // namespace Kavra::Tests
