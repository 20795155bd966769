#include "load/CutFiles.h"

#include "common/HostExtras.h"
#include "common/Limits.h"
#include "common/MemoryPicture.h"
#include "common/Reasons.h"
#include "load/LibraryErrors.h"
#include "load/OpenInput.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Devices {

namespace {

using Common::ByteSource;
using Common::Failure;

/// The bytes that a file has to have, and its rows where they lie one after another.
struct Promise {
    std::uint64_t bytes = 0;
    std::uint64_t pixelsBegin = 0;
    std::uint64_t rowBytes = 0;  ///< 0: it is not known where the rows are
    std::int32_t rows = 0;
};

Promise PromiseOfRows(std::uint64_t begin, std::uint64_t rowBytes, std::uint64_t rows) {
    constexpr std::uint64_t kMaxRows = 1U << 24U;
    if (rows > kMaxRows) return {};
    const auto pixels = Common::Product<std::uint64_t>(rowBytes, rows);
    return {Common::Sum<std::uint64_t>(begin, pixels), begin, rowBytes, static_cast<std::int32_t>(rows)};
}

/// The uncompressed kinds; of others the length is not known beforehand.
std::optional<Promise> BmpPromise(ByteSource& file) {
    constexpr std::size_t kHeaderBytes = 54;
    constexpr std::uint64_t kRowUnit = 32;
    const auto head = file.BytesAt<kHeaderBytes>(0);
    if (!head) return std::nullopt;
    const bool isPlain =
        Common::LittleAt<std::uint32_t, 30>(*head) == 0 && Common::LittleAt<std::uint32_t, 14>(*head) >= 40;
    const std::int64_t width = Common::LittleAt<std::int32_t, 18>(*head);
    const std::int64_t rows = std::abs(std::int64_t{Common::LittleAt<std::int32_t, 22>(*head)});
    if (!isPlain || width < 1) return std::nullopt;
    const std::uint64_t bits = static_cast<std::uint64_t>(width) * Common::LittleAt<std::uint16_t, 28>(*head);
    return PromiseOfRows(Common::LittleAt<std::uint32_t, 10>(*head), (bits + kRowUnit - 1) / kRowUnit * 4,
                         static_cast<std::uint64_t>(rows));
}

/// Of the kinds without runs (Truevision TGA 2.0: the header is 18 bytes).
std::optional<Promise> TargaPromise(ByteSource& file) {
    constexpr std::size_t kHeaderBytes = 18;
    constexpr unsigned kFirstPlain = 1, kLastPlain = 3, kMaxBits = 32, kBits = 8;
    const auto head = file.BytesAt<kHeaderBytes>(0);
    if (!head) return std::nullopt;
    const unsigned kind = (*head)[2], mapKind = (*head)[1], bits = (*head)[16];
    const std::uint64_t width = Common::LittleAt<std::uint16_t, 12>(*head);
    const std::uint64_t rows = Common::LittleAt<std::uint16_t, 14>(*head);
    const bool isKnown = kind >= kFirstPlain && kind <= kLastPlain && mapKind <= 1 && width > 0 && rows > 0 &&
                         (bits % kBits == 0 || bits == 15) && bits > 0 && bits <= kMaxBits;
    if (!isKnown) return std::nullopt;
    const std::uint64_t map = std::uint64_t{Common::LittleAt<std::uint16_t, 5>(*head)} * (((*head)[7] + 7U) / kBits);
    const std::uint64_t begin = kHeaderBytes + (*head)[0] + (mapKind == 1 ? map : 0);
    return PromiseOfRows(begin, width * ((bits + 7) / kBits), rows);
}

/// RIFF: the size of all behind the first eight bytes.
std::optional<Promise> WebpPromise(ByteSource& file) {
    const auto head = file.BytesAt<8>(0);
    constexpr std::array<unsigned char, 4> kMark = {'R', 'I', 'F', 'F'};
    if (!head || !std::ranges::equal(std::span(*head).first<kMark.size()>(), kMark)) return std::nullopt;
    return Promise{.bytes = std::uint64_t{8} + Common::LittleAt<std::uint32_t, 4>(*head)};
}

/// EA IFF 85: the same with the high byte first.
std::optional<Promise> IffPromise(ByteSource& file) {
    const auto head = file.BytesAt<8>(0);
    if (!head) return std::nullopt;
    return Promise{.bytes = std::uint64_t{8} + Common::BigAt<std::uint32_t, 4>(*head)};
}

/// SMPTE 268M: the header names the length of the file.
std::optional<Promise> DpxPromise(ByteSource& file) {
    const auto head = file.BytesAt<20>(0);
    if (!head) return std::nullopt;
    const bool isBig = (*head)[0] == 'S';
    const auto bytes = isBig ? Common::BigAt<std::uint32_t, 16>(*head) : Common::LittleAt<std::uint32_t, 16>(*head);
    constexpr std::uint32_t kUndefined = 0xFFFFFFFF;
    return bytes == kUndefined ? std::nullopt : std::optional(Promise{.bytes = bytes});
}

/// Moves behind the attributes of an OpenEXR header; false where they are none.
bool SkipExrHeader(ByteSource& file) {
    constexpr std::size_t kMaxName = 256;
    const auto name = [&]() -> std::optional<std::size_t> {
        for (std::size_t length = 0; length < kMaxName; ++length) {
            const auto byte = file.Little<std::uint8_t>();
            if (!byte) return std::nullopt;
            if (*byte == 0) return length;
        }
        return std::nullopt;
    };
    for (;;) {
        const auto attribute = name();
        if (!attribute) return false;
        if (*attribute == 0) return true;
        const auto type = name();
        const auto bytes = file.Little<std::uint32_t>();
        if (!type || !bytes || !file.Skip(*bytes)) return false;
    }
}

/// Where the last chunk of an OpenEXR file of one part ends. The table of where the chunks are ends where the first of
/// them begins; one that was never written is at 0.
std::optional<Promise> ExrPromise(ByteSource& file) {
    constexpr std::uint32_t kTiled = 0x200, kDeepOrParts = 0x1800;
    constexpr std::uint64_t kScanlineHead = 4, kTileHead = 16, kHeadBytes = 8;
    constexpr int kMaxChunks = 1 << 20;
    const auto head = file.BytesAt<kHeadBytes>(0);
    if (!head || !SkipExrHeader(file)) return std::nullopt;
    const auto flags = Common::LittleAt<std::uint32_t, 4>(*head);
    if ((flags & kDeepOrParts) != 0) return std::nullopt;
    std::uint64_t first = file.Size(), last = 0;
    for (int i = 0; i < kMaxChunks && file.Position() < first; ++i) {
        const auto offset = file.Little<std::uint64_t>();
        if (!offset || *offset >= file.Size() || *offset < kHeadBytes) return Promise{.bytes = file.Size() + 1};
        first = std::min(first, *offset);
        last = std::max(last, *offset);
    }
    const std::uint64_t at = last + ((flags & kTiled) != 0 ? kTileHead : kScanlineHead);
    const auto size = file.Seek(std::min(at, file.Size())).and_then([&] { return file.Little<std::uint32_t>(); });
    return Promise{.bytes = size ? at + sizeof(std::uint32_t) + *size : file.Size() + 1};
}

struct Format {
    std::string_view name;
    std::optional<Promise> (*promise)(ByteSource& file);
};

constexpr auto kFormats = std::to_array<Format>({{"bmp", BmpPromise},
                                                 {"targa", TargaPromise},
                                                 {"webp", WebpPromise},
                                                 {"iff", IffPromise},
                                                 {"dpx", DpxPromise},
                                                 {"openexr", ExrPromise}});

/// What a file promises beyond what it has.
std::optional<Promise> BrokenPromise(ByteSource& file, std::string_view format) {
    const auto* const found = std::ranges::find(kFormats, format, &Format::name);
    if (found == kFormats.end()) return std::nullopt;
    const std::optional<Promise> promise = found->promise(file);
    return promise && promise->bytes > file.Size() ? promise : std::nullopt;
}

Failure CutAtEnd(const ByteSource& file) {
    return {Failure::kTruncated, static_cast<std::int64_t>(file.Size())};
}

/// Whether the library can read some rows, and has nothing to say of them.
bool AreGood(OIIO::ImageInput& input, SubimageRows& rows, int top, int count, std::vector<unsigned char>& out) {
    const bool done = rows.Read(top, count, out.data());
    return done && !input.has_error();
}

/// The rows, from the first on, that the library reads without fault from the file as it opens it anew.
std::optional<int> CountGoodRows(const TextureLoad& load) {
    const OIIO::ImageSpec& spec = load.fileSpec;
    if (load.IsDds() || load.slice >= 0 || spec.depth > 1) return std::nullopt;
    const auto input = OpenInput(load.path);
    if (!input || !input->seek_subimage(load.Subimage(), load.level)) return std::nullopt;
    const OIIO::ImageSpec& same = input->spec();
    if (same.width != spec.width || same.height != spec.height || same.nchannels != spec.nchannels) return std::nullopt;
    const std::size_t pixelBytes = spec.pixel_bytes(false);
    SubimageRows rows(*input, spec, load.Subimage(), load.level, spec.nchannels, spec.format, pixelBytes);
    const int together = rows.DecodedTogether();
    std::vector<unsigned char> out(pixelBytes * static_cast<std::size_t>(spec.width) *
                                   static_cast<std::size_t>(std::min(together, spec.height)));
    int good = 0;
    for (int count = 0; good < spec.height; good += count) {
        count = std::min(together, spec.height - good);
        if (!AreGood(*input, rows, good, count, out)) break;
    }
    // The blocks of an OpenEXR file are lower than what is best read at a time.
    const bool isExr = OIIO::string_view(input->format_name()) == "openexr" && spec.tile_width == 0;
    (void)input->geterror();
    while (isExr && together > 1 && good < spec.height && AreGood(*input, rows, good, 1, out))
        ++good;
    return good;
}

/// The same where no memory for it is no reason to fail in another way.
void AddGoodRows(const TextureLoad& load, Failure& failure) noexcept {
    if (!Common::HostTakesFailures()) return;
    try {
        const std::optional<int> good = CountGoodRows(load);
        if (!good) return;
        failure.goodRows = *good;
        failure.rows = load.fileSpec.height;
    } catch (...) {
        failure.rows = load.fileSpec.height;
    }
}

}  // namespace

