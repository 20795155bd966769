#include "common/mips/MipBuilder.h"

#include "common/ParallelRange.h"
#include "common/mips/AlphaCoverage.h"
#include "common/mips/MipFilter.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace Kavra::Common {

namespace {

using Devices::Dds::Extent;

constexpr std::size_t kSerialPixels = 1 << 12;  // fewer are not worth waking a worker

std::size_t SerialRows(int width) {
    return kSerialPixels / static_cast<std::size_t>(width) + 1;
}

}  // namespace

MipBuilder::MipBuilder(const MipTexture& texture, const MipColours& colours, const Devices::MipOptions& options)
    : mTexture(texture), mColours(colours), mOptions(options), mSize(texture.size) {
    if (options.keepCoverage <= 0 || !colours.HasAlpha()) return;
    mSeenFrom = SeenFrom(colours.Element(), options.keepCoverage);
    mShare = ShareOfLevel0();
}

std::size_t MipBuilder::Pixels(const Extent& size) {
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
           static_cast<std::size_t>(size.depth);
}

MipBuilder::Pictures MipBuilder::PicturesOfLevel() const {
    Pictures pictures;
    const std::size_t sliceFloats =
        Pixels({mSize.width, mSize.height, 1}) * static_cast<std::size_t>(mColours.Channels());
    for (std::size_t face = 0; face < mTexture.faces.size(); ++face) {
        const auto* const stored = static_cast<const unsigned char*>(mTexture.faces[face]);
        for (std::size_t slice = 0; slice < static_cast<std::size_t>(mSize.depth); ++slice) {
            if (mFaces.empty()) {
                pictures.push_back(
                    std::make_unique<StoredPicture>(mColours, stored + slice * mTexture.slicePitch, mTexture.pitch));
            } else {
                pictures.push_back(std::make_unique<FloatPicture>(mFaces[face].get() + slice * sliceFloats, mSize.width,
                                                                  mColours.Channels()));
            }
        }
    }
    return pictures;
}

// --- Filtering -------------------------------------------------------------------------------------------------------

void MipBuilder::FilterFace(const Pictures& pictures, std::size_t face, const Extent& size, float* out) const {
    const int channels = mColours.Channels();
    const MipFilter filter({mSize.width, mSize.height}, {size.width, size.height}, channels, mOptions.filter);
    if (mTexture.faces.size() > 1) {
        std::vector<const MipPicture*> faces;
        for (const auto& picture : pictures)
            faces.push_back(picture.get());
        return filter.Make(CubePlane(faces, static_cast<int>(face), mSize.width, channels), out);
    }
    const AxisPlan slices = AxisPlan::Precise(mSize.depth, size.depth, mOptions.filter);
    const std::size_t sliceFloats = Pixels({size.width, size.height, 1}) * static_cast<std::size_t>(channels);
    for (std::size_t slice = 0; slice < slices.Size(); ++slice) {
        const Reach& reach = slices.ReachOf(slice);
        BlendedSlices blended(channels);
        const auto at = [&](int i) -> const MipPicture& {
            return *pictures[static_cast<std::size_t>(PlaceWithin(reach.first + i, mSize.depth, mOptions.edges))];
        };
        for (int i = 0; i < reach.count; ++i)
            blended.Add(at(i), slices.WeightsOf(slice)[i]);
        const MipPicture& source = reach.count == 1 ? at(0) : blended;
        filter.Make(FlatPlane(source, mSize.width, mSize.height, channels, mOptions.edges), out + slice * sliceFloats);
    }
}

std::vector<MipBuilder::Floats> MipBuilder::FilteredFaces(const Extent& size) const {
    const Pictures pictures = PicturesOfLevel();
    std::vector<Floats> faces(mTexture.faces.size());
    for (std::size_t face = 0; face < faces.size(); ++face) {
        faces[face] =
            std::make_unique_for_overwrite<float[]>(Pixels(size) * static_cast<std::size_t>(mColours.Channels()));
        FilterFace(pictures, face, size, faces[face].get());
    }
    return faces;
}

void MipBuilder::Next() {
    const Extent size = Devices::Dds::LevelSize(mSize, 1);
    mFaces = FilteredFaces(size);
    mSize = size;
    if (mSeenFrom > 0) mAlphaScale = ScaleOfLevel();
}

// --- Storing ---------------------------------------------------------------------------------------------------------

void MipBuilder::Store(std::size_t face, unsigned char* out) const {
    const auto width = static_cast<std::size_t>(mSize.width), channels = static_cast<std::size_t>(mColours.Channels());
    const float* const floats = mFaces[face].get();
    ForEachRange(Pixels(mSize) / width, SerialRows(mSize.width), [&](std::size_t begin, std::size_t end) {
        std::vector<float> row(width * channels + kSlack);
        for (std::size_t y = begin; y < end; ++y) {
            std::copy_n(floats + y * width * channels, width * channels, row.begin());
            mColours.Encode(row.data(), width, mAlphaScale, out + y * width * mColours.PixelBytes());
        }
    });
}

// --- Coverage --------------------------------------------------------------------------------------------------------

double MipBuilder::ShareOfLevel0() const {
    const auto width = static_cast<std::size_t>(mSize.width), height = static_cast<std::size_t>(mSize.height);
    const std::size_t rows = Pixels(mSize) / width * mTexture.faces.size(),
                      slices = static_cast<std::size_t>(mSize.depth);
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
    const auto seen = ReduceRange(rows, SerialRows(mSize.width), std::uint64_t{0}, count, std::plus<>());
    return static_cast<double>(seen) / static_cast<double>(rows * width);
}

float MipBuilder::ScaleOfLevel() const {
    const auto channels = static_cast<std::size_t>(mColours.Channels());
    const std::size_t pixels = Pixels(mSize);
    std::vector<float> alphas;
    alphas.reserve(pixels * mFaces.size());
    for (const Floats& face : mFaces) {
        for (std::size_t i = 0; i < pixels; ++i)
            alphas.push_back(face[i * channels + mColours.Alpha()]);
    }
    return ScaleForCoverage(alphas, mSeenFrom, mShare);
}

}  // namespace Kavra::Common
