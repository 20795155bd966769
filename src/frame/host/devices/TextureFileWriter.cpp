#include "common/Boundary.h"
#include "common/KnownFields.h"
#include "common/PathReasons.h"
#include "common/UnfinishedFile.h"
#include "common/dds/DdsComposing.h"
#include "common/ktx/KtxTexture.h"
#include "frame/host/devices/TextureShapes.h"
#include "frame/host/devices/ZstdLevels.h"

#include <kavra/objects/OS.h>

#include <array>
#include <cerrno>
#include <expected>
#include <format>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

using Bytes = std::vector<unsigned char>;
using Done = std::expected<void, std::string>;
using Dds::Refusal;

Done Finish(Common::UnfinishedFile& file, const KString& path) {
    if (file.Commit()) return {};
    Common::SayOfPathToWrite(path.ToChars(), file.Error() == EINVAL ? 0 : file.Error());
    if (file.Error() == EINVAL) return Refusal("what has this name is no regular file");
    return Refusal("it cannot be written: " + std::generic_category().message(file.Error()));
}

// --- DDS -------------------------------------------------------------------------------------------------------------

std::optional<Dds::Header> DdsHeaderOf(const KnownTexture& texture) {
    Dds::Extras extras;
    extras.elements = texture.shape.elements > 1 ? static_cast<std::uint32_t>(texture.shape.elements) : 0;
    extras.alpha = static_cast<Dds::AlphaMode>(texture.shape.alpha);
    extras.isSrgb = texture.shape.isSrgb;
    // The legacy code of these blocks means green first to all who read it.
    extras.isExtended = texture.shape.format == kBC5;
    return Dds::DescribeTexture(texture.shape.format, texture.stored, extras);
}

Done WriteDds(const KString& path, const KnownTexture& texture, const unsigned char* data) {
    const Bytes header = Dds::ComposeHeader(DdsHeaderOf(texture).value());
    Common::ProgressMeter meter(kProgressSaving, texture.Bytes());
    Common::UnfinishedFile file(OS::ToUtf8(path));
    file.Write(header.data(), header.size());
    meter.Expect(texture.Bytes());
    file.Write(data, texture.Bytes());
    return Finish(file, path);
}

// --- KTX2 ------------------------------------------------------------------------------------------------------------

Ktx::TextureToWrite KtxTextureOf(const KnownTexture& texture, Ktx::Supercompression scheme) {
    return {.format = texture.shape.format,
            .shape = texture.stored,
            .elements = texture.shape.elements > 1 ? static_cast<std::uint32_t>(texture.shape.elements) : 0,
            .isSrgb = texture.shape.isSrgb,
            .alpha = static_cast<Dds::AlphaMode>(texture.shape.alpha),
            .scheme = scheme};
}

/// Calls `take(bytes)` for each face of each element of a level, in the order of KTX2 files.
template <class Take>
void ForEachFace(const KnownTexture& texture, const unsigned char* data, int level, const Take& take) {
    const std::size_t bytes = texture.LevelBytes(level);
    for (int element = 0; element < texture.shape.elements; ++element) {
        for (int face = 0; face < texture.stored.FaceCount(); ++face)
            take(std::span(data + texture.Offset(element, face, level), bytes));
    }
}

std::uint64_t WholeLevelBytes(const KnownTexture& texture, int level) {
    return texture.LevelBytes(level) * static_cast<unsigned>(texture.stored.FaceCount()) *
           static_cast<unsigned>(texture.shape.elements);
}

std::vector<Bytes> PackLevels(const KnownTexture& texture, const unsigned char* data, int zstdLevel,
                              const Common::ProgressMeter& meter) {
    std::vector<Bytes> packed;
    for (int level = 0; level < texture.shape.levels; ++level) {
        meter.Expect(0);
        Bytes whole;
        whole.reserve(WholeLevelBytes(texture, level));
        ForEachFace(texture, data, level, [&](std::span<const unsigned char> bytes) {
            whole.insert(whole.end(), bytes.begin(), bytes.end());
        });
        packed.push_back(PackZstd(whole, zstdLevel));
    }
    return packed;
}