bool SpeaksOfTheEnd(std::string_view errors) {
    const std::string lower = OIIO::Strutil::lower(errors);
    const auto isIn = [&](std::string_view word) { return lower.find(word) != std::string::npos; };
    constexpr auto kWords = std::to_array<std::string_view>({"premature", "truncated", "end of file", "end-of-file",
                                                             "hit end", "eof", "early end", "past the end",
                                                             "bytes, expected", "read error on scanline", "asked for"});
    return std::ranges::any_of(kWords, isIn);
}

bool PromisesMore(ByteSource& file, std::string_view format) {
    return BrokenPromise(file, format).has_value();
}

bool SayIfCut(ByteSource& file, std::string_view format) noexcept {
    const std::optional<Promise> promise = BrokenPromise(file, format);
    if (!promise) return false;
    Failure failure = CutAtEnd(file);
    if (promise->rowBytes > 0) {
        const std::uint64_t pixels = file.Size() - std::min(file.Size(), promise->pixelsBegin);
        failure.rows = promise->rows;
        failure.goodRows =
            static_cast<std::int32_t>(std::min(pixels / promise->rowBytes, static_cast<std::uint64_t>(promise->rows)));
    }
    Common::Say(failure);
    return true;
}

void SayOfUnreadPixels(const TextureLoad& load, ByteSource& file) noexcept {
    if (Common::HostsFailure().kind != kFailureNone) return;
    try {
        const std::string_view format = load.input->format_name();
        if (const auto promise = BrokenPromise(file, format); promise && promise->rowBytes > 0)
            return (void)SayIfCut(file, format);
        const Common::MemoryPicture* const picture = Common::MemoryPicture::Current();
        const bool hasRunOut = picture != nullptr && load.errors.empty() && picture->WasReadPastItsEnd();
        if (!hasRunOut && !PromisesMore(file, format) && !SpeaksOfTheEnd(load.errors)) {
            SayLibraryError(load.errors, {}, kFailureDamaged);
            return Common::Say(kFailureDamaged, "damaged: its pixels cannot be decoded");
        }
        Failure failure = CutAtEnd(file);
        AddGoodRows(load, failure);
        Common::ClearFailure();  // what was said while the rows were counted
        Common::Say(failure);
    } catch (...) {
        Common::SayCaught();
    }
}

void SayOfPartialPicture(const TextureLoad& load, ByteSource& file) noexcept {
    Failure failure = CutAtEnd(file);
    AddGoodRows(load, failure);
    Common::ClearFailure();  // what was said on the way to an answer
    Common::Say(failure);
}

}  // namespace Kavra::Devices
