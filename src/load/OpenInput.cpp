#include "load/OpenInput.h"

#include <kavra/objects/OS.h>

#include "common/FileHandle.h"
#include "common/RegularFile.h"
#include "common/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace Kavra::Devices {

namespace {

// JPEG 2000 (ISO/IEC 15444-1, annexes A and I) with the high-throughput coder (15444-15).
constexpr std::array<std::uint8_t, 4> kCodestreamStart = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::array<std::uint8_t, 4> kBoxSignature = {'j', 'P', ' ', ' '};
constexpr std::array<std::uint8_t, 2> kHighThroughput = {0xFF, 0x50};
constexpr std::array<std::uint8_t, 2> kTileStart = {0xFF, 0x90};
constexpr std::array<std::uint8_t, 2> kCodestreamEnd = {0xFF, 0xD9};

bool IsHighThroughputJpeg2000(std::span<const std::uint8_t> start) {
    if (start.size() < 8) return false;
    const bool isJpeg2000 =
        std::ranges::equal(start.first(4), kCodestreamStart) || std::ranges::equal(start.subspan(4, 4), kBoxSignature);
    const auto header = std::span(start.begin(), std::ranges::search(start, kTileStart).begin());
    return isJpeg2000 && !std::ranges::search(header, kHighThroughput).empty();
}

/// Whether the file is one over which the library's decoder would end the process: it runs past the end of a
/// high-throughput JPEG 2000 file that was cut short.
bool WouldCrashTheLibrary(const KString& path) {
    std::FILE* opened = nullptr;
    if (OS::wfopen(&opened, path.ToChars(), L"rb") != 0) return false;
    const Common::FileHandle file(opened);
    std::array<std::uint8_t, 1024> start{};
    const std::size_t count = std::fread(start.data(), 1, start.size(), file.get());
    if (!IsHighThroughputJpeg2000(std::span(start).first(count))) return false;
    std::array<std::uint8_t, 2> end{};
    return fseeko(file.get(), -2, SEEK_END) != 0 || std::fread(end.data(), 1, end.size(), file.get()) != end.size() ||
           end != kCodestreamEnd;
}

}  // namespace

std::unique_ptr<OIIO::ImageInput> OpenInput(const KString& path) {
    if (!Common::IsRegularFile(path.ToChars()) || WouldCrashTheLibrary(path)) return nullptr;
    // By its bytes: the library's own shortening of a wide name would lose those that are not UTF-8.
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(Common::ToUtf8(path.ToChars()), &config);
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    if (!input) (void)OIIO::geterror();
    return input;
}

}  // namespace Kavra::Devices
