#include "output/LibraryWriters.h"

#include "common/FileHandle.h"

#include <kavra/objects/OS.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace Kavra::Devices {

namespace {

bool Is(const OIIO::ImageOutput& writer, std::string_view format) {
    return format == writer.format_name();
}

bool IsBareCodestream(const KString& path) {
    return path.Right(4).CompareNoCase(L".j2c") == 0;
}

Common::FileHandle OpenToRead(const KString& path) {
    std::FILE* file = nullptr;
    (void)OS::wfopen(&file, path, L"rb");
    return Common::FileHandle(file);
}

/// The samples of a FITS file are stored as they are, after its header.
bool HoldsRawSamples(const KString& path, OIIO::imagesize_t bytes) {
    const Common::FileHandle file = OpenToRead(path);
    return file && Common::FileLength(file.get()).value_or(0) > bytes;
}

/// A codestream ends with a marker of its own (ISO/IEC 15444-1, A.4.4).
bool HasEndOfCodestream(const KString& path) {
    constexpr std::array<unsigned char, 2> kEnd = {0xFF, 0xD9};
    std::array<unsigned char, 2> tail{};
    const Common::FileHandle file = OpenToRead(path);
    return file && fseeko(file.get(), -2, SEEK_END) == 0 &&
           std::fread(tail.data(), 1, tail.size(), file.get()) == tail.size() && tail == kEnd;
}

/// An icon's directory, after six bytes of header, says the size and place of its picture in its last eight bytes.
bool HoldsIcon(const KString& path) {
    std::array<unsigned char, 22> start{};
    const Common::FileHandle file = OpenToRead(path);
    if (!file || std::fread(start.data(), 1, start.size(), file.get()) != start.size()) return false;
    const auto number = [&](std::size_t at) {
        return std::uint64_t{start[at]} | std::uint64_t{start[at + 1]} << 8 | std::uint64_t{start[at + 2]} << 16 |
               std::uint64_t{start[at + 3]} << 24;
    };
    return Common::FileLength(file.get()).value_or(0) >= number(14) + number(18);
}

/// Small pictures become a file without a picture, ".jph" files are always empty, and bare codestreams need colours.
bool MishandlesJpeg2000(const OIIO::ImageSpec& spec, const KString& path) {
    return spec.width < 32 || spec.height < 32 || path.Right(4).CompareNoCase(L".jph") == 0 ||
           (IsBareCodestream(path) && spec.nchannels < 3);
}

}  // namespace

bool Mishandles(const OIIO::ImageOutput& writer, const OIIO::ImageSpec& spec, const KString& path) {
    if (Is(writer, "term")) return true;  // prints to the terminal
    if (Is(writer, "dpx")) return spec.nchannels == 2 || spec.nchannels > 4;
    if (Is(writer, "jpegxl")) return spec.nchannels == 2;
    if (Is(writer, "jpeg2000")) return MishandlesJpeg2000(spec, path);
    return false;
}

bool WantsFloatsForHalves(const OIIO::ImageOutput& writer) {
    return Is(writer, "fits") || Is(writer, "pnm") || Is(writer, "rla");
}

bool WritesThroughProxy(const OIIO::ImageOutput& writer, const KString& path) {
    return writer.supports("ioproxy") != 0 && !(Is(writer, "jpeg2000") && IsBareCodestream(path));
}

bool WantsStream(const OIIO::ImageOutput& writer) {
    return Is(writer, "jpeg");
}

bool IsWhole(const OIIO::ImageOutput& writer, OIIO::imagesize_t bytes, const KString& path) {
    if (Is(writer, "fits")) return HoldsRawSamples(path, bytes);
    if (Is(writer, "ico")) return HoldsIcon(path);
    if (Is(writer, "jpeg2000")) return HasEndOfCodestream(path);
    return true;
}

}  // namespace Kavra::Devices
