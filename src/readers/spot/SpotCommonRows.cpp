#include "readers/spot/SpotCommonRows.h"

#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "readers/SampleTables.h"
#include "readers/spot/SpotCommonHeader.h"
#include "readers/spot/SpotSamples.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;

// --- Rows ------------------------------------------------------------------------------------------------------------

namespace {

/// A row of pixels in the making: `channels` elements a pixel.
template <class Out>
struct Pixels {
    std::span<unsigned char> bytes;
    std::size_t channels;

    std::size_t Count() const { return bytes.size() / sizeof(Out) / channels; }
    void Set(std::size_t x, std::size_t channel, Out value) const {
        std::memcpy(bytes.data() + (x * channels + channel) * sizeof value, &value, sizeof value);
    }
    Out At(std::size_t x, std::size_t channel) const {
        Out value;
        std::memcpy(&value, bytes.data() + (x * channels + channel) * sizeof value, sizeof value);
        return value;
    }
};

template <class Out>
constexpr Out kOpaque = std::is_same_v<Out, float> ? Out{1} : std::numeric_limits<Out>::max();

constexpr std::size_t kColours = 3;

/// Whether a sample is a value. One whose no-data value no sample can have is.
template <class Sample>
bool HasData(const SpotHeader& header, Sample sample) {
    if constexpr (std::is_floating_point_v<Sample>) {
        const bool canBe = header.noData && std::abs(*header.noData) <= std::numeric_limits<Sample>::max();
        return !canBe || sample != static_cast<Sample>(*header.noData);
    }
    return !header.noData || static_cast<double>(sample) != *header.noData;
}

template <class Sample>
bool IsWord(Sample sample) {
    if constexpr (std::is_integral_v<Sample>) return std::in_range<std::uint16_t>(sample);
    return false;
}

/// What samples become in the picture.
template <class Out>
class Values {
public:
    explicit Values(const SpotHeader& header) : mHeader(header) {
        if constexpr (std::is_same_v<Out, unsigned char>) {
            const std::vector<std::uint32_t> pixels = SpotValuePixels(header);
            for (std::size_t value = 0; value < pixels.size(); ++value)
                mBytes[value] = std::bit_cast<std::array<unsigned char, 4>>(pixels[value])[0];
        }
    }

    /// Sets a channel of a row, and in the alpha whether one of the channels has data, the first of them at first.
    void Fill(const Pixels<Out>& pixels, std::size_t channel, const Samples& samples) const {
        const auto take = [&](std::size_t x, auto sample) {
            pixels.Set(x, channel, Of(sample));
            if (pixels.channels == 1) return;
            const bool hasData = HasData(mHeader, sample);
            if (hasData || channel == 0) pixels.Set(x, kColours, hasData ? kOpaque<Out> : Out{0});
        };
        TakeSamples<Out>(mHeader, samples, pixels.Count(), take);
    }

private:
    /// A number below zero, which only one without data is where this is not a float, becomes zero.
    template <class Sample>
    Out Of(Sample sample) const {
        if constexpr (std::is_same_v<Out, unsigned char>) return mBytes[static_cast<unsigned char>(sample)];
        if constexpr (std::is_same_v<Out, std::uint16_t>) return IsWord(sample) ? static_cast<Out>(sample) : Out{0};
        return static_cast<Out>(sample);
    }