/// The smallest level first.
Done WriteKtx(const KString& path, const KnownTexture& texture, const unsigned char* data, int zstdLevel) {
    const bool isPacked = zstdLevel > 0;
    Common::ProgressMeter meter(kProgressSaving, texture.Bytes());
    const std::vector<Bytes> packed = isPacked ? PackLevels(texture, data, zstdLevel, meter) : std::vector<Bytes>();
    std::vector<std::uint64_t> sizes;
    sizes.reserve(static_cast<std::size_t>(texture.shape.levels));
    for (int level = 0; level < texture.shape.levels; ++level)
        sizes.push_back(isPacked ? packed[static_cast<std::size_t>(level)].size() : WholeLevelBytes(texture, level));
    const Ktx::Head head =
        Ktx::ComposeHead(KtxTextureOf(texture, isPacked ? Ktx::kSchemeZstandard : Ktx::kSchemeNone), sizes).value();

    Common::UnfinishedFile file(OS::ToUtf8(path));
    file.Write(head.bytes.data(), head.bytes.size());
    std::uint64_t position = head.bytes.size();
    for (int level = texture.shape.levels; level-- > 0;) {
        const auto index = static_cast<std::size_t>(level);
        constexpr std::array<unsigned char, 64> kZeros{};  // more than any gap
        file.Write(kZeros.data(), head.levels[index].offset - position);
        const std::uint64_t levelBytes = WholeLevelBytes(texture, level);
        meter.Expect(levelBytes);
        if (isPacked) file.Write(packed[index].data(), packed[index].size());
        if (!isPacked) {
            ForEachFace(texture, data, level,
                        [&](std::span<const unsigned char> bytes) { file.Write(bytes.data(), bytes.size()); });
        }
        meter.Advance(levelBytes);
        position = head.levels[index].offset + sizes[index];
    }
    return Finish(file, path);
}

// --- Both ------------------------------------------------------------------------------------------------------------

ETextureFileKind KindOf(const KString& path) {
    if (path.Right(4).CompareNoCase(L".dds") == 0) return kTextureFileDDS;
    if (path.Right(5).CompareNoCase(L".ktx2") == 0) return kTextureFileKTX2;
    return kTextureFileUnknown;
}

Done Check(const std::optional<KnownTexture>& texture, ETextureFileKind kind) {
    if (!texture) return Refusal("there is no texture of such a shape");
    if (kind == kTextureFileDDS && !DdsHeaderOf(*texture))
        return Refusal("DDS has no sRGB for this format, only for rgba8, bgra8, BC1, BC2, BC3 and BC7");
    if (kind == kTextureFileDDS || kind == kTextureFileKTX2) return {};
    return Refusal("it is neither to be a DDS nor a KTX2 file");
}

Done Write(const KString& path, const TextureShape& shape, const void* data, std::uint64_t bytes,
           const TextureWriteOptions& options) {
    TextureWriteOptions known;
    Common::CopyKnownFields(options, known);
    const ETextureFileKind kind = known.kind == kTextureFileUnknown ? KindOf(path) : known.kind;
    const std::optional<KnownTexture> texture = KnownTextureOf(shape);
    if (const Done checked = Check(texture, kind); !checked) return checked;
    if (data == nullptr || bytes != texture->Bytes())
        return Refusal(
            std::format("{} bytes are given for a texture of {}", data == nullptr ? 0 : bytes, texture->Bytes()));
    if (known.zstdLevel < 0 || known.zstdLevel > kMaxZstdLevel)
        return Refusal(std::format("there is no level {} of Zstandard", known.zstdLevel));
    if (known.zstdLevel > 0 && kind == kTextureFileDDS) return Refusal("DDS files are not packed by Zstandard");
    const auto* const pixels = static_cast<const unsigned char*>(data);
    return kind == kTextureFileDDS ? WriteDds(path, *texture, pixels)
                                   : WriteKtx(path, *texture, pixels, known.zstdLevel);
}

/// Whether `body` succeeds; why not goes to `reason`. No exception leaves.
template <class Body>
bool Told(std::string* reason, const Body& body) noexcept {
    return Common::AsOperation(false, [&] {
        try {
            const Done done = body();
            if (!done) Common::Say(kFailureFormat, std::string_view(done.error()));
            if (reason != nullptr) *reason = done ? std::string() : done.error();
            return done.has_value();
        } catch (const Common::Cancelled&) {
            if (reason != nullptr) reason->assign("stopped");
            throw;
        } catch (...) {
            if (reason != nullptr) reason->assign("out of memory");  // so short that no memory is taken for a copy
            throw;
        }
    });
}

}  // namespace

bool CanWriteTexture(const TextureShape& shape, ETextureFileKind kind, std::string* reason) {
    return Told(reason, [&] { return Check(KnownTextureOf(shape), kind); });
}

bool WriteTextureFile(const KString& path, const TextureShape& shape, const void* data, std::uint64_t bytes,
                      const TextureWriteOptions& options, std::string* reason) {
    return Told(reason, [&] { return Write(path, shape, data, bytes, options); });
}

}  // namespace Kavra::Devices
