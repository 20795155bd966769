#include "common/Limits.h"

#include "common/HostExtras.h"
#include "common/Reasons.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace Kavra::Common {

namespace {

namespace fs = std::filesystem;

/// A bound of 0 is none.
std::uint64_t OrNone(std::uint64_t bound) {
    return bound == 0 ? PictureBounds::kNone : bound;
}

PictureBounds Bounds(const Devices::ImageLimits& limits) {
    return {.pixels = OrNone(limits.maxPixels), .bytes = OrNone(limits.maxBytes)};
}

std::uint64_t MachineMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages < 1 || pageBytes < 1) return PictureBounds::kNone;
    return Product<std::uint64_t>(static_cast<std::uint64_t>(pages), static_cast<std::uint64_t>(pageBytes));
}

/// The number that a file begins with; the largest where there is no such file, or a word in it ("max").
std::uint64_t BoundIn(const fs::path& file) {
    std::ifstream stream(file);
    std::string text;
    std::uint64_t bound = 0;
    if (!(stream >> text)) return PictureBounds::kNone;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bound);
    return error == std::errc() && end == text.data() + text.size() ? OrNone(bound) : PictureBounds::kNone;
}

/// The least bound of a group and those that it is part of. Inside a container the path may be that of the machine
/// outside, where there are no such folders; the group itself is then what is mounted as the root of all.
std::uint64_t LeastBound(const fs::path& mount, fs::path group, const char* file) {
    group = group.relative_path();
    std::uint64_t least = BoundIn(mount / file);
    for (; !group.empty(); group = group.parent_path())
        least = std::min(least, BoundIn(mount / group / file));
    return least;
}

/// Whether a list of names with commas between them has this one.
bool Lists(std::string_view names, std::string_view name) {
    while (!names.empty()) {
        const std::size_t comma = std::min(names.find(','), names.size());
        if (names.substr(0, comma) == name) return true;
        names.remove_prefix(std::min(comma + 1, names.size()));
    }
    return false;
}

}  // namespace

bool PictureBounds::HoldOrSay(const PictureSize& size) const noexcept {
    if (Hold(size)) return true;
    const std::uint64_t needed = Sum<std::uint64_t>(size.blockBytes, size.workingBytes);
    if (size.pixels > pixels) {
        Say(Devices::kFailureTooLarge, "the picture has {} pixels, and the limit is {}", size.pixels, pixels);
    } else if (size.blockBytes > blockBytes) {
        Say(Devices::kFailureTooLarge, "the picture takes {} bytes, and a block of memory holds {}", size.blockBytes,
            blockBytes);
    } else {
        Say(Devices::kFailureTooLarge, "the picture takes {} bytes, and the limit is {}", needed, bytes);
    }
    return false;
}

PictureBounds HostBounds() {
    return Bounds(HostImageLimits());
}

PictureBounds ReaderBounds() {
    Devices::ImageLimits limits = HostImageLimits();
    if (limits.maxBytes == 0 && limits.maxPixels == 0) {
        limits.maxBytes = kDefaultMaxBytes;
        limits.maxPixels = kDefaultMaxPixels;
    }
    PictureBounds bounds = Bounds(limits);
    bounds.bytes = std::min(bounds.bytes, MemoryShare());
    bounds.blockBytes = HostBlockCeiling();
    return bounds;
}

std::uint64_t MemoryShare() {
    static const std::uint64_t share =
        std::min(MachineMemory(), ControlGroupMemory("/").value_or(PictureBounds::kNone)) / 2;
    return share;
}

/// Each line is a number, the controllers of a hierarchy and the group in it, with colons between them. The unified
/// hierarchy names no controllers.
std::optional<std::uint64_t> ControlGroupMemory(const fs::path& root) {
    const fs::path mounts = root / "sys/fs/cgroup";
    std::uint64_t least = PictureBounds::kNone;
    std::ifstream groups(root / "proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = first == line.npos ? line.npos : line.find(':', first + 1);
        if (second == line.npos) continue;
        const std::string_view controllers = std::string_view(line).substr(first + 1, second - first - 1);
        const fs::path group = line.substr(second + 1);
        if (controllers.empty()) least = std::min(least, LeastBound(mounts, group, "memory.max"));
        if (Lists(controllers, "memory")) {
            least = std::min(least, LeastBound(mounts / "memory", group, "memory.limit_in_bytes"));
        }
    }
    return least == PictureBounds::kNone ? std::nullopt : std::optional(least);
}

}  // namespace Kavra::Common
