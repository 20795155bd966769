#include "frame/host/devices/TextureLevels.h"

#include "common/Limits.h"
#include "common/dds/DdsHeader.h"
#include "common/dds/DdsStoredLevel.h"
#include "frame/host/devices/ZstdLevels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::FileHandle;
using Dds::Refusal;
using Opened = std::expected<std::unique_ptr<TextureLevels>, std::string>;

bool MoveTo(std::FILE* file, std::uint64_t offset) {
    return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0;
}

class DdsLevels : public TextureLevels {
public:
    DdsLevels(FileHandle file, const Dds::Texture& texture) : mFile(std::move(file)), mTexture(texture) {}

    ETextureFileKind Kind() const override { return kTextureFileDDS; }
    const Dds::StoredTexture& Texture() const override { return mTexture; }
    bool IsExchanged() const override { return mTexture.isGreenFirst; }

    bool Read(int element, int face, int level, unsigned char* out) override {
        const Dds::Extent size = Dds::LevelSize(mTexture.shape.size, level);
        if (!MoveTo(mFile.get(), mTexture.Offset(element, face, level))) return false;
        if (!Dds::ReadStoredLevel(mFile.get(), mTexture.layout, size, out)) return false;
        if (mTexture.isGreenFirst) ExchangeHalves(std::span(out, Dds::StoredLevelBytes(mTexture.layout.unit, size)));
        return true;
    }

private:
    static void ExchangeHalves(std::span<unsigned char> blocks) {
        constexpr std::size_t kBlock = 16, kHalf = 8;
        for (; blocks.size() >= kBlock; blocks = blocks.subspan(kBlock))
            std::ranges::swap_ranges(blocks.first(kHalf), blocks.subspan(kHalf, kHalf));
    }

    FileHandle mFile;
    Dds::Texture mTexture;
};

class KtxLevels : public TextureLevels {
public:
    KtxLevels(FileHandle file, Ktx::Texture texture)
        : mFile(std::move(file)), mTexture(std::move(texture)), mUnpacked(mTexture.levels.size()) {}

    ETextureFileKind Kind() const override { return kTextureFileKTX2; }
    const Dds::StoredTexture& Texture() const override { return mTexture; }
    bool IsBottomUp() const override { return mTexture.isBottomUp; }
    void Forget(int level) override { mUnpacked[static_cast<std::size_t>(level)].reset(); }

    bool Read(int element, int face, int level, unsigned char* out) override {
        const Dds::Extent size = Dds::LevelSize(mTexture.shape.size, level);
        const Ktx::LevelPlace& place = mTexture.levels[static_cast<std::size_t>(level)];
        const std::uint64_t offset = mTexture.OffsetInLevel(element, face, level);
        if (mTexture.scheme == Ktx::kSchemeNone) {
            return MoveTo(mFile.get(), place.offset + offset) &&
                   Dds::ReadStoredLevel(mFile.get(), mTexture.layout, size, out);
        }
        Block& unpacked = mUnpacked[static_cast<std::size_t>(level)];
        if (!unpacked && !Unpack(place, unpacked)) return false;
        Dds::DeliverLevel(std::span(unpacked.get() + offset, mTexture.FaceBytes(level)), mTexture.layout, size, out);
        return true;
    }

private:
    using Block = std::unique_ptr<unsigned char[]>;

    /// All faces of all elements of a level, kept until it is forgotten: they are packed together.
    bool Unpack(const Ktx::LevelPlace& place, Block& out) const {
        std::vector<unsigned char> packed(place.bytes);
        if (!MoveTo(mFile.get(), place.offset)) return false;
        if (std::fread(packed.data(), 1, packed.size(), mFile.get()) != packed.size()) return false;
        Block unpacked = std::make_unique_for_overwrite<unsigned char[]>(place.unpackedBytes);
        if (!UnpackZstd(packed, std::span(unpacked.get(), place.unpackedBytes))) return false;
        out = std::move(unpacked);
        return true;
    }

    FileHandle mFile;
    Ktx::Texture mTexture;
    std::vector<Block> mUnpacked;
};

Opened OpenDds(FileHandle file, std::span<const unsigned char> start, std::uint64_t fileBytes) {
    const auto header = Dds::ParseHeader(start, Dds::ExtensionRule::kAnyCode);
    if (!header) return Refusal("it is no DDS file, or ends within its header");
    const auto texture = Dds::TextureOf(*header, fileBytes);
    if (!texture) return Refusal(texture.error());
    return std::make_unique<DdsLevels>(std::move(file), *texture);
}

/// Packed levels may be of much more bytes than the file.
bool IsWithinLimits(const Ktx::Texture& texture) {
    if (texture.scheme == Ktx::kSchemeNone) return true;
    std::uint64_t bytes = 0;
    for (const Ktx::LevelPlace& place : texture.levels)
        bytes = Common::Sum<std::uint64_t>(bytes, place.unpackedBytes);
    return bytes <= std::min(Common::HostBounds().bytes, Common::MemoryShare());
}

Opened OpenKtx(FileHandle file, std::uint64_t fileBytes) {
    auto texture = Ktx::ReadTexture(file.get(), fileBytes);
    if (!texture) return Refusal(std::move(texture).error());
    if (!IsWithinLimits(*texture)) return Refusal("its levels are larger than the limits allow");
    return std::make_unique<KtxLevels>(std::move(file), *std::move(texture));
}

}  // namespace

Opened OpenTextureLevels(FileHandle file) {
    const std::optional<std::uint64_t> fileBytes = Common::FileLength(file.get());
    if (!fileBytes || !MoveTo(file.get(), 0)) return Refusal("it cannot be read");
    std::array<unsigned char, Dds::kMaxHeaderBytes> bytes{};
    const std::span<const unsigned char> start =
        std::span(bytes).first(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    const auto beginsWith = [&](std::span<const unsigned char> magic) {
        return start.size() >= magic.size() && std::ranges::equal(start.first(magic.size()), magic);
    };
    constexpr std::size_t kFamily = 5;  // bytes of the identifier that all versions share
    constexpr std::array<unsigned char, 4> kDdsMagic = {'D', 'D', 'S', ' '};
    if (beginsWith(kDdsMagic)) return OpenDds(std::move(file), start, *fileBytes);
    if (beginsWith(Ktx::kIdentifier)) return OpenKtx(std::move(file), *fileBytes);
    if (beginsWith(std::span(Ktx::kIdentifier).first(kFamily))) return Refusal("KTX of version 1 is not supported");
    return Refusal("it is neither a DDS nor a KTX2 file");
}

}  // namespace Kavra::Devices
