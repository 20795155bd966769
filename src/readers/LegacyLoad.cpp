#include "readers/LegacyLoad.h"

#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "load/geometry/RowReshape.h"

#include <memory>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Failure;
using Common::PixelBlock;
using Common::Result;

void Describe(ImageReaderInterface& reader, EDataOrientation wanted, ImageDescription& desc) {
    // In this order, one call each.
    const int width = reader.GetWidth(), height = reader.GetHeight();
    const EFormat format = reader.GetFormat();
    desc = Common::DescribePacked(width, height, format);
    desc.rowPitch = reader.GetRowPitch();
    desc.dataSize = static_cast<std::uint64_t>(std::int64_t{height} * desc.rowPitch);
    desc.defaultOrientation = wanted == kTopLeft;  // of what is asked for, not of what the file has
    desc.orientation = reader.GetOrientation();
}

/// The picture of a file and what is to be made of it.
struct Fitting {
    IncomingRows picture;
    Reshaping wanted;

    Fitting(const ImageDescription& desc, const LoadRequest& request)
        : picture{.format = desc.format, .width = desc.width, .height = desc.height},
          wanted(ReshapingFor(request, WantedSide(request.width, desc.width), WantedSide(request.height, desc.height),
                              desc.orientation)) {}

    bool IsNeeded() const {
        return wanted.width != picture.width || wanted.height != picture.height || wanted.to != wanted.from;
    }
    /// A format without pixels, or rows with gaps between them: no reader has those, and nothing could scale them.
    bool IsPossible(std::int32_t rowPitch) const {
        return Common::FactsOf(picture.format).inLibrary &&
               rowPitch == Common::PackedRowBytes(picture.format, picture.width);
    }
    std::uint64_t BytesOfResult() const {
        return static_cast<std::uint64_t>(Common::PackedRowBytes(picture.format, wanted.width) * wanted.height);
    }
};

/// Asked before memory is, since memory that was given out and is not there when it is touched ends the process. What
/// the host allows holds for the pixels as the file has them, too, also where these never stand in memory whole.
Result<> CheckLimits(ImageReaderInterface& reader, const ImageDescription& desc, const Fitting& fitting) {
    const auto isSide = [](int side) { return side >= 1 && side <= Common::kMaxSide; };
    if (!isSide(desc.width) || !isSide(desc.height) || desc.rowPitch < 1) {
        Common::Say(kFailureTooLarge, "the picture is {} x {}; sides are 1 to {}", desc.width, desc.height,
                    Common::kMaxSide);
        return std::unexpected(Failure::kTooLarge);
    }
    if (fitting.IsNeeded() && !fitting.IsPossible(desc.rowPitch)) return std::unexpected(Failure::kUnsupported);

    const auto pixels = static_cast<std::uint64_t>(std::int64_t{desc.width} * desc.height);
    Common::PictureSize held = {
        .pixels = pixels, .blockBytes = desc.dataSize, .workingBytes = reader.GetWorkingBytes()};
    if (fitting.IsNeeded()) {
        held.blockBytes = fitting.BytesOfResult();
        const std::uint64_t besides = RowReshape::BytesFor(fitting.picture, fitting.wanted) - held.blockBytes;
        held.workingBytes = Common::Sum<std::uint64_t>(held.workingBytes, besides);
    }
    const bool holds = Common::HostBounds().HoldOrSay({.pixels = pixels, .blockBytes = desc.dataSize}) &&
                       Common::ReaderBounds().HoldOrSay(held);
    if (!holds) return std::unexpected(Failure::kTooLarge);
    return {};
}

/// Hands out the rows of another sink, few at a time where somebody watches, who is told of them.
class WatchedRows : public Common::RowSink {
public:
    WatchedRows(Common::RowSink& sink, int rows, std::size_t rowBytes)
        : mSink(sink), mRowBytes(rowBytes), mMeter(kProgressReading, static_cast<unsigned>(rows)) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        if (!mMeter.IsWatched()) return mSink.NextRows(most);
        Finish();
        const std::span<unsigned char> rows = mSink.NextRows(mParts.Next(most));
        mGiven = rows.size() / mRowBytes;
        return rows;
    }

    /// The rows handed out last are complete, too.
    void Finish() {
        if (mGiven > 0) mParts.Done();
        mMeter.Advance(std::exchange(mGiven, 0));
    }

