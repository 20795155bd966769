/// An open C stream that closes itself.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace Kavra::Common {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// The length of an open file in bytes; the position is at its end afterwards. Nothing when it cannot be told.
inline std::optional<std::uint64_t> FileLength(std::FILE* file) {
    if (fseeko(file, 0, SEEK_END) != 0) return std::nullopt;
    const off_t length = ftello(file);
    if (length < 0) return std::nullopt;
    return static_cast<std::uint64_t>(length);
}

}  // namespace Kavra::Common
