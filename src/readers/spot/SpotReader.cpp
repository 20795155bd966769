#include "readers/spot/SpotReader.h"

#include "common/Limits.h"
#include "common/Reasons.h"
#include "readers/spot/SpotCommonHeader.h"
#include "readers/spot/SpotCommonRows.h"
#include "readers/spot/SpotConvert.h"
#include "readers/spot/SpotDifference.h"
#include "readers/spot/SpotKernels.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/Sys.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <format>
#include <limits>
#include <utility>
#include <vector>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- Pixels ----------------------------------------------------------------------------------------------------------

namespace {

std::size_t SampleBytes(SampleKind kind) {
    switch (kind) {
        case SampleKind::kUnsigned16:
        case SampleKind::kSigned16:
            return 2;
        case SampleKind::kUnsigned32:
        case SampleKind::kSigned32:
        case SampleKind::kFloat:
            return 4;
        default:
            return 0;
    }
}

/// One band of samples that are kept as they are.
Result<> DecodeSamples(ByteSource& file, const SpotHeader& header, int band, const PixelRows& out) {
    const std::size_t sampleBytes = SampleBytes(header.sampleKind);
    const std::size_t lineBytes = sampleBytes * static_cast<std::size_t>(header.columns);
    if (sampleBytes == 0) return std::unexpected(Failure::kUnsupported);
    if (header.layout == SpotLayout::kByLine) {
        WholeRows(file, header).ReadAll(FirstByte(header, band), lineBytes, out.count, out.sink);
        return {};
    }
    if (header.layout == SpotLayout::kSequential) {
        SpotRows(file, {BandStart(header, band)}, header.bandRowBytes).ReadAll(0, lineBytes, out.count, out.sink);
        return {};
    }
    if (header.layout != SpotLayout::kByPixel) return std::unexpected(Failure::kUnsupported);
    if (header.bands == 1) {
        WholeRows(file, header).ReadAll(0, lineBytes, out.count, out.sink);
    } else {
        ConvertRows<1>(WholeRows(file, header), {0}, 3 * lineBytes, out,
                       [&](std::span<unsigned char> samples, const std::array<Line, 1>& pixels) {
                           SampleFromPixels(samples, pixels[0], sampleBytes, band);
                       });
    }
    return {};
}

/// One band of 8-bit samples, which any layout leaves together.
void DecodeBand(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    const auto columns = static_cast<std::size_t>(header.columns);
    const auto convertRows = [&](const auto& convert) {
        ConvertRows<1>(
            WholeRows(file, header), {header.recordSkipBytes}, columns, out,
            [&](std::span<unsigned char> pixels, const std::array<Line, 1>& samples) { convert(pixels, samples[0]); });
    };
    if (header.colourEntries > 0) {
        convertRows([table = ColourTable(header.palette)](std::span<unsigned char> pixels, Line samples) {
            LookUp(pixels, samples, table);
        });
    } else if (header.greyEntries > 0) {
        convertRows([table = RedTable(header.palette)](std::span<unsigned char> pixels, Line samples) {
            GreyFromSamples(pixels, samples, table);
        });
    } else {
        WholeRows(file, header).ReadAll(header.recordSkipBytes, columns, out.count, out.sink);
    }
}

/// Three bands of 8-bit samples, the colours of a pixel side by side.
void DecodeColourPixels(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    const bool throughTables = header.greyEntries > 0;
    const PixelTables tables = ComponentTables(header.palette);
    ConvertRows<1>(WholeRows(file, header), {0}, 3 * static_cast<std::size_t>(header.columns), out,
                   [&](std::span<unsigned char> pixels, const std::array<Line, 1>& samples) {
                       throughTables ? RgbaFromPixels(pixels, samples[0], header.blueFirst, tables)
                                     : RgbaFromPixels(pixels, samples[0], header.blueFirst);
                   });
}

/// Three bands of 8-bit samples, a line of each colour.
void DecodeColourLines(SpotRows rows, const SpotHeader& header, const PixelRows& out) {
    const bool throughTables = header.greyEntries > 0;
    const PixelTables tables = ComponentTables(header.palette);
    const Firsts<3> firsts{FirstByte(header, header.blueFirst ? 2 : 0), FirstByte(header, 1),
                           FirstByte(header, header.blueFirst ? 0 : 2)};
    ConvertRows(std::move(rows), firsts, static_cast<std::size_t>(header.columns), out,
                [&](std::span<unsigned char> pixels, const std::array<Line, 3>& lines) {
                    const ColourRows colours{lines[0], lines[1], lines[2]};
                    throughTables ? RgbaFromRows(pixels, colours, tables) : RgbaFromRows(pixels, colours);
                });
}

Result<> DecodeColours(ByteSource& file, const SpotHeader& header, const PixelRows& out) {
    switch (header.layout) {
        case SpotLayout::kByLine:
            DecodeColourLines(WholeRows(file, header), header, out);
            return {};
        case SpotLayout::kSequential:
            DecodeColourLines(
                SpotRows(file, {BandStart(header, 0), BandStart(header, 1), BandStart(header, 2)}, header.bandRowBytes),
                header, out);
            return {};
        case SpotLayout::kByPixel:
            DecodeColourPixels(file, header, out);
            return {};
        default:
            return std::unexpected(Failure::kUnsupported);
    }
}

/// The format in which a raster comes out.
Result<EFormat> FormatOf(const SpotHeader& header) {
    if (header.bits == 8) return header.bands == 3 || header.colourEntries > 0 ? kR8G8B8A8 : kL8;
    if (header.bits > 8 && header.bits <= 16) return kL16;
    if (header.sampleKind == SampleKind::kFloat) return kR32F;
    return std::unexpected(Failure::kUnsupported);
}

/// How many frames it has: the bands are one picture at 8 bits a sample, otherwise each is a picture of its own.
int FrameCountOf(const SpotHeader& header) {
    return header.bits == 8 ? 1 : header.bands;
}

/// Decodes frame `frame`, from 0 to `FrameCountOf` less 1, into `out`, rows of pixels in the format of the raster.
/// Writes nothing where it fails. The header was parsed for the length of `file`.
Result<> DecodeSpot(ByteSource& file, const SpotHeader& header, int frame, const PixelRows& out) {
    if (header.bits != 8) return DecodeSamples(file, header, frame, out);
    if (header.bands == 3) return DecodeColours(file, header, out);
    DecodeBand(file, header, out);
    return {};
}

}  // namespace