    const SpotHeader& mHeader;
    Table256<unsigned char> mBytes{};
};

template <class Out>
void ConvertGrey(const Values<Out>& values, const Pixels<Out>& pixels, const Samples& samples) {
    values.Fill(pixels, 0, samples);
    if (pixels.channels == 1) return;
    for (std::size_t x = 0; x < pixels.Count(); ++x) {
        pixels.Set(x, 1, pixels.At(x, 0));
        pixels.Set(x, 2, pixels.At(x, 0));
    }
}

/// Calls `convert(rowOfOut, samples)` for each row, with the samples of `Count` bands that are wanted.
template <std::size_t Count, class Convert>
void ConvertBands(ByteSource& file, const SpotHeader& header, const std::array<int, Count>& bands, const PixelRows& out,
                  const Convert& convert) {
    const auto lineBytes = static_cast<std::size_t>(SpotLineBytes(header));
    if (header.layout == SpotLayout::kByPixel) {
        const auto step = static_cast<std::size_t>(header.bands);
        return ConvertRows<1>(WholeRows(file, header), {0}, lineBytes, out,
                              [&](std::span<unsigned char> pixels, const std::array<Line, 1>& lines) {
                                  std::array<Samples, Count> samples;
                                  for (std::size_t i = 0; i < Count; ++i)
                                      samples[i] = {lines[0], static_cast<std::size_t>(bands[i]), step};
                                  convert(pixels, samples);
                              });
    }
    const auto convertLines = [&](std::span<unsigned char> pixels, const std::array<Line, Count>& lines) {
        std::array<Samples, Count> samples;
        for (std::size_t i = 0; i < Count; ++i)
            samples[i] = {.line = lines[i]};
        convert(pixels, samples);
    };
    const bool isSequential = header.layout == SpotLayout::kSequential;
    Firsts<Count> firsts;
    for (std::size_t i = 0; i < Count; ++i)
        firsts[i] = FirstByte(header, isSequential ? static_cast<std::int64_t>(i) : bands[i]);
    if (!isSequential) return ConvertRows<Count>(WholeRows(file, header), firsts, lineBytes, out, convertLines);
    if constexpr (Count == kColours) {
        ConvertRows<Count>(
            SpotRows(file, {BandStart(header, bands[0]), BandStart(header, bands[1]), BandStart(header, bands[2])},
                     header.bandRowBytes),
            firsts, lineBytes, out, convertLines);
    } else {
        ConvertRows<Count>(SpotRows(file, {BandStart(header, bands[0])}, header.bandRowBytes), firsts, lineBytes, out,
                           convertLines);
    }
}

template <class Out>
void DecodeValues(ByteSource& file, const SpotHeader& header, int frame, std::size_t channels, const PixelRows& out) {
    const Values<Out> values(header);
    if (header.bands < static_cast<int>(kColours)) {
        return ConvertBands<1>(file, header, {frame}, out,
                               [&](std::span<unsigned char> row, const std::array<Samples, 1>& samples) {
                                   ConvertGrey(values, Pixels<Out>{row, channels}, samples[0]);
                               });
    }
    const std::array<int, kColours> bands = {header.blueFirst ? 2 : 0, 1, header.blueFirst ? 0 : 2};
    ConvertBands<kColours>(file, header, bands, out,
                           [&](std::span<unsigned char> row, const std::array<Samples, kColours>& samples) {
                               const Pixels<Out> pixels{row, channels};
                               for (std::size_t channel = 0; channel < kColours; ++channel)
                                   values.Fill(pixels, channel, samples[channel]);
                           });
}

/// One band whose values have pixels of their own.
void DecodeColours(ByteSource& file, const SpotHeader& header, int frame, const PixelRows& out) {
    const std::vector<std::uint32_t> colours = header.bits <= 8 ? SpotValuePixels(header) : header.colours;
    const auto set = [&](std::span<unsigned char> row, std::size_t x, std::int64_t value) {
        const bool isThere = value >= 0 && value < static_cast<std::int64_t>(colours.size());
        const std::uint32_t pixel = isThere ? colours[static_cast<std::size_t>(value)] : 0;
        std::memcpy(row.data() + x * sizeof pixel, &pixel, sizeof pixel);
    };
    Table256<std::uint32_t> table{};
    std::copy_n(colours.begin(), std::min(colours.size(), table.size()), table.begin());
    ConvertBands<1>(file, header, {frame}, out, [&](std::span<unsigned char> row, const std::array<Samples, 1>& bands) {
        const Samples& samples = bands[0];
        const std::size_t count = row.size() / sizeof(std::uint32_t);
        const auto take = [&](std::size_t x, auto value) { set(row, x, static_cast<std::int64_t>(value)); };
        if (header.sampleKind == SampleKind::k8Bit && samples.step == 1) {
            LookUp(row, samples.line, table);
        } else if (header.sampleKind == SampleKind::kSigned16) {
            TakeSamples<float>(header, samples, count, take);
        } else if (header.bits == 16) {
            TakeSamples<std::uint16_t>(header, samples, count, take);
        } else {
            TakeSamples<unsigned char>(header, samples, count, take);
        }
    });
}

}  // namespace

