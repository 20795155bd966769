#include "load/TextureBands.h"

#include "common/Limits.h"
#include "common/PixelFormats.h"
#include "common/Progress.h"
#include "formats/FormatConversion.h"
#include "load/geometry/RowReshape.h"

#include <kavra/devices/ImageHandlerHelper.h>

#include <cstring>
#include <span>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

Pixels SwapRedAndBlue(const Pixels& pixels) {
    Utilities::ImageHandlerHelper helper;
    auto* const swapped = helper.BGRAToRGBA(pixels.block.get(), pixels.bytes);
    return {PixelBlock(reinterpret_cast<unsigned char*>(swapped)), pixels.bytes};
}

Pixels Convert(const TextureLoad& load, const Pixels& pixels) {
    void* converted = nullptr;
    std::size_t bytes = 0;
    FormatConversion(load.fileDesc.format, pixels.bytes, pixels.block.get(), load.format, converted, bytes);
    return {PixelBlock(static_cast<unsigned char*>(converted)), bytes};
}

/// The library delivers red first.
bool SwapsRedAndBlue(const TextureLoad& load) {
    const auto isBlueFirst = [](EFormat format) { return Common::FactsOf(format).blueFirst; };
    return isBlueFirst(load.format) && !isBlueFirst(load.fileDesc.format);
}

/// One texture on its way through a sink.
class Bands {
public:
    Bands(TextureLoad& load, const OIIO::ImageSpec& as, Common::RowSink& sink)
        : mLoad(load), mAs(as), mSource(load, as), mSink(sink), mRowBytes(RowBytes(load.targetSpec)) {}

    static std::size_t RowBytes(const OIIO::ImageSpec& spec) {
        return static_cast<std::size_t>(spec.width) * spec.pixel_bytes(false);
    }

    bool ReadAll() {
        Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(mSource.RowCount()));
        for (int top = 0, count = 0; top < mSource.RowCount(); top += count) {
            meter.Expect(static_cast<unsigned>(mSource.BandFrom(top)));
            count = Read(top);
            if (count == 0) return false;
            meter.Advance(static_cast<unsigned>(count));
        }
        return true;
    }

private:
    bool ComesAsChosen() const { return !mLoad.Converts() && !SwapsRedAndBlue(mLoad); }

    /// Reads some rows, and returns how many; none where that fails.
    int Read(int top) {
        const int count = mSource.BandFrom(top);
        const std::span<unsigned char> out = mSink.NextRows(static_cast<std::size_t>(count));
        const int given = static_cast<int>(out.size() / mRowBytes);
        if (ComesAsChosen() && (given == count || mSource.AreDecodedAlone())) {
            return mSource.Read(top, given, out.data()) ? given : 0;
        }
        return ReadApart(top, count, out) ? count : 0;
    }

    /// Reads rows into a block of their own, and from there to where the sink wants them, `out` first.
    bool ReadApart(int top, int count, std::span<unsigned char> out) {
        const std::size_t bytes = static_cast<std::size_t>(count) * RowBytes(mAs);
        // Rows that are decoded together may be said to be read though some could not be: nothing of another band is there.
        const bool fillsAll = mSource.FillsAll() && mSource.AreDecodedAlone();
        Pixels pixels = fillsAll ? NewPixels(bytes) : NewZeroedPixels(bytes);
        if (!mSource.Read(top, count, pixels.block.get())) return false;
        pixels = ToChosenFormat(mLoad, std::move(pixels));
        std::size_t rest = static_cast<std::size_t>(count) * mRowBytes;
        if (!pixels || pixels.bytes < rest) return false;
        const unsigned char* rows = pixels.block.get();
        for (;;) {
            std::memcpy(out.data(), rows, out.size());
            rows += out.size();
            rest -= out.size();
            if (rest == 0) return true;
            out = mSink.NextRows(rest / mRowBytes);
        }
    }

    TextureLoad& mLoad;
    const OIIO::ImageSpec& mAs;
    TexturePixels mSource;
    Common::RowSink& mSink;
    const std::size_t mRowBytes;  // in the chosen format
};

IncomingRows RowsOf(const TextureLoad& load) {
    const ImageDesc& file = load.fileDesc;
    return {.format = load.format, .width = file.width, .height = file.height, .faces = FaceCount(file.textureType)};
}

}  // namespace

Pixels ToChosenFormat(const TextureLoad& load, Pixels pixels) {
    if (load.Converts()) return Convert(load, pixels);
    return SwapsRedAndBlue(load) ? SwapRedAndBlue(pixels) : std::move(pixels);
}

Raster ReadInBands(TextureLoad& load, const OIIO::ImageSpec& as) {
    RowReshape rows(RowsOf(load), load.Wanted());
    return Bands(load, as, rows).ReadAll() ? rows.Finish() : Raster{};
}

std::uint64_t BytesInBands(const TextureLoad& load) {
    const OIIO::ImageSpec& file = load.fileSpec;
    const std::size_t pixelBytes = file.pixel_bytes(true);
    const int count = SubimageRows(*load.input, file, 0, 0, file.nchannels, file.format, pixelBytes).BandFrom(0);
    const std::size_t rowBytes = static_cast<std::size_t>(file.width) * pixelBytes + Bands::RowBytes(load.nativeSpec) +
                                 Bands::RowBytes(load.targetSpec);
    return Common::Sum<std::uint64_t>(RowReshape::BytesFor(RowsOf(load), load.Wanted()),
                                      Common::Product<std::uint64_t>(static_cast<std::uint64_t>(count), rowBytes));
}

}  // namespace Kavra::Devices