private:
    Common::RowSink& mSink;
    std::size_t mRowBytes, mGiven = 0;
    Common::ProgressMeter mMeter;
    Common::PartSize mParts{16};
};

/// The picture as the reader gives it.
Result<PixelBlock> Decode(ImageReaderInterface& reader, const ImageDescription& desc, int frame) {
    PixelBlock block = Common::NewZeroedBlock(desc.dataSize);
    Common::BlockRows rows({block.get(), desc.dataSize}, static_cast<std::size_t>(desc.rowPitch));
    WatchedRows watched(rows, desc.height, static_cast<std::size_t>(desc.rowPitch));
    if (const Result<> read = reader.ReadFrame(watched, frame); !read) return std::unexpected(read.error());
    watched.Finish();
    return block;
}

/// The picture as it is wanted; brings `desc` up to date.
Result<PixelBlock> DecodeFitted(ImageReaderInterface& reader, ImageDescription& desc, int frame,
                                const Fitting& fitting) {
    RowReshape rows(fitting.picture, fitting.wanted);
    {
        WatchedRows watched(rows, desc.height, static_cast<std::size_t>(desc.rowPitch));
        if (const Result<> read = reader.ReadFrame(watched, frame); !read) return std::unexpected(read.error());
        watched.Finish();
    }
    Raster fitted = rows.Finish();
    if (!fitted) return std::unexpected(Failure::kUnsupported);
    Common::SetPacked(desc, fitted.width, fitted.height, fitted.format);
    desc.orientation = fitting.wanted.to;
    return std::move(fitted.block);
}

Result<PixelBlock> Load(ImageReaderInterface& reader, ImageDescription& desc, PictureFiles files,
                        const LoadRequest& request) {
    if (const Result<> opened = reader.Open(std::move(files)); !opened) return std::unexpected(opened.error());
    if (!reader.SelectFrame(request.level)) {
        Common::Say(kFailureOutOfRange, "there is no frame {}; the file has {}", request.level, reader.GetFrameCount());
        return std::unexpected(Failure::kOutOfRange);
    }
    Describe(reader, request.orientation, desc);
    const Fitting fitting(desc, request);
    if (const Result<> within = CheckLimits(reader, desc, fitting); !within) return std::unexpected(within.error());
    return fitting.IsNeeded() ? DecodeFitted(reader, desc, request.level, fitting)
                              : Decode(reader, desc, request.level);
}

}  // namespace

Result<PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, PictureFiles files,
                                     const LoadRequest& request) {
    ILegacyObserver* const observer = request.preferences.legacyObserver;
    if (observer != nullptr) reader.LookForDifferences();
    Result<PixelBlock> block = Load(reader, desc, std::move(files), request);
    const char* const difference = observer != nullptr ? reader.GetDifference() : nullptr;
    if (difference != nullptr) observer->ReadingsDiffer(difference);
    return block;
}

Result<PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, const KString& path,
                                     const LoadRequest& request) {
    return reader.FindFiles(path).and_then(
        [&](PictureFiles&& files) { return LoadThroughReader(reader, desc, std::move(files), request); });
}

Result<PixelBlock> LoadSpecial(ImageDescription& desc, DetectedFile file, const LoadRequest& request) {
    if (file.type == None) return std::unexpected(Failure::kCannotOpen);
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(file.type, request.preferences.legacy));
    if (!reader || !file.files) return std::unexpected(Failure::kUnsupported);
    return LoadThroughReader(*reader, desc, *std::move(file.files), request);
}

Result<PixelBlock> LoadSpecial(ImageDescription& desc, const KString& path, const LoadRequest& request, int fileType) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(fileType, request.preferences.legacy));
    if (!reader) return std::unexpected(Failure::kUnsupported);
    return LoadThroughReader(*reader, desc, path, request);
}

}  // namespace Kavra::Devices
