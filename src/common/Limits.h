/// How large a picture may be, and the arithmetic that sizes from files need.
#pragma once

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <type_traits>

namespace Kavra::Common {

/// A sum or product that stops at the largest number of its type instead of wrapping around. Neither number is
/// negative.
template <std::integral T = std::int64_t>
constexpr T Sum(std::type_identity_t<T> a, std::type_identity_t<T> b) {
    constexpr T kMax = std::numeric_limits<T>::max();
    return a > kMax - b ? kMax : static_cast<T>(a + b);
}

template <std::integral T = std::int64_t>
constexpr T Product(std::type_identity_t<T> a, std::type_identity_t<T> b) {
    constexpr T kMax = std::numeric_limits<T>::max();
    return b != 0 && a > kMax / b ? kMax : static_cast<T>(a * b);
}

/// Whether a file has `bytesEach` bytes for each of `parts` parts, as its format demands: the ratio between a file and
/// the picture that it may mean. Only formats in which a part cannot be left out have one.
constexpr bool CanHold(std::uint64_t fileBytes, std::uint64_t parts, std::uint64_t bytesEach) {
    return Product<std::uint64_t>(parts, bytesEach) <= fileBytes;
}

/// Columns or rows of a picture of a legacy format.
inline constexpr int kMaxSide = 1'000'000;

/// What a load takes.
struct PictureSize {
    std::uint64_t pixels = 0;
    std::uint64_t blockBytes = 0;
    std::uint64_t workingBytes = 0;  ///< beside the block, while it is decoded
};

/// What a load may take. No bound is the largest number.
struct PictureBounds {
    static constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t pixels = kNone;
    std::uint64_t bytes = kNone;       ///< of the block and what is needed beside it
    std::uint64_t blockBytes = kNone;  ///< of the block alone

    /// The same, and says by how much a picture is too large (`Say`).
    bool HoldOrSay(const PictureSize& size) const noexcept;

    constexpr bool Hold(const PictureSize& size) const {
        return size.pixels <= pixels && size.blockBytes <= blockBytes &&
               Sum<std::uint64_t>(size.blockBytes, size.workingBytes) <= bytes;
    }
};

/// The bytes of a picture whose size a few bytes of a file can claim, unless the host has set a bound of its own.
inline constexpr std::uint64_t kDefaultMaxBytes = std::uint64_t{2} << 30;
/// The pixels of such a picture, which it may have where it is read row by row and never held whole: they take time.
inline constexpr std::uint64_t kDefaultMaxPixels = 4'000'000'000;

/// What the host has set (`SetImageLimits`), which binds every picture; no bounds where it has set nothing or knows of
/// no such thing.
PictureBounds HostBounds();

/// For pictures whose size a few bytes can claim: what the host has set, or else `kDefaultMaxBytes` and
/// `kDefaultMaxPixels`; in any case no more than `MemoryShare`, nor a block larger than the allocator gives.
PictureBounds ReaderBounds();

/// Half of the memory of the machine, or of the control group of this process where that has less. As of the first
/// call.
std::uint64_t MemoryShare();

/// The memory that its control groups leave this process, in bytes, as the files below `root` have it, which is "/" of
/// a running system. Nothing where they set no bound that can be read.
std::optional<std::uint64_t> ControlGroupMemory(const std::filesystem::path& root);

}  // namespace Kavra::Common
