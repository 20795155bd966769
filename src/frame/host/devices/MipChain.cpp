#include "common/Boundary.h"
#include "common/KnownFields.h"
#include "common/Limits.h"
#include "common/PixelFormats.h"
#include "common/dds/DdsShape.h"
#include "common/mips/MipBuilder.h"
#include "common/mips/MipColours.h"

#include <kavra/devices/MipChain.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace Kavra::Devices {

namespace {

using Common::FactsOf;
using Common::MipBuilder;
using Common::MipColours;
using Common::MipTexture;
using Dds::Extent;

Extent SizeOf(const TextureShape& shape) {
    return {shape.width, shape.height, shape.depth};
}

bool IsPossible(const TextureShape& shape) {
    return IsSaneTexture(shape) && FactsOf(shape.format).HasPixels();
}

bool IsPossible(const MipOptions& options) {
    const bool isFilter = options.filter >= kResampleBox && options.filter <= kResampleLanczos3;
    const bool isEdge = options.edges == kMipClamp || options.edges == kMipWrap;
    const bool isContent = options.content >= kMipColours && options.content <= kMipNormalsXY;
    return isFilter && isEdge && isContent && options.keepCoverage >= 0 && options.keepCoverage <= 1;
}

/// What is to be made, with fields that callers do not know as they are by default.
struct Request {
    TextureShape shape;
    MipOptions options;

    Request(const TextureShape& asked, const MipOptions& how) {
        Common::CopyKnownFields(asked, shape);
        Common::CopyKnownFields(how, options);
        if (options.content != kMipColours) options.linearLight = options.alphaWeighted = options.bounded = false;
    }
};

std::size_t PicturesOf(const TextureShape& shape) {
    return static_cast<std::size_t>(shape.elements) * static_cast<std::size_t>(FaceCount(shape.type));
}

/// `level0` as far as its user knows it, with the pitches that stand for 0. `pictures` is null where it is none.
MipSource Known(const MipSource& level0, const TextureShape& shape) {
    MipSource known;
    Common::CopyKnownFields(level0, known);
    const auto height = static_cast<std::size_t>(shape.height);
    const auto rowBytes =
        static_cast<std::size_t>(shape.width) * static_cast<unsigned>(FactsOf(shape.format).BytesPerPixel());
    if (known.pitch == 0) known.pitch = rowBytes;
    const std::size_t least = Common::Product<std::size_t>(known.pitch, height);
    if (known.slicePitch == 0) known.slicePitch = least;
    const bool areApart = known.pitch >= rowBytes && (shape.depth == 1 || known.slicePitch >= least);
    const auto isNull = [](const void* picture) { return picture == nullptr; };
    if (known.pictures == nullptr) return known;
    const bool isMissing = std::any_of(known.pictures, known.pictures + PicturesOf(shape), isNull);
    if (!areApart || isMissing) known.pictures = nullptr;
    return known;
}

/// Where the levels of a chain are stored.
class Places {
public:
    virtual ~Places() = default;
    virtual unsigned char* For(const MipLevel& level) = 0;
    /// Its pixels are there. False ends the work.
    virtual bool Done(MipLevel& level) = 0;
};

class PlacesForSink final : public Places {
public:
    explicit PlacesForSink(IMipSink& sink) : mSink(sink) {}

    unsigned char* For(const MipLevel& level) override {
        if (mCapacity < level.bytes) {
            mPixels.reset();
            mPixels = std::make_unique_for_overwrite<unsigned char[]>(level.bytes);
            mCapacity = level.bytes;
        }
        return mPixels.get();
    }
    bool Done(MipLevel& level) override {
        level.pixels = mPixels.get();
        return mSink.TakeLevel(level);
    }

private:
    IMipSink& mSink;
    std::unique_ptr<unsigned char[]> mPixels;
    std::uint64_t mCapacity = 0;
};

/// In a packed texture.
class PlacesInTexture final : public Places {
public:
    PlacesInTexture(const TextureShape& shape, unsigned char* texture) : mShape(shape), mTexture(texture) {}

