#include "load/geometry/RowReshape.h"

#include "common/Limits.h"
#include "load/geometry/ResizeSteps.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Kavra::Devices {

namespace {

/// The picture as it comes, without its pixels.
Raster WithoutPixels(const IncomingRows& picture) {
    Raster raster{.format = picture.format, .width = picture.width, .height = picture.height, .faces = picture.faces};
    raster.pitch = raster.RowBytes();
    raster.bytes = raster.PackedBytes();
    return raster;
}

/// The steps that change its size; nothing where it stays, or cannot be had.
std::optional<ResizeSteps> StepsOf(const IncomingRows& picture, const Reshaping& wanted) {
    if (picture.width == wanted.width && picture.height == wanted.height) return std::nullopt;
    return PlanResize(ChangeOf(WithoutPixels(picture), wanted.width, wanted.height), wanted.scaling, wanted.options);
}

}  // namespace

/// Rows pass from the first resampler to the second, where there are two, and into the picture.
struct RowReshape::Work {
    Raster picture;  ///< of the size that is wanted; or as it comes, where that stays
    Reshaping wanted;
    Common::BlockRows block;
    std::optional<Common::RowResampler> second = std::nullopt;
    std::optional<Common::RowResampler> first = std::nullopt;

    Work(Raster raster, const Reshaping& reshaping)
        : picture(std::move(raster)),
          wanted(reshaping),
          block({picture.block.get(), picture.bytes}, picture.RowBytes()) {}
};

RowReshape::RowReshape(const IncomingRows& picture, const Reshaping& wanted) {
    const std::optional<ResizeSteps> steps = StepsOf(picture, wanted);
    if (!steps) {
        Raster whole = WithoutPixels(picture);
        whole.block = Common::NewZeroedBlock(whole.bytes);
        whole.first = whole.block.get();
        mWork = std::make_unique<Work>(std::move(whole), wanted);
        return;
    }
    mWork = std::make_unique<Work>(NewRaster(picture.format, wanted.width, wanted.height, picture.faces), wanted);
    if (steps->second) mWork->second.emplace(*steps->second, mWork->block);
    Common::RowSink& behind = mWork->second ? static_cast<Common::RowSink&>(*mWork->second) : mWork->block;
    mWork->first.emplace(steps->first, behind);
}

RowReshape::~RowReshape() = default;

std::span<unsigned char> RowReshape::NextRows(std::size_t most) {
    return mWork->first ? mWork->first->NextRows(most) : mWork->block.NextRows(most);
}

Raster RowReshape::Finish() {
    if (mWork->first) mWork->first->Finish();
    if (mWork->second) mWork->second->Finish();
    mWork->first.reset();
    mWork->second.reset();
    return Reshape(std::move(mWork->picture), mWork->wanted);
}

std::uint64_t RowReshape::BytesFor(const IncomingRows& picture, const Reshaping& wanted) {
    const auto bytesOf = [&](int width, int height) {
        Raster raster = WithoutPixels(picture);
        const auto pixels =
            Common::Product<std::uint64_t>(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
        return Common::Product<std::uint64_t>(pixels, raster.PixelBytes() * static_cast<std::uint64_t>(picture.faces));
    };
    const std::uint64_t result = bytesOf(wanted.width, wanted.height);
    const std::uint64_t reordered = wanted.from == wanted.to ? result : Common::Sum<std::uint64_t>(result, result);
    const std::optional<ResizeSteps> steps = StepsOf(picture, wanted);
    if (!steps) {
        const std::uint64_t whole = bytesOf(picture.width, picture.height);
        const bool isMoved = wanted.from != wanted.to || whole != result;
        return isMoved ? Common::Sum<std::uint64_t>(whole, result) : whole;
    }
    std::uint64_t held = Common::Sum<std::uint64_t>(result, Common::RowResampler::BytesFor(steps->first));
    if (steps->second) held = Common::Sum<std::uint64_t>(held, Common::RowResampler::BytesFor(*steps->second));
    return std::max(held, reordered);
}

}  // namespace Kavra::Devices