// --- The raster ------------------------------------------------------------------------------------------------------

int SpotCommonFrames(const SpotHeader& header) {
    return header.bands == 2 ? 2 : 1;
}

EFormat SpotCommonFormat(const SpotHeader& header) {
    const bool isColour = header.bands >= static_cast<int>(kColours);
    const bool isShort = header.bits <= 8;
    if (!header.colours.empty()) return kR8G8B8A8;
    switch (header.sampleKind) {
        case SampleKind::kFloat:
        case SampleKind::kDouble:
            return isColour ? kR32G32B32A32F : kR32F;
        case SampleKind::k8Bit:
        case SampleKind::kPacked:
        case SampleKind::kUnsigned16:
            break;
        default:
            if (!header.fitsWords) return isColour ? kR32G32B32A32F : kR32F;
    }
    if (isColour || header.noData) return isShort ? kR8G8B8A8 : kR16G16B16A16;
    return isShort ? kL8 : kL16;
}

void DecodeSpotCommon(ByteSource& file, const SpotHeader& header, int frame, const PixelRows& out) {
    switch (SpotCommonFormat(header)) {
        case kR8G8B8A8:
            if (header.bands < static_cast<int>(kColours)) return DecodeColours(file, header, frame, out);
            return DecodeValues<unsigned char>(file, header, frame, 4, out);
        case kL8:
            return DecodeValues<unsigned char>(file, header, frame, 1, out);
        case kL16:
            return DecodeValues<std::uint16_t>(file, header, frame, 1, out);
        case kR16G16B16A16:
            return DecodeValues<std::uint16_t>(file, header, frame, 4, out);
        case kR32F:
            return DecodeValues<float>(file, header, frame, 1, out);
        default:
            return DecodeValues<float>(file, header, frame, 4, out);
    }
}

namespace {

/// Takes a byte a row, and knows whether one of them is 0.
class RowFlags : public Common::RowSink {
public:
    std::span<unsigned char> NextRows(std::size_t most) override {
        Look();
        mFlags.assign(std::min(most, kMaxRows), 0);
        return mFlags;
    }
    bool AreAllSet() {
        Look();
        return mAreSet;
    }

private:
    static constexpr std::size_t kMaxRows = 65536;

    void Look() { mAreSet = mAreSet && !std::ranges::contains(mFlags, 0); }