// --- The reader ------------------------------------------------------------------------------------------------------

namespace {

/// Turns the bytes of each number round before its rows are complete, a few rows at a time.
class SwappedRows : public Common::RowSink {
public:
    /// Numbers of 2 or 4 bytes. The sink must outlive this one.
    SwappedRows(Common::RowSink& rows, std::size_t pitch, std::size_t numberBytes)
        : mSink(rows), mMost(std::max<std::size_t>(Common::kSerialBytes / pitch, 1)), mNumberBytes(numberBytes) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        Finish();
        mRows = mSink.NextRows(std::min(most, mMost));
        return mRows;
    }
    /// To be called once more at the end.
    void Finish() {
        SwapNumbers(mRows, mNumberBytes);
        mRows = {};
    }

private:
    Common::RowSink& mSink;
    std::size_t mMost, mNumberBytes;
    std::span<unsigned char> mRows;
};

/// Whether the common reading has the same pixels of a raster as the contract's has, but for the order of their bytes.
bool IsReadAsInContract(const SpotHeader& header) {
    if (header.noData || !header.colours.empty()) return false;
    if (header.sampleKind == SampleKind::k8Bit) return header.bands == 1 || header.bands == 3;
    const bool isKept = header.sampleKind == SampleKind::kUnsigned16 || header.sampleKind == SampleKind::kFloat ||
                        (header.sampleKind == SampleKind::kSigned16 && header.fitsWords);
    return isKept && header.bands == 1;
}

std::int64_t RowBytes(EFormat format, std::int32_t columns) {
    return std::int64_t{Utilities::AFormatConvertor::BytesPerPixel(format)} * columns;
}

}  // namespace

bool IsSpot(PictureFiles& files) {
    return files.header && files.source.Size() > 0 && ReadSpotHeader(*files.header, files.source.Size()).has_value();
}

SpotFiles AreSpotCommon(PictureFiles& files) {
    const Result<SpotHeader> header = ReadSpotCommonHeader(files);
    if (!header) return SpotFiles::kOther;
    if (SpotRowsIn(*header, files.source.Size()) == header->rows) return SpotFiles::kWhole;
    return SpotNameOf(files.path) != SpotName::kOther ? SpotFiles::kCut : SpotFiles::kOther;
}