    unsigned char* For(const MipLevel& level) override {
        return mTexture + TextureLevelOffset(mShape, level.element, level.face, level.level);
    }
    bool Done(MipLevel& /*level*/) override { return true; }

private:
    const TextureShape& mShape;
    unsigned char* mTexture;
};

/// What a level costs to make: as much as there are pixels in the one before.
std::uint64_t CostOfLevel(const TextureShape& shape, int level) {
    const Dds::Extent size = Dds::LevelSize(SizeOf(shape), level - 1);
    return static_cast<std::uint64_t>(size.width) * static_cast<unsigned>(size.height) *
           static_cast<unsigned>(size.depth);
}

std::uint64_t CostOfChains(const TextureShape& shape) {
    std::uint64_t cost = 0;
    for (int level = 1; level < shape.levels; ++level)
        cost += CostOfLevel(shape, level);
    return cost * static_cast<unsigned>(shape.elements);
}

bool BuildElement(const Request& request, const MipTexture& texture, const MipColours& colours, int element,
                  Places& places, Common::ProgressMeter& meter) {
    MipBuilder builder(texture, colours, request.options);
    for (int level = 1; level < request.shape.levels; ++level) {
        meter.Expect(CostOfLevel(request.shape, level));
        builder.Next();
        for (int face = 0; face < FaceCount(request.shape.type); ++face) {
            MipLevel made;
            made.element = element;
            made.level = level;
            made.face = face;
            made.width = builder.Size().width;
            made.height = builder.Size().height;
            made.depth = builder.Size().depth;
            made.bytes = builder.FaceBytes();
            builder.Store(static_cast<std::size_t>(face), places.For(made));
            if (!places.Done(made)) return Common::Require(false, kFailureCancelled, "no more levels were taken");
        }
        meter.Advance(CostOfLevel(request.shape, level));
    }
    return true;
}

/// Where nothing was said that is known better.
bool Refuse() {
    return Common::Require(false, kFailureArguments, "no levels are made of such a texture, or with such options");
}

bool Build(const Request& request, const MipSource& level0, Places& places) {
    const TextureShape& shape = request.shape;
    const auto colours = Common::NewMipColours(FactsOf(shape.format), request.options);
    if (!colours) return false;
    if (shape.levels == 1) return true;
    const auto faces = static_cast<std::size_t>(FaceCount(shape.type));
    Common::ProgressMeter meter(kProgressResizing, CostOfChains(shape));
    for (int element = 0; element < shape.elements; ++element) {
        const std::span first(level0.pictures + static_cast<std::size_t>(element) * faces, faces);
        const MipTexture texture{SizeOf(shape), first, level0.pitch, level0.slicePitch};
        if (!BuildElement(request, texture, *colours, element, places, meter)) return false;
    }
    return true;
}

}  // namespace

bool BuildMipChain(const TextureShape& asked, const MipSource& level0, IMipSink& sink, const MipOptions& options) {
    return Common::InOperation([&] {
        const Request request(asked, options);
        if (!IsPossible(request.shape) || !IsPossible(request.options)) return Refuse();
        const MipSource source = Known(level0, request.shape);
        PlacesForSink places(sink);
        return (source.pictures != nullptr && Build(request, source, places)) || Refuse();
    });
}

namespace {

bool BuildInTexture(const TextureShape& asked, const void* level0, void* texture, const MipOptions& options) {
    const Request request(asked, options);
    const TextureShape& shape = request.shape;
    if (!IsPossible(shape) || !IsPossible(request.options) || level0 == nullptr || texture == nullptr) return false;
    if (request.options.content != kMipColours && FactsOf(shape.format).channels < 2) return false;

    PlacesInTexture places(shape, static_cast<unsigned char*>(texture));
    const auto bytes = static_cast<std::size_t>(TextureLevelBytes(shape, 0));
    std::vector<const void*> pictures(PicturesOf(shape));
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        pictures[i] = static_cast<const unsigned char*>(level0) + i * bytes;
        MipLevel copy;
        copy.face = static_cast<int>(i % static_cast<std::size_t>(FaceCount(shape.type)));
        copy.element = static_cast<int>(i / static_cast<std::size_t>(FaceCount(shape.type)));
        std::memcpy(places.For(copy), pictures[i], bytes);
    }
    MipSource source;
    source.pictures = pictures.data();
    return Build(request, Known(source, shape), places);
}

}  // namespace

bool BuildMipChain(const TextureShape& asked, const void* level0, void* texture, const MipOptions& options) {
    return Common::InOperation([&] { return BuildInTexture(asked, level0, texture, options) || Refuse(); });
}

}  // namespace Kavra::Devices