    std::vector<unsigned char> mFlags;
    bool mAreSet = true;
};

/// Whether all samples of a line, which are whole numbers, are such ones or none: as the bits of all of them together.
bool AreWords(const SpotHeader& header, const Samples& samples) {
    constexpr double kBeyondSamples = 1e15;  // of 32 bits at most
    const bool hasNoData = header.noData && std::abs(*header.noData) < kBeyondSamples;
    const auto noData = hasNoData ? static_cast<std::int64_t>(*header.noData) : 0;
    std::int64_t all = 0;
    const auto take = [&](std::size_t, auto sample) {
        const auto number = static_cast<std::int64_t>(sample);  // NOLINT(bugprone-signed-char-misuse): of 8 bits
        all |= hasNoData && number == noData ? 0 : number;
    };
    TakeSamples<float>(header, samples, static_cast<std::size_t>(header.columns), take);
    return IsWord(all);
}

bool FitWords(ByteSource& file, const SpotHeader& header, int band, std::int64_t rows) {
    RowFlags flags;
    ConvertBands<1>(file, header, {band}, {.sink = flags, .count = rows, .pitch = 1},
                    [&](std::span<unsigned char> flag, const std::array<Samples, 1>& samples) {
                        flag[0] = AreWords(header, samples[0]) ? 1 : 0;
                    });
    return flags.AreAllSet();
}

/// Of most rasters with others the first rows tell.
bool FitsWords(ByteSource& file, const SpotHeader& header) {
    constexpr std::int64_t kFirstRows = 64;
    for (int band = 0; band < std::min(header.bands, static_cast<int>(kColours)); ++band) {
        if (!FitWords(file, header, band, std::min<std::int64_t>(header.rows, kFirstRows))) return false;
        if (!FitWords(file, header, band, header.rows)) return false;
    }
    return true;
}

}  // namespace

void LookAtIntegers(ByteSource& file, SpotHeader& header) {
    const auto kind = header.sampleKind;
    const bool isLong = kind == SampleKind::kSigned8 || kind == SampleKind::kSigned16 ||
                        kind == SampleKind::kUnsigned32 || kind == SampleKind::kSigned32;
    const bool isWhole = SpotRowsIn(header, file.Size()) == header.rows;
    // What is larger takes long to look at, or much memory.
    constexpr std::uint64_t kMaxLineBytes = std::uint64_t{64} << 20;
    const bool isBounded = file.Size() <= Common::kDefaultMaxBytes && SpotCommonWorkingBytes(header) <= kMaxLineBytes;
    header.fitsWords = isLong && header.colours.empty() && isWhole && isBounded && FitsWords(file, header);
}

std::uint64_t SpotCommonWorkingBytes(const SpotHeader& header) {
    const bool isOneLine = header.layout == SpotLayout::kByPixel || header.bands < static_cast<int>(kColours);
    return static_cast<std::uint64_t>(Common::Product(SpotLineBytes(header), isOneLine ? 1 : 3));
}

namespace {

/// Looks at each row of pixels before the next ones come.
class AlphaSearch : public Common::RowSink {
public:
    AlphaSearch(EFormat format, int columns)
        : mPitch(static_cast<std::size_t>(Common::PackedRowBytes(format, columns))),
          mPixelBytes(mPitch / static_cast<std::size_t>(columns)) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        Look();
        const std::size_t rows = std::clamp<std::size_t>(Common::kSerialBytes / mPitch, 1, most);
        mRows.assign(rows * mPitch, 0);
        return mRows;
    }

    bool HasFound() {
        Look();
        return mHasFound;
    }

private:
    /// An alpha is 0 where the last quarter of its pixel is.
    void Look() {
        const std::size_t alphaBytes = mPixelBytes / 4;
        for (std::size_t at = 0; at < mRows.size() && !mHasFound; at += mPixelBytes) {
            const auto alpha = std::span(mRows).subspan(at + 3 * alphaBytes, alphaBytes);
            mHasFound = std::ranges::all_of(alpha, [](unsigned char byte) { return byte == 0; });
        }
    }

    std::size_t mPitch, mPixelBytes;
    std::vector<unsigned char> mRows;
    bool mHasFound = false;
};

}  // namespace

bool HasTransparentPixel(ByteSource& file, const SpotHeader& header) {
    AlphaSearch search(SpotCommonFormat(header), header.columns);
    const auto pitch = static_cast<std::size_t>(Common::PackedRowBytes(SpotCommonFormat(header), header.columns));
    DecodeSpotCommon(file, header, 0, {.sink = search, .count = header.rows, .pitch = pitch});
    return search.HasFound();
}

}  // namespace Kavra::Devices