Result<PictureFiles> SpotReader::FindFiles(const KString& path) {
    return mReading.IsCommon() ? OpenSpotCommonFiles(path) : OpenSpotFiles(path);
}

void SpotReader::Close() {
    mSource.reset();
    mHeader = {};
    mContract = {};
    mFormat = kUnknown;
    mFrameCount = 1;
}

Result<> SpotReader::OpenFiles(PictureFiles files) {
    if (!files.header) return std::unexpected(Failure::kCannotOpen);
    return mReading.IsCommon() ? OpenCommonFiles(std::move(files)) : OpenContractFiles(std::move(files));
}

Result<> SpotReader::OpenContractFiles(PictureFiles files) {
    Result<SpotHeader> header = ReadSpotHeader(*files.header, files.source.Size());
    if (!header) return std::unexpected(header.error());
    const KString path(files.path.c_str());
    header->path = PathWithExtension(path, L".hdr").value_or(files.path);
    AddSpotPalette(path, *header);
    const Result<EFormat> format = FormatOf(*header);
    mContract = {.path = files.path, .isShown = format.has_value()};
    if (!format) return std::unexpected(format.error());
    mFormat = *format;
    mFrameCount = FrameCountOf(*header);
    mHeader = *std::move(header);
    mSource = std::move(files.source);
    return {};
}

Result<> SpotReader::OpenCommonFiles(PictureFiles files) {
    Result<SpotHeader> header = ReadSpotCommonHeader(files);
    if (!header) return std::unexpected(header.error());
    const KString path(files.path.c_str());
    header->path = PathWithExtension(path, L".hdr").value_or(files.path);
    AddSpotColours(path, *header);
    LookAtIntegers(files.source, *header);
    mFormat = SpotCommonFormat(*header);
    mFrameCount = SpotCommonFrames(*header);
    mHeader = *std::move(header);
    mSource = std::move(files.source);
    return {};
}

int SpotReader::GetRowPitch() {
    return static_cast<int>(
        std::min<std::int64_t>(RowBytes(mFormat, mHeader.columns), std::numeric_limits<int>::max()));
}

std::uint64_t SpotReader::GetWorkingBytes() {
    return mReading.IsCommon() ? SpotCommonWorkingBytes(mHeader) : 0;
}

Result<> SpotReader::ReadFrame(Common::RowSink& rows, int frame) {
    if (!mSource) return std::unexpected(Failure::kCannotOpen);
    // A row whose bytes an int cannot count is one that no caller has memory for.
    if (GetRowPitch() != RowBytes(mFormat, mHeader.columns)) return std::unexpected(Failure::kTooLarge);
    const PixelRows out{.sink = rows, .count = mHeader.rows, .pitch = static_cast<std::size_t>(GetRowPitch())};
    const int band = std::clamp(frame, 0, mFrameCount - 1);
    if (!mReading.IsCommon()) return DecodeSpot(*mSource, mHeader, band, out);
    const std::int64_t present = SpotRowsIn(mHeader, mSource->Size());
    if (present < mHeader.rows) {
        const std::wstring text = std::format(L"the data end after {} of {} rows", present, mHeader.rows);
        Sys::Warning(text.c_str(), nullptr);
        Common::SayEndsEarly(present, mHeader.rows, mSource->Size());
        return std::unexpected(Failure::kTruncated);
    }
    if (IsReadAsInContract(mHeader)) {
        if (!mHeader.bigEndian || mHeader.bits == 8) return DecodeSpot(*mSource, mHeader, band, out);
        SwappedRows swapped(rows, out.pitch, static_cast<std::size_t>(mHeader.bits) / 8);
        const Result<> decoded =
            DecodeSpot(*mSource, mHeader, band, {.sink = swapped, .count = out.count, .pitch = out.pitch});
        swapped.Finish();
        return decoded;
    }
    DecodeSpotCommon(*mSource, mHeader, band, out);
    return {};
}

const char* SpotReader::GetDifference() {
    if (!mContract.path.empty() && !mContract.isAsked) {
        mContract.isAsked = true;
        const char* const how = HowSpotDiffers(mContract.path, mContract.isShown ? &mHeader : nullptr);
        if (how != nullptr) (void)mReading.IsCommon(how);
    }
    return mReading.Difference();
}

}  // namespace Kavra::Devices
