#include "common/mips/MipBuilder.h"

#include "common/Progress.h"
#include "common/WatchedRange.h"
#include "common/mips/AlphaCoverage.h"
#include "common/mips/MipFilter.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace Kavra::Common {

namespace {

using Devices::kProgressResizing;
using Devices::Dds::Extent;

constexpr int kMeansAbove = 2;                  // levels
constexpr std::size_t kSerialPixels = 1 << 12;  // fewer are not worth waking a worker

std::size_t SerialRows(int width) {
    return kSerialPixels / static_cast<std::size_t>(width) + 1;
}

}  // namespace

MipBuilder::MipBuilder(const MipTexture& texture, const MipColours& colours, const Devices::MipOptions& options)
    : mTexture(texture), mColours(colours), mOptions(options), mMade{0, texture.size, {}}, mMeans{0, texture.size, {}} {
    if (options.keepCoverage <= 0 || !colours.HasAlpha()) return;
    mSeenFrom = SeenFrom(colours.Element(), options.keepCoverage);
    mShare = ShareOfLevel0();
}

std::size_t MipBuilder::Pixels(const Extent& size) {
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
           static_cast<std::size_t>(size.depth);
}

MipBuilder::Pictures MipBuilder::PicturesOf(const Level& level) const {
    Pictures pictures;
    const std::size_t sliceFloats =
        Pixels({level.size.width, level.size.height, 1}) * static_cast<std::size_t>(mColours.Channels());
    for (std::size_t face = 0; face < mTexture.faces.size(); ++face) {
        const auto* const stored = static_cast<const unsigned char*>(mTexture.faces[face]);
        for (std::size_t slice = 0; slice < static_cast<std::size_t>(level.size.depth); ++slice) {
            if (level.faces.empty()) {
                pictures.push_back(
                    std::make_unique<StoredPicture>(mColours, stored + slice * mTexture.slicePitch, mTexture.pitch));
            } else {
                pictures.push_back(std::make_unique<FloatPicture>(level.faces[face].get() + slice * sliceFloats,
                                                                  level.size.width, mColours.Channels()));
            }
        }
    }
    return pictures;
}

// --- Filtering -------------------------------------------------------------------------------------------------------

void MipBuilder::FilterFace(const Pictures& pictures, const Extent& from, std::size_t face, const Extent& to,
                            Devices::EResampleFilter kind, float* out) const {
    const int channels = mColours.Channels();
    const bool isBounded = mOptions.bounded && !mColours.IsOfIntegers();
    const MipFilter filter({from.width, from.height}, {to.width, to.height}, channels, kind, isBounded);
    if (mTexture.faces.size() > 1) {
        std::vector<const MipPicture*> faces;
        for (const auto& picture : pictures)
            faces.push_back(picture.get());
        return filter.Make(CubePlane(faces, static_cast<int>(face), from.width, channels), out);
    }
    const AxisPlan slices = AxisPlan::Precise(from.depth, to.depth, kind);
    const std::size_t sliceFloats = Pixels({to.width, to.height, 1}) * static_cast<std::size_t>(channels);
    ProgressMeter meter(kProgressResizing, slices.Size());
    for (std::size_t slice = 0; slice < slices.Size(); ++slice, meter.Advance(1)) {
        meter.Expect(1);
        const Reach& reach = slices.ReachOf(slice);
        BlendedSlices blended(channels, isBounded);
        const auto at = [&](int i) -> const MipPicture& {
            return *pictures[static_cast<std::size_t>(PlaceWithin(reach.first + i, from.depth, mOptions.edges))];
        };
        for (int i = 0; i < reach.count; ++i)
            blended.Add(at(i), slices.WeightsOf(slice)[i]);
        const MipPicture& source = reach.count == 1 ? at(0) : blended;
        filter.Make(FlatPlane(source, from.width, from.height, channels, mOptions.edges), out + slice * sliceFloats);
    }
}

