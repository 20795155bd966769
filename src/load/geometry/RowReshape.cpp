#include "load/geometry/RowReshape.h"

#include "common/Limits.h"
#include "common/PixelFormats.h"

#include <utility>

namespace Kavra::Devices {

struct RowReshape::Work {
    Raster picture;
    Reshaping wanted;
    Common::BlockRows rows;
};

RowReshape::RowReshape(const IncomingRows& picture, const Reshaping& wanted) {
    Raster whole{.format = picture.format, .width = picture.width, .height = picture.height, .faces = picture.faces};
    whole.pitch = whole.RowBytes();
    whole.bytes = whole.PackedBytes();
    whole.block = Common::NewZeroedBlock(whole.bytes);
    whole.first = whole.block.get();
    const std::span<unsigned char> block(whole.block.get(), whole.bytes);
    const std::size_t rowBytes = whole.RowBytes();
    mWork = std::make_unique<Work>(std::move(whole), wanted, Common::BlockRows(block, rowBytes));
}

RowReshape::~RowReshape() = default;

std::span<unsigned char> RowReshape::NextRows(std::size_t most) {
    return mWork->rows.NextRows(most);
}

Raster RowReshape::Finish() {
    return Reshape(std::move(mWork->picture), mWork->wanted);
}

std::uint64_t RowReshape::BytesFor(const IncomingRows& picture, const Reshaping& wanted) {
    const auto pixelBytes = static_cast<std::uint64_t>(Common::FactsOf(picture.format).BytesPerPixel());
    const auto bytes = [&](int width, int height) {
        const auto pixels =
            Common::Product<std::uint64_t>(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
        return Common::Product<std::uint64_t>(pixels, pixelBytes * static_cast<std::uint64_t>(picture.faces));
    };
    const std::uint64_t whole = bytes(picture.width, picture.height);
    const bool changes = picture.width != wanted.width || picture.height != wanted.height || wanted.from != wanted.to;
    return changes ? Common::Sum<std::uint64_t>(whole, bytes(wanted.width, wanted.height)) : whole;
}

}  // namespace Kavra::Devices