MipBuilder::Level MipBuilder::Filtered(const Level& from, int number, Devices::EResampleFilter filter) const {
    const Pictures pictures = PicturesOf(from);
    Level level{number, Devices::Dds::LevelSize(mTexture.size, number), {}};
    const std::size_t floats = Pixels(level.size) * static_cast<std::size_t>(mColours.Channels());
    ProgressMeter meter(kProgressResizing, mTexture.faces.size());
    for (std::size_t face = 0; face < mTexture.faces.size(); ++face, meter.Advance(1)) {
        meter.Expect(1);
        level.faces.push_back(std::make_unique_for_overwrite<float[]>(floats));
        FilterFace(pictures, from.size, face, level.size, filter, level.faces.back().get());
    }
    return level;
}

void MipBuilder::Next() {
    const int number = mMade.number + 1;
    if (mOptions.filter == Devices::kResampleBox) {
        mMade = Filtered(mMade, number, Devices::kResampleBox);
    } else {
        mMade.faces.clear();
        while (mMeans.number + kMeansAbove < number)
            mMeans = Filtered(mMeans, mMeans.number + 1, Devices::kResampleBox);
        mMade = Filtered(mMeans, number, mOptions.filter);
    }
    if (mSeenFrom > 0) mAlphaScale = ScaleOfLevel();
}

// --- Storing ---------------------------------------------------------------------------------------------------------

void MipBuilder::Store(std::size_t face, unsigned char* out) const {
    const auto width = static_cast<std::size_t>(mMade.size.width),
               channels = static_cast<std::size_t>(mColours.Channels());
    const float* const floats = mMade.faces[face].get();
    const std::size_t rows = Pixels(mMade.size) / width, serial = SerialRows(mMade.size.width);
    ForEachRangeOf(kProgressResizing, rows, serial, [&](std::size_t begin, std::size_t end) {
        std::vector<float> row(width * channels + kSlack);
        for (std::size_t y = begin; y < end; ++y) {
            std::copy_n(floats + y * width * channels, width * channels, row.begin());
            mColours.Encode(row.data(), width, mAlphaScale, out + y * width * mColours.PixelBytes());
        }
    });
}

// --- Coverage --------------------------------------------------------------------------------------------------------

double MipBuilder::ShareOfLevel0() const {
    const auto width = static_cast<std::size_t>(mTexture.size.width),
               height = static_cast<std::size_t>(mTexture.size.height);
    const std::size_t rows = Pixels(mTexture.size) / width * mTexture.faces.size(),
                      slices = static_cast<std::size_t>(mTexture.size.depth);
    const auto channels = static_cast<std::size_t>(mColours.Channels());
    const auto count = [&](std::size_t begin, std::size_t end, std::uint64_t seen) {
        std::vector<float> values(width * channels + kSlack);
        for (std::size_t i = begin; i < end; ++i) {
            const std::size_t face = i / (height * slices), slice = i / height % slices, y = i % height;
            const auto* const stored = static_cast<const unsigned char*>(mTexture.faces[face]);
            mColours.Decode(stored + slice * mTexture.slicePitch + y * mTexture.pitch, width, values.data());
            for (std::size_t at = mColours.Alpha(); at < width * channels; at += channels)
                seen += values[at] >= mSeenFrom;
        }
        return seen;
    };
    const auto seen =
        ReduceRangeOf(kProgressResizing, rows, SerialRows(mTexture.size.width), std::uint64_t{0}, count, std::plus<>());
    return static_cast<double>(seen) / static_cast<double>(rows * width);
}

float MipBuilder::ScaleOfLevel() const {
    const auto channels = static_cast<std::size_t>(mColours.Channels());
    const std::size_t pixels = Pixels(mMade.size);
    std::vector<float> alphas;
    alphas.reserve(pixels * mMade.faces.size());
    for (const Floats& face : mMade.faces) {
        for (std::size_t i = 0; i < pixels; ++i)
            alphas.push_back(face[i * channels + mColours.Alpha()]);
    }
    return ScaleForCoverage(alphas, mSeenFrom, mShare);
}

}  // namespace Kavra::Common
